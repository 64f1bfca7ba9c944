#include "Platform/AppKit/TextRanges.h"

#include <algorithm>

namespace platform {
namespace {

bool isInsidePair(std::u16string_view text, std::uint64_t at) {
  const auto isLead = [](char16_t unit) { return (unit & 0xFC00) == 0xD800; };
  const auto isTrail = [](char16_t unit) { return (unit & 0xFC00) == 0xDC00; };
  return at > 0 && at < text.size() && isLead(text[at - 1]) && isTrail(text[at]);
}

}  // namespace

NSRange clampedRange(std::u16string_view text, NSRange range) {
  std::uint64_t start = std::min<std::uint64_t>(range.location, text.size());
  std::uint64_t end = start + std::min<std::uint64_t>(range.length, text.size() - start);
  const bool empty = start == end;
  if (isInsidePair(text, start)) --start;
  if (empty) return {start, 0};
  if (isInsidePair(text, end)) ++end;
  return {start, end - start};
}

NSRange paragraphAround(std::u16string_view text, std::uint64_t at) {
  at = std::min<std::uint64_t>(at, text.size());
  const std::size_t before = at == 0 ? std::u16string_view::npos : text.rfind(u'\n', at - 1);
  const std::size_t start = before == std::u16string_view::npos ? 0 : before + 1;
  const std::size_t newline = text.find(u'\n', at);
  const std::size_t end = newline == std::u16string_view::npos ? text.size() : newline + 1;
  return {start, end - start};
}

NSRange changedRange(std::u16string_view before, std::u16string_view after) {
  const std::size_t shorter = std::min(before.size(), after.size());
  const std::size_t same =
      std::mismatch(before.begin(), before.begin() + shorter, after.begin()).first - before.begin();
  std::size_t tail = 0;
  while (tail < shorter - same && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  return {same, after.size() - tail - same};
}

std::u16string plainText(std::string_view utf8) {
  const std::u16string text = utf16(utf8);
  std::u16string plain;
  plain.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit == u'\r') {
      plain.push_back(u'\n');
      if (at + 1 < text.size() && text[at + 1] == u'\n') ++at;
    } else if (unit >= u' ' || unit == u'\n' || unit == u'\t') {
      if (unit != 0x7F) plain.push_back(unit);
    }
  }
  return plain;
}

}  // namespace platform
