#include "Backends/Headless/HeadlessText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace headless {
namespace {

using platform::port::TextOptions;
using platform::port::TextRun;
using platform::port::Wrapping;
using testing::ElementsAre;

std::shared_ptr<const platform::port::TextLayout> layout(const std::u16string& text, const TextOptions& options = {}) {
  const TextRun run{.start = 0, .length = text.size(), .font = {.size = 10}, .color = {}, .underlined = false};
  return HeadlessText().layout(text, std::span(&run, 1), options);
}

std::vector<std::u16string> linesOf(const std::u16string& text, const TextOptions& options) {
  std::vector<std::u16string> lines;
  const auto laidOut = layout(text, options);
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

TEST(HeadlessText, CaretsStandBetweenCharacters) {
  const auto text = layout(u"a한e\u0301😀");
  std::vector<double> carets;
  for (std::size_t at = 0; at <= 6; ++at) carets.push_back(text->caretX(0, at));
  EXPECT_THAT(carets, ElementsAre(0, 5, 15, 20, 20, 30, 30));
  const struct {
    double x;
    std::size_t offset;
  } rows[] = {{-5, 0}, {2, 0}, {4, 1}, {11, 2}, {19, 4}, {24, 4}, {26, 6}, {99, 6}};
  for (const auto& row : rows) EXPECT_EQ(text->offsetAt(0, row.x), row.offset) << row.x;
}

}  // namespace
}  // namespace headless
