#include "Programs/SampleHost/Codec.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace samplehost {

using platform::Bitmap;
using platform::Color;
using platform::Dictionary;
using platform::NSRange;
using platform::Point;
using platform::Rect;
using platform::Size;

namespace {

template <class T>
const T& require(const Value& value, const char* expected) {
  const T* held = value.get<T>();
  if (!held) throw RequestError(fmt::format("expected {}, got {}", expected, kindOf(value)));
  return *held;
}

template <class T>
T integer(const Value& value) {
  const auto number = require<std::int64_t>(value, "a whole number");
  if (!std::in_range<T>(number)) throw RequestError(fmt::format("{} is out of range", number));
  return static_cast<T>(number);
}

/// The numbers of an object that has exactly these members.
template <std::size_t N>
std::array<Value, N> members(const Value& value, const std::array<const char*, N>& names, const char* expected) {
  const auto& dictionary = require<Dictionary>(value, expected);
  std::array<Value, N> result;
  for (std::size_t i = 0; i < N; ++i) {
    const auto found = dictionary.find(names[i]);
    if (found == dictionary.end())
      throw RequestError(fmt::format("expected {}: \"{}\" is missing", expected, names[i]));
    result[i] = found->second;
  }
  if (dictionary.size() != N) throw RequestError(fmt::format("expected {} and nothing else", expected));
  return result;
}

constexpr const char* kPoint = "a point {x, y}";
constexpr const char* kSize = "a size {width, height}";
constexpr const char* kRect = "a rectangle {x, y, width, height}";
constexpr const char* kRange = "a range {location, length}";
constexpr const char* kColor = "a colour {red, green, blue, alpha}";
constexpr std::int64_t kLargestImage = 4096;

}  // namespace

std::string kindOf(const Value& value) {
  static constexpr std::array<const char*, 7> kNames = {"null", "a truth value", "a number", "a number",
                                                        "text", "an array",      "an object"};
  return kNames.at(value.storage().index());
}

bool Codec<bool>::decode(const Value& value) {
  return require<bool>(value, "true or false");
}

double Codec<double>::decode(const Value& value) {
  if (const auto* whole = value.get<std::int64_t>()) return static_cast<double>(*whole);
  return require<double>(value, "a number");
}

std::int64_t Codec<std::int64_t>::decode(const Value& value) {
  return integer<std::int64_t>(value);
}
std::int32_t Codec<std::int32_t>::decode(const Value& value) {
  return integer<std::int32_t>(value);
}
std::uint64_t Codec<std::uint64_t>::decode(const Value& value) {
  return integer<std::uint64_t>(value);
}
std::uint32_t Codec<std::uint32_t>::decode(const Value& value) {
  return integer<std::uint32_t>(value);
}

std::string Codec<std::string>::decode(const Value& value) {
  return require<std::string>(value, "text");
}

std::u16string Codec<std::u16string>::decode(const Value& value) {
  return platform::utf16(require<std::string>(value, "text"));
}

Point Codec<Point>::decode(const Value& value) {
  const auto [x, y] = members<2>(value, {"x", "y"}, kPoint);
  return {Codec<double>::decode(x), Codec<double>::decode(y)};
}
Value Codec<Point>::encode(const Point& value) {
  return Dictionary{{"x", value.x}, {"y", value.y}};
}

Size Codec<Size>::decode(const Value& value) {
  const auto [width, height] = members<2>(value, {"width", "height"}, kSize);
  return {Codec<double>::decode(width), Codec<double>::decode(height)};
}
Value Codec<Size>::encode(const Size& value) {
  return Dictionary{{"width", value.width}, {"height", value.height}};
}

Rect Codec<Rect>::decode(const Value& value) {
  const auto [x, y, width, height] = members<4>(value, {"x", "y", "width", "height"}, kRect);
  return {Codec<double>::decode(x), Codec<double>::decode(y), Codec<double>::decode(width),
          Codec<double>::decode(height)};
}
Value Codec<Rect>::encode(const Rect& value) {
  return Dictionary{{"x", value.x}, {"y", value.y}, {"width", value.width}, {"height", value.height}};
}

NSRange Codec<NSRange>::decode(const Value& value) {
  const auto [location, length] = members<2>(value, {"location", "length"}, kRange);
  return {Codec<std::uint64_t>::decode(location), Codec<std::uint64_t>::decode(length)};
}
Value Codec<NSRange>::encode(const NSRange& value) {
  return Dictionary{{"location", Codec<std::uint64_t>::encode(value.location)},
                    {"length", Codec<std::uint64_t>::encode(value.length)}};
}

Color Codec<Color>::decode(const Value& value) {
  const auto [red, green, blue, alpha] = members<4>(value, {"red", "green", "blue", "alpha"}, kColor);
  return {Codec<double>::decode(red), Codec<double>::decode(green), Codec<double>::decode(blue),
          Codec<double>::decode(alpha)};
}
Value Codec<Color>::encode(const Color& value) {
  return Dictionary{{"red", value.red}, {"green", value.green}, {"blue", value.blue}, {"alpha", value.alpha}};
}

platform::NSAttributedString Codec<platform::NSAttributedString>::decode(const Value& value) {
  return platform::NSAttributedString(require<std::string>(value, "text"));
}

Value Codec<platform::Attributes>::encode(const platform::Attributes& value) {
  Dictionary result;
  for (const auto& [name, attribute] : value) {
    if (const auto* font = std::get_if<platform::Font>(&attribute)) {
      result[name] = Dictionary{{"size", font->size}, {"bold", font->bold}};
    } else if (const auto* color = std::get_if<Color>(&attribute)) {
      result[name] = Codec<Color>::encode(*color);
    } else {
      result[name] = std::get<std::string>(attribute);
    }
  }
  return result;
}

Bitmap Codec<Bitmap>::decode(const Value& value) {
  const auto [width, height] = members<2>(value, {"width", "height"}, "an image {width, height}");
  Bitmap image;
  image.width = Codec<std::int32_t>::decode(width);
  image.height = Codec<std::int32_t>::decode(height);
  if (image.width < 1 || image.height < 1 || image.width > kLargestImage || image.height > kLargestImage)
    throw RequestError(fmt::format("an image's sides are 1 to {}", kLargestImage));
  image.pixels.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0xFF808080);
  return image;
}
Value Codec<Bitmap>::encode(const Bitmap& value) {
  return Dictionary{{"width", value.width}, {"height", value.height}};
}

Dictionary Codec<Dictionary>::decode(const Value& value) {
  return require<Dictionary>(value, "an object");
}

}  // namespace samplehost
