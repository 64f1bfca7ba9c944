#include "Programs/SampleHost/LineBuffer.h"

#include <utility>

namespace samplehost {

void LineBuffer::append(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t newline = bytes.find('\n');
    const std::string_view part = bytes.substr(0, newline);
    if (tooLong_ || part.size() > limit_ - current_.size()) {
      tooLong_ = true;
      current_.clear();
    } else {
      current_ += part;
    }
    if (newline == std::string_view::npos) return;
    endLine();
    bytes.remove_prefix(newline + 1);
  }
}

void LineBuffer::finish() {
  if (!current_.empty() || tooLong_) endLine();
}

std::optional<LineBuffer::Line> LineBuffer::take() {
  if (lines_.empty()) return std::nullopt;
  Line line = std::move(lines_.front());
  lines_.pop_front();
  return line;
}

void LineBuffer::endLine() {
  lines_.push_back({std::exchange(current_, {}), std::exchange(tooLong_, false)});
}

}  // namespace samplehost
