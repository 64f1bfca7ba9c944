#include "Platform/AppKit/VisualFormat.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <system_error>

#include "Platform/AppKit/NSView.h"

namespace platform {

namespace {

using Views = std::map<std::string, std::shared_ptr<NSView>, std::less<>>;
using Constraints = std::vector<std::shared_ptr<NSLayoutConstraint>>;

bool isNameCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '_';
}

class Parser {
 public:
  Parser(std::string_view format, const Views& views) : format_(format), views_(views) {}

  Constraints parse() {
    readDirection();
    std::optional<double> gap;
    const bool fromEdge = accept("|");
    if (fromEdge) gap = readGap();
    auto last = readView();
    if (fromEdge) keepApart(superviewOf(last), before_, last, before_, *gap);
    while (at_ < format_.size()) {
      gap = readGap();
      if (accept("|")) {
        keepApart(last, after_, superviewOf(last), after_, *gap);
        break;
      }
      const auto next = readView();
      keepApart(last, after_, next, before_, *gap);
      last = next;
    }
    if (at_ < format_.size()) fail("nothing may follow the last \"|\"");
    return std::move(constraints_);
  }

 private:
  [[noreturn]] void fail(const std::string& problem) const { throw VisualFormatError(format_, at_, problem); }

  bool accept(std::string_view token) {
    if (!format_.substr(at_).starts_with(token)) return false;
    at_ += token.size();
    return true;
  }
  void expect(std::string_view token) {
    if (!accept(token)) fail(fmt::format("\"{}\" expected", token));
  }

  void readDirection() {
    if (accept("V:")) {
      before_ = LayoutAttribute::top;
      after_ = LayoutAttribute::bottom;
      length_ = LayoutAttribute::height;
    } else if (!accept("H:")) {
      fail("\"H:\" or \"V:\" expected");
    }
  }

  double readGap() {
    expect("-(");
    const double points = readPoints();
    expect(")-");
    return points;
  }

  double readPoints() {
    double points = 0;
    const char* const start = format_.data() + at_;
    const char* const limit = format_.data() + format_.size();
    // Without the check a sign and the names of numbers that aren't finite would do too.
    const bool startsWithDigit = start != limit && *start >= '0' && *start <= '9';
    const auto [end, failure] = std::from_chars(start, limit, points, std::chars_format::fixed);
    if (!startsWithDigit || failure != std::errc()) fail("a number of points expected");
    at_ += static_cast<std::size_t>(end - start);
    return points;
  }

  std::shared_ptr<NSView> readView() {
    expect("[");
    std::size_t end = at_;
    while (end < format_.size() && isNameCharacter(format_[end])) ++end;
    if (end == at_) fail("a view's name expected");
    const auto found = views_.find(format_.substr(at_, end - at_));
    if (found == views_.end() || !found->second)
      fail(fmt::format("no view is called \"{}\"", format_.substr(at_, end - at_)));
    at_ = end;
    if (accept("(")) {
      add(found->second, length_, nullptr, LayoutAttribute::none, readPoints());
      expect(")");
    }
    expect("]");
    return found->second;
  }

  std::shared_ptr<NSView> superviewOf(const std::shared_ptr<NSView>& view) const {
    NSView* const superview = view->superview();
    if (!superview) fail("\"|\" needs views that have a superview");
    return std::static_pointer_cast<NSView>(superview->shared_from_this());
  }

  /// `second`'s edge lies `points` behind `first`'s.
  void keepApart(const std::shared_ptr<NSView>& first, LayoutAttribute firstEdge, const std::shared_ptr<NSView>& second,
                 LayoutAttribute secondEdge, double points) {
    add(second, secondEdge, first, firstEdge, points);
  }

  void add(const std::shared_ptr<NSView>& first, LayoutAttribute firstAttribute, const std::shared_ptr<NSView>& second,
           LayoutAttribute secondAttribute, double constant) {
    constraints_.push_back(NSLayoutConstraint::make(first, firstAttribute, second, secondAttribute, 1, constant));
  }

  std::string_view format_;
  const Views& views_;
  std::size_t at_ = 0;
  LayoutAttribute before_ = LayoutAttribute::leading;
  LayoutAttribute after_ = LayoutAttribute::trailing;
  LayoutAttribute length_ = LayoutAttribute::width;
  Constraints constraints_;
};

}  // namespace

VisualFormatError::VisualFormatError(std::string_view format, std::size_t position, const std::string& problem)
    : std::invalid_argument(fmt::format("layout format \"{}\": {} at position {}", format, problem, position)),
      position_(position) {}

std::vector<std::shared_ptr<NSLayoutConstraint>> constraintsWithVisualFormat(std::string_view format,
                                                                             const Views& views) {
  return Parser(format, views).parse();
}

void activateConstraints(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
  for (const auto& constraint : constraints) constraint->setActive(true);
}

}  // namespace platform
