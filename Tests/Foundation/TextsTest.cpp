#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/JSON.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {
namespace {

TEST(Geometry, TextIsAsShortAsItReadsBack) {
  const struct {
    Rect rect;
    const char* text;
  } rows[] = {
      {{0, 0, 0, 0}, "{{0, 0}, {0, 0}}"},
      {{10, 20, 300, 200}, "{{10, 20}, {300, 200}}"},
      {{-0.0, -1.5, 0.1, 1e6}, "{{0, -1.5}, {0.1, 1000000}}"},
      {{1.0 / 3, 0, 1, 1}, "{{0.3333333333333333, 0}, {1, 1}}"},
  };
  for (const auto& row : rows) EXPECT_EQ(NSStringFromRect(row.rect), row.text);
  EXPECT_EQ(NSStringFromSize({29, 0.5}), "{29, 0.5}");
}

TEST(Unicode, WellFormedTextSurvivesAndOtherIsReplaced) {
  const struct {
    const char* name;
    std::string utf8;
    std::u16string utf16;
    bool reversible;
  } rows[] = {
      {"empty", "", u"", true},
      {"one to four bytes", "aé한😀", u"aé한😀", true},
      {"zero", std::string("a\0b", 3), std::u16string(u"a\0b", 3), true},
      {"truncated", "a\xED\x95", u"a\uFFFD", false},
      {"overlong", "\xC0\x80", u"\uFFFD\uFFFD", false},
      {"surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", false},
      {"beyond the last", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(utf16(row.utf8), row.utf16);
    EXPECT_EQ(utf8(row.utf16) == row.utf8, row.reversible);
  }
  EXPECT_EQ(utf8(std::u16string{u'a', char16_t{0xD83D}, u'b'}), "a\uFFFDb");
}

TEST(Unicode, CharactersAreWhatAUserPerceives) {
  // From the Unicode character database's examples for grapheme clusters.
  const std::u16string clusters[] = {u"a",  u"e\u0301", u"한",          u"\u1112\u1161\u11AB", u"👨\u200D👩\u200D👧",
                                     u"🇰🇷", u"\r\n",    u"👍\U0001F3FD"};
  std::u16string text;
  std::vector<std::size_t> boundaries{0};
  for (const auto& cluster : clusters) boundaries.push_back((text += cluster).size());
  for (std::size_t i = 0; i + 1 < boundaries.size(); ++i)
    for (std::size_t at = boundaries[i]; at < boundaries[i + 1]; ++at) {
      EXPECT_EQ(nextCharacter(text, at), boundaries[i + 1]) << at;
      EXPECT_EQ(previousCharacter(text, at + 1), boundaries[i]) << at;
    }
  EXPECT_EQ(nextCharacter(text, text.size()), text.size());
  EXPECT_EQ(nextCharacter(text, 1000), text.size());
  EXPECT_EQ(previousCharacter(text, 1000), boundaries[boundaries.size() - 2]);
  EXPECT_EQ(previousCharacter(text, 0), 0u);
}

TEST(Unicode, WordsEndAndStartAroundBlanksAndPunctuation) {
  const std::u16string text = u"one, two 한글을  x";
  //                            0123456789    12  15
  const struct {
    std::size_t at, nextEnd, previousStart;
  } rows[] = {{0, 3, 0},  {1, 3, 0},   {3, 8, 0},   {5, 8, 0},    {6, 8, 5},
              {9, 12, 5}, {10, 12, 9}, {12, 15, 9}, {15, 15, 14}, {99, 15, 14}};
  for (const auto& row : rows) {
    EXPECT_EQ(nextWordEnd(text, row.at), row.nextEnd) << row.at;
    EXPECT_EQ(previousWordStart(text, row.at), row.previousStart) << row.at;
  }
  EXPECT_EQ(nextWordEnd(u"one ...", 3), 7u) << "no further word: the text's end";
  EXPECT_EQ(previousWordStart(u"... one", 4), 0u);
}

TEST(Unicode, ADoubleClickTakesAWordABlankStretchOrASymbol) {
  const std::u16string text = u"one,  two";
  const struct {
    std::size_t at;
    NSRange range;
  } rows[] = {{0, {0, 3}}, {2, {0, 3}}, {3, {3, 1}}, {4, {4, 2}}, {5, {4, 2}}, {8, {6, 3}}, {9, {6, 3}}, {99, {6, 3}}};
  for (const auto& row : rows) EXPECT_EQ(wordAround(text, row.at), row.range) << row.at;
  EXPECT_EQ(wordAround(u"", 0), (NSRange{0, 0}));
}

TEST(JSON, DocumentsReadAsTheyAreMeant) {
  const struct {
    const char* text;
    Value value;
  } rows[] = {
      {"null", {}},
      {" true ", true},
      {"-12", -12},
      {"9223372036854775807", std::int64_t{INT64_MAX}},
      {"9223372036854775808", 9223372036854775808.0},
      {"1.5e2", 150.0},
      {R"("a\u0000\ud83d\ude00")", std::string("a\0\xF0\x9F\x98\x80", 6)},
      {"[]", Value::Array{}},
      {R"({"a":[1,{"b":[]}],"c":{}})",
       Dictionary{{"a", Value::Array{1, Dictionary{{"b", Value::Array{}}}}}, {"c", Dictionary{}}}},
      {R"({"a":1,"a":2})", Dictionary{{"a", 2}}},
  };
  for (const auto& row : rows) {
    const auto read = valueFromJSON(row.text);
    ASSERT_TRUE(read) << row.text;
    EXPECT_EQ(*read, row.value) << row.text;
    EXPECT_EQ(valueFromJSON(jsonText(row.value)), row.value) << row.text;
    EXPECT_EQ(valueFromJSON(jsonText(row.value, true)), row.value) << row.text;
  }
}

TEST(JSON, WhatIsNotOneDocumentIsNothing) {
  for (const char* text : {"", " ", "{", "[1,]", "[1] 2", "nul", "'a'", "{\"a\"}", "\"\x01\"", "\"\xFF\"", "NaN", "01"})
    EXPECT_FALSE(valueFromJSON(text)) << text;
  const std::string whole = R"({"key":[1,-2.5e3,"t\n",true,null,{"k":"v"}]})";
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(valueFromJSON(whole.substr(0, length))) << length;
}

TEST(JSON, DepthIsBounded) {
  const auto arrays = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_TRUE(valueFromJSON(arrays(512)));
  EXPECT_FALSE(valueFromJSON(arrays(513)));
  EXPECT_FALSE(valueFromJSON(std::string(1'000'000, '[')));
}

TEST(JSON, WritesWhatHasNoTextOfItsOwn) {
  EXPECT_EQ(jsonText(Dictionary{{"k", "a\xFFz"}}), "{\"k\":\"a\uFFFDz\"}");
  EXPECT_EQ(jsonText(std::numeric_limits<double>::infinity()), "null");
}

}  // namespace
}  // namespace platform
