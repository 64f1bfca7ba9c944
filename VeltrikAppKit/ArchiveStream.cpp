#include "VeltrikAppKit/ArchiveStream.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>
#include <utility>

namespace veltrik {

namespace {

constexpr std::size_t kStreamBufferSize = 16384;

[[noreturn]] void failReading() {
  throw DataError(DataError::Case::unreadableFile, errno);
}
[[noreturn]] void failWriting() {
  throw DataError(DataError::Case::unwritableFile, errno);
}

/// The offset as the system takes it. None that an archive can state is too large, but sums of them may be.
off_t systemOffset(std::uint64_t offset) {
  return static_cast<off_t>(std::min<std::uint64_t>(offset, std::numeric_limits<off_t>::max()));
}

}  // namespace

ArchiveStream::ArchiveStream(Handle stream, std::shared_ptr<MemoryFile> memoryFile)
    : stream_(std::move(stream)), memoryFile_(std::move(memoryFile)) {}

std::unique_ptr<ArchiveStream> ArchiveStream::openFile(const std::string& path, const char* mode) {
  if (path.find('\0') != std::string::npos) return nullptr;
  Handle stream(std::fopen(path.c_str(), (std::string(mode) + "e").c_str()));
  return stream ? buffered(std::move(stream)) : nullptr;
}

std::unique_ptr<ArchiveStream> ArchiveStream::adopt(platform::FileDescriptor file) {
  Handle stream(fdopen(file.get(), "rb+"));
  if (!stream) failWriting();
  static_cast<void>(file.release());  // The stream's own now.
  return buffered(std::move(stream));
}

std::unique_ptr<ArchiveStream> ArchiveStream::buffered(Handle stream) {
  std::setvbuf(stream.get(), nullptr, _IOFBF, kStreamBufferSize);
  return std::unique_ptr<ArchiveStream>(new ArchiveStream(std::move(stream), nullptr));
}

std::unique_ptr<ArchiveStream> ArchiveStream::openMemory(std::shared_ptr<MemoryFile> file, const char* mode) {
  Handle stream(file->openStream(mode));
  if (!stream) return nullptr;
  return std::unique_ptr<ArchiveStream>(new ArchiveStream(std::move(stream), std::move(file)));
}

int ArchiveStream::descriptor() const {
  return memoryFile_ ? -1 : fileno(stream_.get());
}

void ArchiveStream::seek(std::uint64_t offset) const {
  if (fseeko(stream_.get(), systemOffset(offset), SEEK_SET) != 0) failReading();
}

std::uint64_t ArchiveStream::size() const {
  if (memoryFile_) return memoryFile_->data().size();
  const off_t end = lseek(descriptor(), 0, SEEK_END);
  if (end < 0) failReading();
  return static_cast<std::uint64_t>(end);
}

std::size_t ArchiveStream::readAt(std::uint64_t offset, std::span<std::byte> destination) const {
  if (memoryFile_) {
    seek(offset);
    const std::size_t count = std::fread(destination.data(), 1, destination.size(), stream_.get());
    if (std::ferror(stream_.get()) != 0) {
      std::clearerr(stream_.get());
      failReading();
    }
    return count;
  }
  std::size_t done = 0;
  while (done < destination.size()) {
    const ssize_t count =
        pread(descriptor(), destination.data() + done, destination.size() - done, systemOffset(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failReading();
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

void ArchiveStream::writeAt(std::uint64_t offset, platform::DataView bytes) {
  if (memoryFile_) {
    seek(offset);
    const std::size_t count = std::fwrite(bytes.data(), 1, bytes.size(), stream_.get());
    if (std::fflush(stream_.get()) != 0 || count != bytes.size()) {
      std::clearerr(stream_.get());
      failWriting();
    }
    return;
  }
  writeAllAt(descriptor(), offset, bytes);
}

void ArchiveStream::truncate(std::uint64_t size) {
  if (memoryFile_) {
    memoryFile_->truncate(size);
  } else if (ftruncate(descriptor(), systemOffset(size)) != 0) {
    failWriting();
  }
}

void writeAllAt(int file, std::uint64_t offset, platform::DataView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = pwrite(file, bytes.data(), bytes.size(), systemOffset(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failWriting();
    offset += static_cast<std::uint64_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

namespace {

/// Copies at most `size` bytes by the kernel; nothing when it can't. What then fails otherwise as well says why.
std::optional<std::size_t> copyInKernel(int from, std::uint64_t fromOffset, int to, std::uint64_t toOffset,
                                        std::size_t size) {
  if (from < 0 || to < 0) return std::nullopt;
  off64_t source = systemOffset(fromOffset);
  off64_t target = systemOffset(toOffset);
  while (true) {
    const ssize_t count = copy_file_range(from, &source, to, &target, size, 0);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) return std::nullopt;
  }
}

}  // namespace

std::uint64_t copyBytes(const ArchiveStream& source, std::uint64_t from, const CopyTarget& target, std::uint64_t size,
                        std::size_t step, const std::function<void(std::uint64_t)>& progressed) {
  platform::Data buffer;
  std::uint64_t done = 0;
  std::size_t last = 0;
  do {
    progressed(last);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(step, size - done));
    auto count = buffer.empty()
                     ? copyInKernel(source.descriptor(), from + done, target.descriptor, target.offset + done, wanted)
                     : std::nullopt;
    if (!count) {
      buffer.resize(step);
      count = source.readAt(from + done, std::span(buffer).first(wanted));
      target.write(target.offset + done, platform::DataView(buffer).first(*count));
    }
    last = *count;
    done += last;
  } while (last != 0 && done < size);
  progressed(last);
  return done;
}

}  // namespace veltrik
