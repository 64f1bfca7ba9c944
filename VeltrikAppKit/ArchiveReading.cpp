#include "VeltrikAppKit/ArchiveReading.h"

#include <algorithm>
#include <bit>

namespace veltrik {

namespace {

constexpr std::size_t kDirectoryWindow = 65536;
constexpr std::size_t kRecordWindow = 16384;
/// How far behind what was read a place may be for all up to it, and more, to be read too.
constexpr std::uint64_t kNear = 4096;
/// Read where the last place is further off: enough for most local headers.
constexpr std::size_t kFarRead = 512;

}  // namespace

void ReadWindow::reset(const ArchiveStream& stream) {
  stream_ = &stream;
  start_ = 0;
  size_ = 0;
}

platform::DataView ReadWindow::bytes(std::uint64_t offset, std::size_t count) {
  const std::uint64_t end = start_ + size_;
  const bool isInside = offset >= start_ && offset <= end && count <= end - offset;
  if (!isInside) {
    const bool isNear = offset >= start_ && offset <= end + kNear;
    const std::size_t wanted = std::max(count, isNear ? capacity_ : kFarRead);
    if (buffer_.size() < wanted) buffer_.resize(std::max(wanted, capacity_));
    // Nothing is kept if reading fails.
    size_ = 0;
    start_ = offset;
    size_ = stream_->readAt(offset, std::span(buffer_).first(wanted));
  }
  const auto at = static_cast<std::size_t>(offset - start_);
  return platform::DataView(buffer_).subspan(at, std::min(count, size_ - at));
}

EntryReader::EntryReader(const ArchiveStream& stream)
    : directory_(stream, kDirectoryWindow), records_(stream, kRecordWindow) {}

std::optional<EntryReader::Found> EntryReader::read(std::uint64_t directoryPosition) {
  auto structure = readRecord<Entry::CentralDirectoryStructure>(directory_, directoryPosition);
  if (!structure) return std::nullopt;
  const std::uint64_t recordOffset = structure->relativeOffsetOfLocalHeader;
  auto header = readRecord<Entry::LocalFileHeader>(records_, recordOffset);
  if (!header) return std::nullopt;
  std::optional<Entry::DataDescriptor> descriptor;
  if (structure->dataDescriptorBitSet()) {
    descriptor = readRecord<Entry::DataDescriptor>(records_, recordOffset + header->size() + structure->storedSize());
  }
  const std::uint64_t next = directoryPosition + structure->size();
  auto entry = Entry::make(std::move(*structure), std::move(*header), descriptor);
  if (!entry) return std::nullopt;
  return Found{std::move(*entry), next};
}

PathIndex::PathIndex(std::size_t entryCount) : slots_(std::bit_ceil(entryCount * 2 + 1)), mask_(slots_.size() - 1) {}

void PathIndex::insertNew(std::string_view path, std::uint64_t directoryPosition) {
  const std::uint64_t hash = hashOf(path);
  std::size_t at = hash & mask_;
  while (slots_[at].isUsed) at = (at + 1) & mask_;
  slots_[at].hash = hash;
  slots_[at].position = directoryPosition & (~std::uint64_t{0} >> 1);
  slots_[at].isUsed = 1;
}

}  // namespace veltrik
