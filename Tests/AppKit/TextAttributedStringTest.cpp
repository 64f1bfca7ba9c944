#include <gtest/gtest.h>

#include <random>

#include "Platform/AppKit/NSAttributedString.h"

namespace platform {
namespace {

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
  constexpr std::uint64_t kHuge = ~std::uint64_t{0};
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

}  // namespace
}  // namespace platform
