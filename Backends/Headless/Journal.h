#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace headless {

/// What was asked of the machine, one line a request, oldest first: "surface 2: title Chat".
class Journal {
 public:
  void write(std::string line) { lines_.push_back(std::move(line)); }
  const std::vector<std::string>& lines() const { return lines_; }
  /// The lines, which the journal then forgets.
  std::vector<std::string> take() { return std::exchange(lines_, {}); }
  /// How many lines hold `part`.
  std::size_t count(std::string_view part) const {
    std::size_t found = 0;
    for (const std::string& line : lines_) found += line.find(part) != std::string::npos;
    return found;
  }

 private:
  std::vector<std::string> lines_;
};

}  // namespace headless
