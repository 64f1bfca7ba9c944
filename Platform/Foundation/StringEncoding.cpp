#include "Platform/Foundation/StringEncoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

struct NamedEncoding {
  std::string_view name;  // as in `normalized`
  StringEncoding encoding;
};

constexpr std::array kNames = {
    NamedEncoding{"ascii", StringEncoding::ascii},
    NamedEncoding{"usascii", StringEncoding::ascii},
    NamedEncoding{"utf8", StringEncoding::utf8},
    NamedEncoding{"cp437", StringEncoding::codePage437},
    NamedEncoding{"ibm437", StringEncoding::codePage437},
    NamedEncoding{"iso88591", StringEncoding::isoLatin1},
    NamedEncoding{"latin1", StringEncoding::isoLatin1},
    NamedEncoding{"cp1252", StringEncoding::windowsLatin1},
    NamedEncoding{"windows1252", StringEncoding::windowsLatin1},
    NamedEncoding{"cp1250", StringEncoding::windowsLatin2},
    NamedEncoding{"windows1250", StringEncoding::windowsLatin2},
    NamedEncoding{"cp1251", StringEncoding::windowsCyrillic},
    NamedEncoding{"windows1251", StringEncoding::windowsCyrillic},
    NamedEncoding{"cp850", StringEncoding::dosLatin1},
    NamedEncoding{"ibm850", StringEncoding::dosLatin1},
    NamedEncoding{"cp866", StringEncoding::dosCyrillic},
    NamedEncoding{"ibm866", StringEncoding::dosCyrillic},
    NamedEncoding{"cp949", StringEncoding::dosKorean},
    NamedEncoding{"uhc", StringEncoding::dosKorean},
    NamedEncoding{"euckr", StringEncoding::eucKorean},
    NamedEncoding{"cp932", StringEncoding::dosJapanese},
    NamedEncoding{"shiftjis", StringEncoding::dosJapanese},
    NamedEncoding{"sjis", StringEncoding::dosJapanese},
    NamedEncoding{"gb18030", StringEncoding::simplifiedChinese},
    NamedEncoding{"cp936", StringEncoding::simplifiedChinese},
    NamedEncoding{"gbk", StringEncoding::simplifiedChinese},
    NamedEncoding{"cp950", StringEncoding::traditionalChinese},
    NamedEncoding{"big5", StringEncoding::traditionalChinese},
};

/// The system's converter for an encoding that is not handled here.
const char* converterName(StringEncoding encoding) {
  switch (encoding) {
    case StringEncoding::windowsLatin1:
      return "CP1252";
    case StringEncoding::windowsLatin2:
      return "CP1250";
    case StringEncoding::windowsCyrillic:
      return "CP1251";
    case StringEncoding::dosLatin1:
      return "CP850";
    case StringEncoding::dosCyrillic:
      return "CP866";
    case StringEncoding::dosKorean:
      return "CP949";
    case StringEncoding::eucKorean:
      return "EUC-KR";
    case StringEncoding::dosJapanese:
      return "CP932";
    case StringEncoding::simplifiedChinese:
      return "GB18030";
    case StringEncoding::traditionalChinese:
      return "CP950";
    default:
      return "ISO-8859-1";
  }
}

/// The upper half of code page 437.
constexpr std::u16string_view kCodePage437 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»"
    u"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
    u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
static_assert(kCodePage437.size() == 128);

constexpr std::uint64_t kHighBits = 0x8080808080808080;

/// The next eight bytes, since most texts are ASCII and can be looked through by so many at a time.
std::uint64_t eightAt(std::string_view text, std::size_t at) {
  std::uint64_t eight = 0;
  std::memcpy(&eight, text.data() + at, sizeof eight);
  return eight;
}

/// How many ASCII characters the text starts with.
std::size_t leadingASCII(std::string_view text) {
  std::size_t at = 0;
  while (text.size() - at >= sizeof kHighBits && (eightAt(text, at) & kHighBits) == 0) at += sizeof kHighBits;
  while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) ++at;
  return at;
}

