#include "Backends/Desktop/BusPayload.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <limits>
#include <string>

namespace desktop {

using platform::Dictionary;
using platform::Value;

namespace {

constexpr std::size_t kCostOfValue = 16;

/// Counts down from the largest payload.
class Allowance {
 public:
  bool take(std::size_t bytes) {
    if (bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  std::size_t left_ = kLargestPayload;
};

bool fits(const std::string& text, Allowance& allowance) {
  return text.find('\0') == std::string::npos && allowance.take(text.size());
}

bool fits(const Value& value, Allowance& allowance, int depth) {
  if (depth > kDeepestPayload || !allowance.take(kCostOfValue)) return false;
  if (const auto* text = value.get<std::string>()) return fits(*text, allowance);
  if (const auto* array = value.get<Value::Array>()) {
    for (const Value& element : *array)
      if (!fits(element, allowance, depth + 1)) return false;
  }
  if (const auto* dictionary = value.get<Dictionary>()) {
    for (const auto& [key, element] : *dictionary)
      if (!fits(key, allowance) || !fits(element, allowance, depth + 1)) return false;
  }
  return true;
}

/// Writes one variant.
class Writer {
 public:
  explicit Writer(sd_bus_message* message) : message_(message) {}

  bool variant(const Value& value) {
    return std::visit([this](const auto& held) { return write(held); }, value.storage());
  }

  bool dictionary(const Dictionary& entries) {
    if (sd_bus_message_open_container(message_, 'a', "{sv}") < 0) return false;
    for (const auto& [key, value] : entries) {
      const bool written = sd_bus_message_open_container(message_, 'e', "sv") >= 0 &&
                           sd_bus_message_append_basic(message_, 's', key.c_str()) >= 0 && variant(value) &&
                           sd_bus_message_close_container(message_) >= 0;
      if (!written) return false;
    }
    return sd_bus_message_close_container(message_) >= 0;
  }

 private:
  bool basic(char type, const void* value) {
    const char contents[] = {type, '\0'};
    return sd_bus_message_open_container(message_, 'v', contents) >= 0 &&
           sd_bus_message_append_basic(message_, type, value) >= 0 && sd_bus_message_close_container(message_) >= 0;
  }

  bool write(std::monostate) { return basic('g', ""); }
  bool write(bool value) {
    const int truth = value ? 1 : 0;
    return basic('b', &truth);
  }
  bool write(std::int64_t value) { return basic('x', &value); }
  bool write(double value) { return basic('d', &value); }
  bool write(const std::string& value) { return basic('s', value.c_str()); }
  bool write(const Value::Array& array) {
    if (sd_bus_message_open_container(message_, 'v', "av") < 0) return false;
    if (sd_bus_message_open_container(message_, 'a', "v") < 0) return false;
    for (const Value& element : array)
      if (!variant(element)) return false;
    return sd_bus_message_close_container(message_) >= 0 && sd_bus_message_close_container(message_) >= 0;
  }
  bool write(const Dictionary& entries) {
    return sd_bus_message_open_container(message_, 'v', "a{sv}") >= 0 && dictionary(entries) &&
           sd_bus_message_close_container(message_) >= 0;
  }

  sd_bus_message* message_;
};

class Reader {
 public:
  explicit Reader(sd_bus_message* message) : message_(message) {}

  std::optional<Dictionary> dictionary(int depth) {
    if (depth > kDeepestPayload || sd_bus_message_enter_container(message_, 'a', nullptr) < 0) return std::nullopt;
    Dictionary entries;
    for (;;) {
      const int atEnd = sd_bus_message_at_end(message_, 0);
      if (atEnd < 0) return std::nullopt;
      if (atEnd > 0) break;
      const char* key = nullptr;
      if (sd_bus_message_enter_container(message_, 'e', nullptr) < 0) return std::nullopt;
      if (sd_bus_message_read_basic(message_, 's', &key) < 0) return std::nullopt;
      if (!allowance_.take(std::strlen(key))) return std::nullopt;
      auto element = value(depth + 1);
      if (!element || sd_bus_message_exit_container(message_) < 0) return std::nullopt;
      entries.insert_or_assign(key, *std::move(element));
    }
    if (sd_bus_message_exit_container(message_) < 0) return std::nullopt;
    return entries;
  }

 private:
  std::optional<Value> value(int depth) {
    char type = 0;
    const char* contents = nullptr;
    if (depth > kDeepestPayload || !allowance_.take(kCostOfValue)) return std::nullopt;
    if (sd_bus_message_peek_type(message_, &type, &contents) <= 0) return std::nullopt;
    if (type == 'v') return unwrapped(depth);
    if (type == 'a' && contents[0] == '{') return nested(depth);
    if (type == 'a') return array(depth);
    return basic(type);
  }

  std::optional<Value> unwrapped(int depth) {
    if (sd_bus_message_enter_container(message_, 'v', nullptr) < 0) return std::nullopt;
    auto inner = value(depth + 1);
    if (!inner || sd_bus_message_exit_container(message_) < 0) return std::nullopt;
    return inner;
  }

  std::optional<Value> nested(int depth) {
    auto entries = dictionary(depth + 1);
    if (!entries) return std::nullopt;
    return Value(*std::move(entries));
  }

  std::optional<Value> array(int depth) {
    if (sd_bus_message_enter_container(message_, 'a', nullptr) < 0) return std::nullopt;
    Value::Array elements;
    for (;;) {
      const int atEnd = sd_bus_message_at_end(message_, 0);
      if (atEnd < 0) return std::nullopt;
      if (atEnd > 0) break;
      auto element = value(depth + 1);
      if (!element) return std::nullopt;
      elements.push_back(*std::move(element));
    }
    if (sd_bus_message_exit_container(message_) < 0) return std::nullopt;
    return Value(std::move(elements));
  }

  template <class T>
  std::optional<T> number(char type) {
    T read{};
    if (sd_bus_message_read_basic(message_, type, &read) < 0) return std::nullopt;
    return read;
  }

  template <class T>
  std::optional<Value> whole(char type) {
    const auto read = number<T>(type);
    if (!read) return std::nullopt;
    if constexpr (sizeof(T) == 8 && std::is_unsigned_v<T>)
      if (*read > static_cast<T>(std::numeric_limits<std::int64_t>::max())) return Value(static_cast<double>(*read));
    return Value(static_cast<std::int64_t>(*read));
  }

  std::optional<Value> text(char type) {
    const char* read = nullptr;
    if (sd_bus_message_read_basic(message_, type, &read) < 0 || !allowance_.take(std::strlen(read)))
      return std::nullopt;
    if (type == 'g' && *read == '\0') return Value();
    return Value(read);
  }

  std::optional<Value> basic(char type) {
    switch (type) {
      case 'b': {
        const auto truth = number<int>(type);
        return truth ? std::optional<Value>(*truth != 0) : std::nullopt;
      }
      case 'd': {
        const auto real = number<double>(type);
        return real ? std::optional<Value>(*real) : std::nullopt;
      }
      case 'y':
        return whole<std::uint8_t>(type);
      case 'n':
        return whole<std::int16_t>(type);
      case 'q':
        return whole<std::uint16_t>(type);
      case 'i':
        return whole<std::int32_t>(type);
      case 'u':
        return whole<std::uint32_t>(type);
      case 'x':
        return whole<std::int64_t>(type);
      case 't':
        return whole<std::uint64_t>(type);
      case 's':
      case 'o':
      case 'g':
        return text(type);
      default:
        return std::nullopt;
    }
  }

  sd_bus_message* message_;
  Allowance allowance_;
};

}  // namespace

bool canCross(const Dictionary& dictionary) {
  Allowance allowance;
  return fits(Value(dictionary), allowance, 0);
}

bool append(sd_bus_message* message, const Dictionary& dictionary) {
  return Writer(message).dictionary(dictionary);
}

std::optional<Dictionary> readDictionary(sd_bus_message* message) {
  return Reader(message).dictionary(0);
}

}  // namespace desktop
