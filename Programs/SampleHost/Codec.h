#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/Foundation/Unicode.h"
#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Geometry.h"
#include "Platform/Port/Text.h"
#include "Platform/Port/Value.h"

namespace samplehost {

using platform::Value;

/// A request that can't be carried out as it is written; `what` tells its writer why.
class RequestError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Between the values of the console's JSON and C++ types. `decode` throws RequestError for a value of another type, a
/// missing or an additional member, and a number out of range.
template <class T>
struct Codec;

template <>
struct Codec<Value> {
  static Value decode(const Value& value) { return value; }
  static Value encode(const Value& value) { return value; }
};
template <>
struct Codec<bool> {
  static bool decode(const Value& value);
  static Value encode(bool value) { return value; }
};
template <>
struct Codec<double> {
  static double decode(const Value& value);
  static Value encode(double value) { return value; }
};
template <>
struct Codec<std::int64_t> {
  static std::int64_t decode(const Value& value);
  static Value encode(std::int64_t value) { return value; }
};
template <>
struct Codec<std::int32_t> {
  static std::int32_t decode(const Value& value);
  static Value encode(std::int32_t value) { return value; }
};
template <>
struct Codec<std::uint64_t> {
  static std::uint64_t decode(const Value& value);
  static Value encode(std::uint64_t value) { return static_cast<std::int64_t>(value); }
};
template <>
struct Codec<std::uint32_t> {
  static std::uint32_t decode(const Value& value);
  static Value encode(std::uint32_t value) { return static_cast<std::int64_t>(value); }
};
template <>
struct Codec<std::string> {
  static std::string decode(const Value& value);
  static Value encode(const std::string& value) { return value; }
};
template <>
struct Codec<std::u16string> {
  static std::u16string decode(const Value& value);
  static Value encode(const std::u16string& value) { return platform::utf8(value); }
};
/// `{"x","y"}`
template <>
struct Codec<platform::Point> {
  static platform::Point decode(const Value& value);
  static Value encode(const platform::Point& value);
};
/// `{"width","height"}`
template <>
struct Codec<platform::Size> {
  static platform::Size decode(const Value& value);
  static Value encode(const platform::Size& value);
};
/// `{"x","y","width","height"}`
template <>
struct Codec<platform::Rect> {
  static platform::Rect decode(const Value& value);
  static Value encode(const platform::Rect& value);
};
/// `{"location","length"}`
template <>
struct Codec<platform::NSRange> {
  static platform::NSRange decode(const Value& value);
  static Value encode(const platform::NSRange& value);
};
/// `{"red","green","blue","alpha"}`, components 0 to 1
template <>
struct Codec<platform::Color> {
  static platform::Color decode(const Value& value);
  static Value encode(const platform::Color& value);
};
/// The plain text; its attributes are not told.
template <>
struct Codec<platform::NSAttributedString> {
  static platform::NSAttributedString decode(const Value& value);
  static Value encode(const platform::NSAttributedString& value) { return value.utf8String(); }
};
/// Attribute names to texts: a font as its size, a colour as "#rrggbb".
template <>
struct Codec<platform::Attributes> {
  static Value encode(const platform::Attributes& value);
};
/// An image tells its size only; one that is asked for is drawn in one grey.
template <>
struct Codec<platform::Bitmap> {
  static platform::Bitmap decode(const Value& value);
  static Value encode(const platform::Bitmap& value);
};
template <>
struct Codec<platform::Dictionary> {
  static platform::Dictionary decode(const Value& value);
  static Value encode(const platform::Dictionary& value) { return value; }
};

/// `null` for none.
template <class T>
struct Codec<std::optional<T>> {
  static std::optional<T> decode(const Value& value) {
    if (value.isNull()) return std::nullopt;
    return Codec<T>::decode(value);
  }
  static Value encode(const std::optional<T>& value) { return value ? Codec<T>::encode(*value) : Value(); }
};
template <class T>
struct Codec<std::vector<T>> {
  static std::vector<T> decode(const Value& value) {
    const auto* array = value.get<Value::Array>();
    if (!array) throw RequestError("expected an array");
    std::vector<T> result;
    for (const Value& element : *array) result.push_back(Codec<T>::decode(element));
    return result;
  }
  static Value encode(const std::vector<T>& value) {
    Value::Array array;
    for (const T& element : value) array.push_back(Codec<T>::encode(element));
    return array;
  }
};

/// What a value is, for a person: "text", "a number", …
std::string kindOf(const Value& value);

}  // namespace samplehost