bool isASCII(std::string_view text) {
  if (text.size() < sizeof kHighBits) return leadingASCII(text) == text.size();
  // The last eight overlap those before them, which spares a look at single ones.
  std::uint64_t seen = eightAt(text, text.size() - sizeof kHighBits);
  for (std::size_t at = 0; text.size() - at > sizeof kHighBits; at += sizeof kHighBits) seen |= eightAt(text, at);
  return (seen & kHighBits) == 0;
}

void appendUTF8(std::string& text, char16_t unit) {
  if (unit < 0x800) {
    text.push_back(static_cast<char>(0xC0 | (unit >> 6)));
  } else {
    text.push_back(static_cast<char>(0xE0 | (unit >> 12)));
    text.push_back(static_cast<char>(0x80 | ((unit >> 6) & 0x3F)));
  }
  text.push_back(static_cast<char>(0x80 | (unit & 0x3F)));
}

std::string decodeCodePage437(DataView bytes) {
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::byte byte : bytes) {
    const auto value = std::to_integer<unsigned>(byte);
    if (value < 0x80) {
      text.push_back(static_cast<char>(value));
    } else {
      appendUTF8(text, kCodePage437[value - 0x80]);
    }
  }
  return text;
}

class Converter {
 public:
  explicit Converter(const char* from) : handle_(iconv_open("UTF-8", from)) {}
  ~Converter() {
    if (isOpen()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::optional<std::string> convert(DataView bytes) {
    if (!isOpen()) return std::nullopt;
    // No character of these encodings takes more than four bytes of UTF-8 for one of its own.
    std::string text(bytes.size() * 4, '\0');
    char* source = const_cast<char*>(textOf(bytes).data());
    std::size_t sourceLeft = bytes.size();
    char* target = text.data();
    std::size_t targetLeft = text.size();
    if (iconv(handle_, &source, &sourceLeft, &target, &targetLeft) == static_cast<std::size_t>(-1)) return std::nullopt;
    text.resize(text.size() - targetLeft);
    return text;
  }

 private:
  bool isOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  iconv_t handle_;
};

std::string normalized(std::string_view name) {
  std::string result;
  for (const char c : name) {
    if (c == '-' || c == '_' || c == ' ') continue;
    result.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
  }
  return result;
}

/// The length of the well-formed sequence that `text` starts with, or 0.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U; };
  const auto isBetween = [](unsigned value, unsigned low, unsigned high) { return value >= low && value <= high; };
  const auto continues = [&](std::size_t at) { return isBetween(byte(at), 0x80, 0xBF); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (isBetween(first, 0xC2, 0xDF)) return continues(1) ? 2 : 0;
  // The second byte's range shuts out overlong forms, surrogates and what lies beyond U+10FFFF.
  if (isBetween(first, 0xE0, 0xEF)) {
    const bool isSound = isBetween(byte(1), first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF);
    return isSound && continues(2) ? 3 : 0;
  }
  if (isBetween(first, 0xF0, 0xF4)) {
    const bool isSound = isBetween(byte(1), first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF);
    return isSound && continues(2) && continues(3) ? 4 : 0;
  }
  return 0;
}

}  // namespace

bool isValidUTF8(std::string_view text) {
  while (true) {
    text.remove_prefix(leadingASCII(text));
    if (text.empty()) return true;
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
}

std::optional<std::string> decode(DataView bytes, StringEncoding encoding) {
  const std::string_view text = textOf(bytes);
  switch (encoding) {
    case StringEncoding::ascii:
      return isASCII(text) ? std::optional(std::string(text)) : std::nullopt;
    case StringEncoding::utf8:
      return isValidUTF8(text) ? std::optional(std::string(text)) : std::nullopt;
    case StringEncoding::codePage437:
      return isASCII(text) ? std::string(text) : decodeCodePage437(bytes);
    default:
      return Converter(converterName(encoding)).convert(bytes);
  }
}

std::optional<StringEncoding> stringEncodingNamed(std::string_view name) {
  const std::string wanted = normalized(name);
  const auto at = std::find_if(kNames.begin(), kNames.end(), [&](const auto& known) { return known.name == wanted; });
  return at == kNames.end() ? std::nullopt : std::optional(at->encoding);
}

}  // namespace platform
