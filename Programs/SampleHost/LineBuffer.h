#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace samplehost {

/// Cuts a stream of bytes into lines with bounded memory: of a line longer than the limit nothing is kept.
class LineBuffer {
 public:
  static constexpr std::size_t kLimit = 1 << 20;
  explicit LineBuffer(std::size_t limit = kLimit) : limit_(limit) {}

  struct Line {
    std::string text;  ///< without its newline; empty when it was too long
    bool tooLong = false;
  };
  void append(std::string_view bytes);
  /// The stream has ended: what stands without a newline is a line too.
  void finish();
  /// The next complete line; nothing when there is none yet.
  std::optional<Line> take();
  bool isEmpty() const { return lines_.empty(); }

 private:
  void endLine();

  std::size_t limit_;
  std::string current_;
  bool tooLong_ = false;
  std::deque<Line> lines_;
};

}  // namespace samplehost
