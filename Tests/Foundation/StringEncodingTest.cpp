#include "Platform/Foundation/StringEncoding.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(StringEncoding, DecodesPublishedSamples) {
  struct Case {
    const char* name;
    const char* bytes;
    const char* want;  // null: not well formed
  };
  const Case cases[] = {{"ASCII", "plain", "plain"},
                        {"ASCII", "\x80", nullptr},
                        {"UTF-8", "한글", "한글"},
                        {"utf8", "\xED\xA0\x80", nullptr},
                        {"CP437", "na\x8bve \xe1\xb0\xff", "naïve ß░\u00A0"},
                        {"ibm437", "\x01\x7f", "\x01\x7f"},
                        {"ISO-8859-1", "\xe9", "é"},
                        {"windows-1252", "\x80 \x93", "€ “"},
                        {"CP1250", "\xb3", "ł"},
                        {"CP1251", "\xcf\xf0", "Пр"},
                        {"CP850", "\x84\xe1", "äß"},
                        {"CP866", "\x8f\xe0", "Пр"},
                        {"CP949", "\xc7\xd1\xb1\xdb", "한글"},
                        {"cp949", "\x8c\x63", "똠"},
                        {"cp949", "\xc7", nullptr},
                        {"EUC-KR", "\xc7\xd1\xb1\xdb", "한글"},
                        {"Shift_JIS", "\x93\xfa\x96\x7b", "日本"},
                        {"GB18030", "\xd6\xd0", "中"},
                        {"Big5", "\xa4\xa4", "中"}};
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.name) + ": " + row.bytes);
    const auto encoding = stringEncodingNamed(row.name);
    ASSERT_TRUE(encoding);
    EXPECT_EQ(decode(bytesOf(row.bytes), *encoding),
              row.want == nullptr ? std::nullopt : std::optional<std::string>(row.want));
  }
}

TEST(StringEncoding, OneByteThatIsNoASCIIIsSeenWhereverItStands) {
  for (std::size_t size = 0; size < 20; ++size) {
    std::string text(size, 'a');
    EXPECT_EQ(decode(bytesOf(text), StringEncoding::ascii), text);
    for (std::size_t at = 0; at < size; ++at) {
      text[at] = '\x80';
      EXPECT_FALSE(decode(bytesOf(text), StringEncoding::ascii)) << at << " of " << size;
      text[at] = 'a';
    }
  }
}

TEST(StringEncoding, KnowsNoNameThatIsNone) {
  for (const char* name : {"", "utf-9", "cp", "437"}) EXPECT_FALSE(stringEncodingNamed(name)) << name;
}

TEST(StringEncoding, EveryCodePage437CharacterIsValidUTF8AndItsOwn) {
  std::string seen;
  for (int byte = 0x80; byte < 0x100; ++byte) {
    const char character[] = {static_cast<char>(byte), '\0'};
    const auto text = decode(bytesOf(character), StringEncoding::codePage437);
    ASSERT_TRUE(text && isValidUTF8(*text)) << byte;
    EXPECT_EQ(seen.find("|" + *text + "|"), std::string::npos) << byte;
    seen += "|" + *text + "|";
  }
}

// The table of well-formed sequences in the Unicode Standard, 3.9, at its borders.
TEST(StringEncoding, TellsWellFormedUTF8) {
  for (const char* text :
       {"", "\x7f", "\xc2\x80", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"})
    EXPECT_TRUE(isValidUTF8(text)) << testing::PrintToString(text);
  for (const char* text :
       {"\x80", "\xc1\xbf", "\xc2", "\xc2\x7f", "\xe0\x9f\x80", "\xed\xa0\x80", "\xef\xbf", "\xef\xbf\x7f",
        "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf0\x90\x80", "\xf0\x90\x7f\x80", "\xf5\x80\x80\x80", "ok\xff"})
    EXPECT_FALSE(isValidUTF8(text)) << testing::PrintToString(text);
}

}  // namespace
}  // namespace platform
