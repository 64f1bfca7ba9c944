#include "Backends/Headless/HeadlessText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace headless {
namespace {

using platform::port::TextOptions;
using platform::port::TextRun;
using platform::port::Wrapping;

std::vector<std::u16string> linesOf(const std::u16string& text, const TextOptions& options) {
  const TextRun run{.start = 0, .length = text.size(), .font = {.size = 10}, .color = {}, .underlined = false};
  std::vector<std::u16string> lines;
  const auto laidOut = HeadlessText().layout(text, std::span(&run, 1), options);
  for (const auto& line : laidOut->lines()) lines.push_back(text.substr(line.start, line.length));
  return lines;
}

TEST(HeadlessText, LinesBreakWhereTheOptionsSay) {
  const struct {
    const char* name;
    std::u16string text;
    TextOptions options;
    std::vector<std::u16string> lines;
  } rows[] = {
      {"empty", u"", {}, {u""}},
      {"newline at the end", u"ab\n", {}, {u"ab", u""}},
      {"newlines only", u"\n\n", {}, {u"", u"", u""}},
      {"no wrapping", u"aaaa bbbb", {.width = 10}, {u"aaaa bbbb"}},
      {"words", u"aaa bbb cc", {.width = 35, .wrapping = Wrapping::words}, {u"aaa bbb ", u"cc"}},
      {"long word", u"aaaaaaa b", {.width = 20, .wrapping = Wrapping::words}, {u"aaaa", u"aaa ", u"b"}},
      {"characters", u"aa bb", {.width = 20, .wrapping = Wrapping::characters}, {u"aa b", u"b"}},
      {"hangul", u"한글한글", {.width = 25, .wrapping = Wrapping::words}, {u"한글", u"한글"}},
      {"too narrow", u"ab", {.width = 1, .wrapping = Wrapping::words}, {u"a", u"b"}},
      {"pair stays whole", u"😀😀", {.width = 1, .wrapping = Wrapping::characters}, {u"😀", u"😀"}},
      {"mark stays with its base", u"e\u0301e", {.width = 1, .wrapping = Wrapping::characters}, {u"e\u0301", u"e"}},
      {"elided", u"abcdef", {.width = 20, .elided = true}, {u"abc"}},
      {"fits", u"abcd", {.width = 20, .elided = true}, {u"abcd"}},
  };
  for (const auto& row : rows) EXPECT_EQ(linesOf(row.text, row.options), row.lines) << row.name;
}

}  // namespace
}  // namespace headless
