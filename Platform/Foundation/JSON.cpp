#include "Platform/Foundation/JSON.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace platform {

namespace {

using nlohmann::json;

constexpr std::size_t kDeepest = 512;

json jsonFrom(const Value& value) {
  return std::visit(
      [](const auto& held) -> json {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>) {
          return nullptr;
        } else if constexpr (std::is_same_v<Held, Value::Array>) {
          json array = json::array();
          for (const Value& each : held) array.push_back(jsonFrom(each));
          return array;
        } else if constexpr (std::is_same_v<Held, Dictionary>) {
          json object = json::object();
          for (const auto& [key, each] : held) object[key] = jsonFrom(each);
          return object;
        } else {
          return held;
        }
      },
      value.storage());
}

/// Builds the value while the text is parsed, so that depth is known before it costs anything.
class Builder : public nlohmann::json_sax<json> {
 public:
  bool null() override { return add({}); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(static_cast<std::int64_t>(value)); }
  bool number_unsigned(number_unsigned_t value) override {
    return value <= INT64_MAX ? add(static_cast<std::int64_t>(value)) : add(static_cast<double>(value));
  }
  bool number_float(number_float_t value, const string_t& /*text*/) override { return add(value); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }
  bool start_object(std::size_t /*size*/) override { return open(false); }
  bool start_array(std::size_t /*size*/) override { return open(true); }
  bool key(string_t& name) override {
    open_.back().key = std::move(name);
    return true;
  }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t /*at*/, const std::string& /*token*/, const nlohmann::detail::exception&) override {
    return false;
  }

  Value take() { return std::move(root_); }

 private:
  struct Open {
    bool isArray = false;
    Value::Array array;
    Dictionary object;
    std::string key;
  };
  bool open(bool isArray) {
    if (open_.size() == kDeepest) return false;
    open_.push_back({isArray, {}, {}, {}});
    return true;
  }
  bool close() {
    Open closed = std::move(open_.back());
    open_.pop_back();
    return closed.isArray ? add(std::move(closed.array)) : add(std::move(closed.object));
  }
  bool add(Value value) {
    if (open_.empty())
      root_ = std::move(value);
    else if (Open& container = open_.back(); container.isArray)
      container.array.push_back(std::move(value));
    else
      container.object.insert_or_assign(std::move(container.key), std::move(value));
    return true;
  }

  Value root_;
  std::vector<Open> open_;
};

}  // namespace

std::string jsonText(const Value& value, bool pretty) {
  return jsonFrom(value).dump(pretty ? 2 : -1, ' ', false, json::error_handler_t::replace);
}

std::optional<Value> valueFromJSON(std::string_view text) {
  Builder builder;
  if (!json::sax_parse(text, &builder)) return std::nullopt;
  return builder.take();
}

}  // namespace platform
