#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/Export.h"

namespace platform {

/// A layout format that can't be read. `what()` names the format, what is wrong with it and where.
class PLATFORM_EXPORT VisualFormatError : public std::invalid_argument {
 public:
  VisualFormatError(std::string_view format, std::size_t position, const std::string& problem);
  /// Bytes from the format's start.
  std::size_t position() const { return position_; }

 private:
  std::size_t position_;
};

/// The constraints that a line of the visual format language describes, not active yet:
///
///     format  = ("H:" | "V:") ["|" gap] view {gap view} [gap "|"]
///     view    = "[" name ["(" points ")"] "]"
///     gap     = "-(" points ")-"
///
/// "|" is the superview that the views have in common, points are a decimal number, names are those of `views`. "H:"
/// runs from the leading to the trailing edge, "V:" from the top to the bottom. Throws VisualFormatError.
PLATFORM_EXPORT std::vector<std::shared_ptr<NSLayoutConstraint>> constraintsWithVisualFormat(
    std::string_view format, const std::map<std::string, std::shared_ptr<NSView>, std::less<>>& views);

/// Makes all of them active.
PLATFORM_EXPORT void activateConstraints(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);

}  // namespace platform
