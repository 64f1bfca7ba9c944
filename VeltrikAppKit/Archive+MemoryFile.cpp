#include "VeltrikAppKit/Archive+MemoryFile.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string_view>

namespace veltrik {

namespace {

/// What a stream holds on to.
using Cookie = std::shared_ptr<MemoryFile>;

Cookie& fileOf(void* cookie) {
  return *static_cast<Cookie*>(cookie);
}

ssize_t readHook(void* cookie, char* buffer, size_t size) {
  return static_cast<ssize_t>(fileOf(cookie)->read(std::as_writable_bytes(std::span(buffer, size))));
}

// Nothing may be thrown through the C library; 0 is its way to be told of a failure.
ssize_t writeHook(void* cookie, const char* buffer, size_t size) {
  try {
    fileOf(cookie)->write(std::as_bytes(std::span(buffer, size)));
    return static_cast<ssize_t>(size);
  } catch (const std::exception&) {
    errno = ENOMEM;
    return 0;
  }
}

int seekHook(void* cookie, off64_t* offset, int whence) {
  const std::int64_t position = fileOf(cookie)->seek(*offset, whence);
  if (position < 0) return -1;
  *offset = position;
  return 0;
}

int closeHook(void* cookie) {
  delete static_cast<Cookie*>(cookie);
  return 0;
}

}  // namespace

std::shared_ptr<MemoryFile> MemoryFile::make(platform::Data data) {
  return std::shared_ptr<MemoryFile>(new MemoryFile(std::move(data)));
}

std::FILE* MemoryFile::openStream(const char* mode) {
  const std::string_view text = mode;
  const bool isWritable = !text.empty() && (!text.starts_with('r') || text.ends_with('+'));
  auto cookie = std::make_unique<Cookie>(shared_from_this());
  const cookie_io_functions_t hooks = {
      .read = readHook, .write = isWritable ? writeHook : nullptr, .seek = seekHook, .close = closeHook};
  // The C library would refuse reading a stream of mode "w" or "a"; what may be done is decided by the hooks alone.
  std::FILE* stream = fopencookie(cookie.get(), isWritable ? "r+" : "r", hooks);
  if (stream == nullptr) return nullptr;
  static_cast<void>(cookie.release());  // The stream's own now.
  if (text.starts_with('a')) std::fseek(stream, 0, SEEK_END);
  return stream;
}

void MemoryFile::truncate(std::size_t size) {
  data_.resize(std::min(size, data_.size()));
}

std::size_t MemoryFile::read(std::span<std::byte> buffer) {
  if (offset_ >= data_.size()) return 0;
  const std::size_t count = std::min(buffer.size(), data_.size() - offset_);
  std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(offset_), count, buffer.begin());
  offset_ += count;
  return count;
}

void MemoryFile::write(platform::DataView bytes) {
  const std::size_t overlap = offset_ < data_.size() ? std::min(bytes.size(), data_.size() - offset_) : 0;
  if (offset_ > data_.size()) data_.resize(offset_);
  std::copy_n(bytes.begin(), overlap, data_.begin() + static_cast<std::ptrdiff_t>(offset_));
  platform::append(data_, bytes.subspan(overlap));
  offset_ += bytes.size();
}

std::int64_t MemoryFile::seek(std::int64_t offset, int whence) {
  std::int64_t base = 0;
  if (whence == SEEK_CUR) base = static_cast<std::int64_t>(offset_);
  if (whence == SEEK_END) base = static_cast<std::int64_t>(data_.size());
  const bool isKnown = whence == SEEK_SET || whence == SEEK_CUR || whence == SEEK_END;
  std::int64_t position = 0;
  if (!isKnown || __builtin_add_overflow(base, offset, &position) || position < 0) return -1;
  offset_ = static_cast<std::size_t>(position);
  return position;
}

}  // namespace veltrik
