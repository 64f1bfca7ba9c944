#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/Unicode.h"
#include "Platform/Port/Text.h"

namespace platform {

/// Attribute names.
inline constexpr const char* kFontAttribute = "NSFont";
inline constexpr const char* kForegroundColorAttribute = "NSColor";

using AttributeValue = std::variant<Font, Color, std::string>;
using Attributes = std::map<std::string, AttributeValue>;

/// A text in UTF-16 with attributes on stretches of it; a value. Ranges are clamped to the text.
class PLATFORM_EXPORT NSAttributedString {
 public:
  struct Run {
    NSRange range;
    Attributes attributes;
    friend bool operator==(const Run&, const Run&) = default;
  };

  NSAttributedString() = default;
  explicit NSAttributedString(std::u16string text, Attributes attributes = {});
  /// From UTF-8.
  explicit NSAttributedString(std::string_view text, Attributes attributes = {});

  const std::u16string& string() const { return text_; }
  std::string utf8String() const;
  std::uint64_t length() const { return text_.size(); }
  /// Stretches of equal attributes, in order, covering the text; neighbours differ.
  const std::vector<Run>& runs() const { return runs_; }
  /// Empty at or past the end.
  Attributes attributesAt(std::uint64_t at) const;
  NSAttributedString substring(NSRange range) const;

  void replace(NSRange range, const NSAttributedString& with);
  void setAttributes(NSRange range, const Attributes& attributes);
  friend bool operator==(const NSAttributedString&, const NSAttributedString&) = default;

 private:
  std::u16string text_;
  std::vector<Run> runs_;
};

}  // namespace platform
