#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

/// What a notification's payload, a user default or a JSON document holds: nothing, a truth value, a number, UTF-8
/// text, an array or a dictionary with text keys.
class Value {
 public:
  using Array = std::vector<Value>;
  using Dictionary = std::map<std::string, Value>;
  using Storage = std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Dictionary>;

  Value() = default;
  Value(bool v) : storage_(v) {}                            // NOLINT(google-explicit-constructor): a literal is a value
  Value(int v) : storage_(static_cast<std::int64_t>(v)) {}  // NOLINT(google-explicit-constructor)
  Value(std::int64_t v) : storage_(v) {}                    // NOLINT(google-explicit-constructor)
  Value(double v) : storage_(v) {}                          // NOLINT(google-explicit-constructor)
  Value(const char* v) : storage_(std::string(v)) {}        // NOLINT(google-explicit-constructor)
  Value(std::string v) : storage_(std::move(v)) {}          // NOLINT(google-explicit-constructor)
  Value(Array v) : storage_(std::move(v)) {}                // NOLINT(google-explicit-constructor)
  Value(Dictionary v) : storage_(std::move(v)) {}           // NOLINT(google-explicit-constructor)

  bool isNull() const { return std::holds_alternative<std::monostate>(storage_); }
  /// The held alternative, or null when another one is held.
  template <class T>
  const T* get() const {
    return std::get_if<T>(&storage_);
  }
  const Storage& storage() const { return storage_; }
  friend bool operator==(const Value&, const Value&) = default;

 private:
  Storage storage_;
};

using Dictionary = Value::Dictionary;

}  // namespace platform
