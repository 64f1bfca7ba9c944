#include "VeltrikAppKit/ArchiveTail.h"

#include <algorithm>

namespace veltrik {

namespace {

/// How much is collected before it is written.
constexpr std::size_t kTailStep = 1 << 18;

}  // namespace

TailWriter::TailWriter(ArchiveStream& stream, std::uint64_t start, std::uint64_t oldEnd)
    : stream_(stream),
      start_(start),
      oldEnd_(oldEnd),
      headLimit_(static_cast<std::size_t>(oldEnd - start)),
      tailStart_(oldEnd) {}

std::uint64_t TailWriter::position() const {
  return used_ < headLimit_ ? start_ + used_ : tailStart_ + (used_ - headLimit_);
}

platform::DataView TailWriter::head() const {
  return platform::DataView(buffer_).first(std::min(used_, headLimit_));
}

platform::DataView TailWriter::pendingTail() const {
  return platform::DataView(buffer_).first(used_).subspan(std::min(used_, headLimit_));
}

std::span<std::byte> TailWriter::room(std::size_t count) {
  if (pendingTail().size() >= kTailStep) flushTail();
  if (buffer_.size() - used_ < count) {
    // The head is held back whole, so that all of it is needed at last.
    const std::size_t usual = used_ < headLimit_ ? headLimit_ + kTailStep : buffer_.size() + buffer_.size() / 2;
    buffer_.resize(std::max(used_ + count, usual));
  }
  return std::span(buffer_).subspan(used_, count);
}

void TailWriter::advance(std::size_t count) {
  used_ += count;
}

void TailWriter::append(platform::DataView bytes) {
  while (!bytes.empty()) {
    const platform::DataView part = bytes.first(std::min(bytes.size(), kTailStep));
    std::copy(part.begin(), part.end(), room(part.size()).begin());
    advance(part.size());
    bytes = bytes.subspan(part.size());
  }
}

void TailWriter::flushTail() {
  const platform::DataView tail = pendingTail();
  stream_.writeAt(tailStart_, tail);
  tailStart_ += tail.size();
  used_ -= tail.size();
}

void TailWriter::patch(std::uint64_t offset, platform::DataView bytes) {
  // A record may lie across the borders of what is held back, what is written already and what is not yet.
  while (!bytes.empty()) {
    std::size_t count = bytes.size();
    if (offset < oldEnd_) {
      count = std::min<std::size_t>(count, oldEnd_ - offset);
      std::copy_n(bytes.begin(), count, buffer_.begin() + static_cast<std::ptrdiff_t>(offset - start_));
    } else if (offset < tailStart_) {
      count = std::min<std::size_t>(count, tailStart_ - offset);
      stream_.writeAt(offset, bytes.first(count));
    } else {
      std::copy_n(bytes.begin(), count,
                  buffer_.begin() + static_cast<std::ptrdiff_t>(headLimit_ + offset - tailStart_));
    }
    offset += count;
    bytes = bytes.subspan(count);
  }
}

void TailWriter::rewind(std::uint64_t position) {
  if (position < oldEnd_) {
    used_ = static_cast<std::size_t>(position - start_);
    tailStart_ = oldEnd_;
  } else {
    used_ = headLimit_ + static_cast<std::size_t>(std::max(position, tailStart_) - tailStart_);
    tailStart_ = std::min(tailStart_, position);
  }
}

void TailWriter::commit() {
  const std::uint64_t end = position();
  const bool isUnwritten = tailStart_ == oldEnd_;
  if (!isUnwritten) flushTail();
  isHeadTouched_ = true;
  stream_.writeAt(start_, isUnwritten ? platform::DataView(buffer_).first(used_) : head());
  if (stream_.size() > end) stream_.truncate(end);
}

void TailWriter::undo(platform::DataView original) noexcept {
  // One that fails must not keep the other from being tried.
  try {
    if (stream_.size() > oldEnd_) stream_.truncate(oldEnd_);
  } catch (...) {
  }
  try {
    if (isHeadTouched_) stream_.writeAt(start_, original);
  } catch (...) {
  }
}

}  // namespace veltrik
