#include "VeltrikAppKit/DictionaryText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <variant>

#include "Platform/Foundation/JSON.h"

namespace veltrik {

using platform::Dictionary;
using platform::Value;

namespace {

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\')
      out += {'\\', c};
    else if (c == '\n')
      out += "\\n";
    else if (static_cast<unsigned char>(c) < 0x20)
      out += fmt::format("\\u{:04x}", static_cast<unsigned char>(c));
    else
      out += c;
  }
  return out + '"';
}

struct Form {
  std::string operator()(std::monostate) const { return "null"; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::int64_t value) const { return fmt::to_string(value); }
  std::string operator()(double value) const { return fmt::to_string(value); }
  std::string operator()(const std::string& value) const { return quoted(value); }
  std::string operator()(const Value::Array& values) const {
    std::string out;
    for (const Value& each : values) out += (out.empty() ? "" : ", ") + std::visit(*this, each.storage());
    return "[" + out + "]";
  }
  std::string operator()(const Dictionary& values) const {
    std::string out;
    for (const auto& [key, each] : values)
      out += (out.empty() ? "" : ", ") + quoted(key) + ": " + std::visit(*this, each.storage());
    return out.empty() ? "[:]" : "[" + out + "]";
  }
};

struct FitsJSON {
  bool operator()(double value) const { return std::isfinite(value); }
  bool operator()(const Value::Array& values) const {
    return std::all_of(values.begin(), values.end(), [this](const Value& v) { return std::visit(*this, v.storage()); });
  }
  bool operator()(const Dictionary& values) const {
    return std::all_of(values.begin(), values.end(),
                       [this](const auto& entry) { return std::visit(*this, entry.second.storage()); });
  }
  template <class Other>
  bool operator()(const Other&) const {
    return true;
  }
};

}  // namespace

std::string textualForm(const Dictionary& dictionary) {
  return Form()(dictionary);
}

std::string textualListForm(const Value::Array& array) {
  return Form()(array);
}

std::optional<std::string> jsonString(const Dictionary& dictionary) {
  if (!FitsJSON()(dictionary)) return std::nullopt;
  return platform::jsonText(dictionary, true);
}

}  // namespace veltrik
