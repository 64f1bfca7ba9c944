#include "Platform/Foundation/Unicode.h"

#include <unicode/ubrk.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace platform {

namespace {

constexpr UChar32 kReplacement = 0xFFFD;

void require(UErrorCode status, const char* what) {
  if (U_FAILURE(status)) throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

std::int32_t lengthOf(std::size_t length) {
  if (length > INT32_MAX) throw std::length_error("a text of more than 2 GiB");
  return static_cast<std::int32_t>(length);
}

/// A break iterator set to a text. Opening one is slow, so each thread keeps one of a kind.
class Breaks {
 public:
  Breaks(UBreakIteratorType type, std::u16string_view text)
      : iterator_(shared(type)), text_(text), size_(lengthOf(text.size())) {
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator_, text.data(), size_, &status);
    require(status, "ubrk_setText");
  }
  ~Breaks() {
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator_, u"", 0, &status);  // the text isn't ours to keep
  }
  Breaks(const Breaks&) = delete;
  Breaks& operator=(const Breaks&) = delete;

  std::size_t following(std::size_t at) const {
    const std::int32_t found = ubrk_following(iterator_, static_cast<std::int32_t>(at));
    return static_cast<std::size_t>(found == UBRK_DONE ? size_ : found);
  }
  std::size_t preceding(std::size_t at) const {
    // Between the halves of a surrogate pair ICU would look before the pair, not at it.
    if (at > 0 && at < text_.size() && U16_IS_LEAD(text_[at - 1]) && U16_IS_TRAIL(text_[at])) ++at;
    return static_cast<std::size_t>(std::max(0, ubrk_preceding(iterator_, static_cast<std::int32_t>(at))));
  }
  bool isBoundary(std::size_t at) const { return ubrk_isBoundary(iterator_, static_cast<std::int32_t>(at)); }
  /// What ends at the boundary found last is a word, not blanks or punctuation.
  bool endsWord() const { return ubrk_getRuleStatus(iterator_) >= UBRK_WORD_NONE_LIMIT; }

 private:
  struct Close {
    void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
  };
  static UBreakIterator* shared(UBreakIteratorType type) {
    thread_local std::unique_ptr<UBreakIterator, Close> characters, words;
    auto& kept = type == UBRK_CHARACTER ? characters : words;
    if (!kept) {
      UErrorCode status = U_ZERO_ERROR;
      kept.reset(ubrk_open(type, "", nullptr, 0, &status));
      require(status, "ubrk_open");
    }
    return kept.get();
  }

  UBreakIterator* iterator_;
  std::u16string_view text_;
  std::int32_t size_;
};

bool isBlank(char16_t unit) {
  return unit == u' ' || unit == u'\t' || unit == u'\u00A0' || unit == u'\u3000';
}

}  // namespace

std::u16string utf16(std::string_view utf8) {
  std::u16string result(utf8.size(), u'\0');  // never more units than bytes
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(result.data(), lengthOf(result.size()), &length, utf8.data(), lengthOf(utf8.size()),
                       kReplacement, nullptr, &status);
  require(status, "u_strFromUTF8WithSub");
  result.resize(static_cast<std::size_t>(length));
  return result;
}

std::string utf8(std::u16string_view utf16) {
  std::string result(utf16.size() * 3, '\0');  // a unit takes three bytes at most, a pair four
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(result.data(), lengthOf(result.size()), &length, utf16.data(), lengthOf(utf16.size()),
                     kReplacement, nullptr, &status);
  require(status, "u_strToUTF8WithSub");
  result.resize(static_cast<std::size_t>(length));
  return result;
}

std::size_t nextCharacter(std::u16string_view text, std::size_t at) {
  return at >= text.size() ? text.size() : Breaks(UBRK_CHARACTER, text).following(at);
}

std::size_t previousCharacter(std::u16string_view text, std::size_t at) {
  return Breaks(UBRK_CHARACTER, text).preceding(std::min(at, text.size()));
}

std::size_t nextWordEnd(std::u16string_view text, std::size_t at) {
  const Breaks breaks(UBRK_WORD, text);
  for (at = std::min(at, text.size()); at < text.size();) {
    at = breaks.following(at);
    if (breaks.endsWord()) return at;
  }
  return text.size();
}

std::size_t previousWordStart(std::u16string_view text, std::size_t at) {
  const Breaks breaks(UBRK_WORD, text);
  for (at = std::min(at, text.size()); at > 0;) {
    at = breaks.preceding(at);
    breaks.following(at);
    if (breaks.endsWord()) return at;
  }
  return 0;
}

NSRange wordAround(std::u16string_view text, std::size_t at) {
  if (text.empty()) return {};
  at = std::min(at, text.size() - 1);
  std::size_t start = at, end = at + 1;
  if (isBlank(text[at])) {
    while (start > 0 && isBlank(text[start - 1])) --start;
    while (end < text.size() && isBlank(text[end])) ++end;
  } else {
    const Breaks breaks(UBRK_WORD, text);
    if (!breaks.isBoundary(at)) start = breaks.preceding(at);
    end = breaks.following(at);
  }
  return {start, end - start};
}

}  // namespace platform
