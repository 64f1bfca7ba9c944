#include <algorithm>
#include <random>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/AppKit/TextRanges.h"
#include "Tests/AppKit/TextFixture.h"

namespace platform {
namespace {

constexpr std::uint64_t kHuge = ~std::uint64_t{0};

Attributes look(double size) {
  return {{kFontAttribute, Font{.size = size}}};
}

/// One attribute set a unit: what the runs say, without runs.
std::vector<Attributes> unitByUnit(const NSAttributedString& text) {
  std::vector<Attributes> all;
  for (std::uint64_t at = 0; at < text.length(); ++at) all.push_back(text.attributesAt(at));
  return all;
}

void expectWellFormed(const NSAttributedString& text) {
  std::uint64_t at = 0;
  for (std::size_t index = 0; index < text.runs().size(); ++index) {
    const auto& run = text.runs()[index];
    EXPECT_EQ(run.range.location, at);
    EXPECT_GT(run.range.length, 0U);
    if (index > 0) {
      EXPECT_NE(run.attributes, text.runs()[index - 1].attributes);
    }
    at = run.range.end();
  }
  EXPECT_EQ(at, text.length());
}

TEST(TextAttributedString, RandomEditsAgreeWithAttributesKeptForEveryUnit) {
  std::mt19937 random(7);
  NSAttributedString text;
  std::u16string units;
  std::vector<Attributes> attributes;
  for (int step = 0; step < 2000; ++step) {
    const std::uint64_t location = random() % (units.size() + 1);
    const std::uint64_t length = random() % (std::min<std::uint64_t>(units.size() - location, 6) + 1);
    const Attributes style = look(10 + random() % 3);
    const auto from = attributes.begin() + static_cast<std::ptrdiff_t>(location);
    const auto to = from + static_cast<std::ptrdiff_t>(length);
    if (random() % 3 == 0) {
      text.setAttributes({location, length}, style);
      std::fill(from, to, style);
    } else {
      const std::u16string fresh(random() % 5, static_cast<char16_t>(u'a' + random() % 26));
      text.replace({location, length}, NSAttributedString(fresh, style));
      units.replace(location, length, fresh);
      attributes.insert(attributes.erase(from, to), fresh.size(), style);
    }
    ASSERT_EQ(text.string(), units) << step;
    ASSERT_EQ(unitByUnit(text), attributes) << step;
    expectWellFormed(text);
  }
}

TEST(TextAttributedString, RangesAreCutToTheText) {
  NSAttributedString text(u"abc", look(1));
  EXPECT_EQ(text.substring({1, kHuge}).string(), u"bc");
  EXPECT_EQ(text.substring({kHuge, kHuge}).string(), u"");
  EXPECT_TRUE(text.attributesAt(3).empty());
  text.replace({kHuge, 1}, NSAttributedString(u"d", look(2)));
  EXPECT_EQ(text.string(), u"abcd");
  EXPECT_EQ(text.attributesAt(3), look(2));
}

TEST(TextAttributedString, PartsPutTogetherAreTheWhole) {
  NSAttributedString text(u"한글 text 😀", look(1));
  text.setAttributes({1, 4}, look(2));
  for (std::uint64_t cut = 0; cut <= text.length(); ++cut) {
    NSAttributedString joined = text.substring({0, cut});
    joined.replace({cut, 0}, text.substring({cut, text.length()}));
    EXPECT_EQ(joined, text) << cut;
  }
}

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
