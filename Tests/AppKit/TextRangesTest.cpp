#include "Platform/AppKit/TextRanges.h"

#include "Tests/AppKit/TextFixture.h"

namespace platform {
namespace {

constexpr std::uint64_t kHuge = ~std::uint64_t{0};

TEST(TextRanges, AreCutToTheTextAndToWholePairs) {
  struct Row {
    const char* name;
    std::u16string text;
    NSRange range, expected;
  };
  const std::u16string grin = u"a😀b";  // 0 a, 1-2 the pair, 3 b
  for (const Row& row : std::initializer_list<Row>{
           {"whole", grin, {0, 4}, {0, 4}},
           {"past the end", grin, {2 + 2, 9}, {4, 0}},
           {"far past the end", grin, {kHuge, kHuge}, {4, 0}},
           {"length overflows", grin, {3, kHuge}, {3, 1}},
           {"caret inside the pair", grin, {2, 0}, {1, 0}},
           {"starts inside the pair", grin, {2, 2}, {1, 3}},
           {"ends inside the pair", grin, {0, 2}, {0, 3}},
           {"half a pair", grin, {1, 1}, {1, 2}},
           {"the other half", grin, {2, 1}, {1, 2}},
           {"lone lead at the end", u"a\xD83D", {2, 5}, {2, 0}},
           {"lone halves in the wrong order", u"\xDE00\xD83D", {1, 1}, {1, 1}},
           {"empty text", u"", {kHuge, 3}, {0, 0}},
       })
    EXPECT_EQ(clampedRange(row.text, row.range), row.expected) << row.name;
}

TEST(TextRanges, ParagraphsIncludeTheirNewlineAndCoverTheText) {
  const std::u16string text = u"ab\n\ncd";
  const NSRange expected[] = {{0, 3}, {0, 3}, {0, 3}, {3, 1}, {4, 2}, {4, 2}, {4, 2}};
  for (std::uint64_t at = 0; at <= text.size(); ++at) EXPECT_EQ(paragraphAround(text, at), expected[at]) << at;
  EXPECT_EQ(paragraphAround(u"a\n", 2), (NSRange{2, 0}));
  EXPECT_EQ(paragraphAround(u"ab", kHuge), (NSRange{0, 2}));
}

TEST(TextRanges, ChangedRangePutIntoTheOldTextGivesTheNewOne) {
  const std::u16string texts[] = {u"", u"a", u"aa", u"aba", u"abab", u"한글", u"한"};
  for (const auto& before : texts)
    for (const auto& after : texts) {
      const NSRange changed = changedRange(before, after);
      const std::uint64_t unchanged = after.size() - changed.length;
      std::u16string rebuilt = before;
      ASSERT_LE(changed.location, unchanged);
      ASSERT_LE(unchanged, before.size());
      rebuilt.replace(changed.location, before.size() - unchanged, after, changed.location, changed.length);
      EXPECT_EQ(rebuilt, after);
    }
}

TEST(TextRanges, PlainTextHasOneKindOfLineEndAndNoControls) {
  EXPECT_EQ(plainText("a\r\nb\rc\nd\r\r\n"), u"a\nb\nc\nd\n\n");
  EXPECT_EQ(plainText(std::string_view("x\0y\x07\x7F\tz", 7)), u"xy\tz");
  EXPECT_EQ(plainText("\xFF한"), u"\uFFFD한");
}

}  // namespace
}  // namespace platform
