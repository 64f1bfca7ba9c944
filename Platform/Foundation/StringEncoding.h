#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"

namespace platform {

/// How bytes stand for text. Texts inside the program are UTF-8 always.
enum class StringEncoding {
  ascii,
  utf8,
  codePage437,  ///< DOS Latin US, what a ZIP archive's names are in unless it says otherwise
  isoLatin1,
  windowsLatin1,    ///< code page 1252
  windowsLatin2,    ///< code page 1250
  windowsCyrillic,  ///< code page 1251
  dosLatin1,        ///< code page 850
  dosCyrillic,      ///< code page 866
  dosKorean,        ///< code page 949, Unified Hangul Code
  eucKorean,
  dosJapanese,         ///< code page 932, Shift JIS
  simplifiedChinese,   ///< GB 18030
  traditionalChinese,  ///< code page 950, Big5
};

/// The bytes as UTF-8 text, or nothing when they are not well formed in the encoding. Any thread.
PLATFORM_EXPORT std::optional<std::string> decode(DataView bytes, StringEncoding encoding);

/// The encoding with this usual name ("UTF-8", "CP437", "cp949", "EUC-KR", "Shift_JIS"…), letter case and hyphens
/// aside.
PLATFORM_EXPORT std::optional<StringEncoding> stringEncodingNamed(std::string_view name);

/// True when the text is well-formed UTF-8: no overlong form, no surrogate, nothing beyond U+10FFFF.
PLATFORM_EXPORT bool isValidUTF8(std::string_view text);

}  // namespace platform
