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

void ReadWindow::load(std::uint64_t offset, std::size_t count) {
  const bool isNear = offset >= start_ && offset <= start_ + size_ + kNear;
  const std::size_t wanted = std::max(count, isNear ? capacity_ : kFarRead);
  if (buffer_.size() < wanted) buffer_.resize(std::max(wanted, capacity_));
  // Nothing is kept if reading fails.
  size_ = 0;
  start_ = offset;
  size_ = stream_->readAt(offset, std::span(buffer_).first(wanted));
}

EntryReader::EntryReader(const ArchiveStream& stream)
    : directory_(stream, kDirectoryWindow), records_(stream, kRecordWindow) {}

bool EntryReader::pass(std::uint64_t directoryPosition) {
  auto& structure = entry_.centralDirectoryStructure_;
  try {
    if (!structure.readFixed(directory_.bytes(directoryPosition, structure.fixedSize))) return false;
  } catch (const DataError&) {
    return false;
  }
  next_ = directoryPosition + structure.size();
  return true;
}

const Entry* EntryReader::read(std::uint64_t directoryPosition) {
  auto& structure = entry_.centralDirectoryStructure_;
  if (!readRecord(directory_, directoryPosition, structure)) return nullptr;
  next_ = directoryPosition + structure.size();
  if (!readRecord(records_, structure.relativeOffsetOfLocalHeader, entry_.localFileHeader_)) return nullptr;
  entry_.dataDescriptor_.reset();
  Entry::DataDescriptor descriptor;
  if (structure.dataDescriptorBitSet() &&
      readRecord(records_, entry_.dataOffset() + structure.storedSize(), descriptor)) {
    entry_.dataDescriptor_ = descriptor;
  }
  return entry_.isSupported() ? &entry_ : nullptr;
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
