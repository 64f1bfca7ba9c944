#include "Platform/AppKit/NSAttributedString.h"

#include <algorithm>
#include <utility>

namespace platform {
namespace {

using Runs = std::vector<NSAttributedString::Run>;

NSRange clamped(NSRange range, std::uint64_t size) {
  const std::uint64_t location = std::min(range.location, size);
  return {location, std::min(range.length, size - location)};
}

void append(Runs& runs, NSRange range, const Attributes& attributes) {
  if (range.length == 0) return;
  if (!runs.empty() && runs.back().attributes == attributes) {
    runs.back().range.length += range.length;
  } else {
    runs.push_back({range, attributes});
  }
}

/// Appends the part of `runs` inside `range`, its start moved to `at`.
void appendPart(Runs& to, const Runs& runs, NSRange range, std::uint64_t at) {
  for (const auto& run : runs) {
    const std::uint64_t start = std::max(run.range.location, range.location);
    const std::uint64_t end = std::min(run.range.end(), range.end());
    if (start < end) append(to, {start - range.location + at, end - start}, run.attributes);
  }
}

}  // namespace

NSAttributedString::NSAttributedString(std::u16string text, Attributes attributes) : text_(std::move(text)) {
  append(runs_, {0, text_.size()}, attributes);
}

NSAttributedString::NSAttributedString(std::string_view text, Attributes attributes)
    : NSAttributedString(utf16(text), std::move(attributes)) {}

std::string NSAttributedString::utf8String() const {
  return utf8(text_);
}

Attributes NSAttributedString::attributesAt(std::uint64_t at) const {
  for (const auto& run : runs_)
    if (at >= run.range.location && at < run.range.end()) return run.attributes;
  return {};
}

NSAttributedString NSAttributedString::substring(NSRange range) const {
  range = clamped(range, length());
  NSAttributedString part;
  part.text_ = text_.substr(range.location, range.length);
  appendPart(part.runs_, runs_, range, 0);
  return part;
}

void NSAttributedString::replace(NSRange range, const NSAttributedString& with) {
  range = clamped(range, length());
  Runs runs;
  appendPart(runs, runs_, {0, range.location}, 0);
  appendPart(runs, with.runs_, {0, with.length()}, range.location);
  appendPart(runs, runs_, {range.end(), length() - range.end()}, range.location + with.length());
  text_.replace(range.location, range.length, with.text_);
  runs_ = std::move(runs);
}

void NSAttributedString::setAttributes(NSRange range, const Attributes& attributes) {
  range = clamped(range, length());
  replace(range, NSAttributedString(text_.substr(range.location, range.length), attributes));
}

}  // namespace platform
