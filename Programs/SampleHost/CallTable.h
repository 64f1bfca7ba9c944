#pragma once

#include <fmt/format.h>

#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Programs/SampleHost/Codec.h"

namespace samplehost {

template <class T>
inline constexpr bool kIsOptional = false;
template <class T>
inline constexpr bool kIsOptional<std::optional<T>> = true;

/// The calls that one kind of console target understands, by name. A function's parameters after the context are
/// decoded from the request's arguments in order; trailing optional ones may be left out.
template <class Context>
class CallTable {
 public:
  using Arguments = Value::Array;

  /// `body(context, decoded arguments…)`; what it returns is encoded, nothing as null.
  template <class Result, class... Parameters>
  void add(const std::string& name, std::function<Result(Context&, Parameters...)> body) {
    calls_[name] = [body = std::move(body)](Context& context, const Arguments& arguments) -> Value {
      return invoke<Result, Parameters...>(
          arguments,
          [&](auto&&... decoded) -> Result { return body(context, std::forward<decltype(decoded)>(decoded)...); },
          std::index_sequence_for<Parameters...>{});
    };
  }
  template <class Callable>
  void add(const std::string& name, Callable callable) {
    add(name, std::function(std::move(callable)));
  }
  /// A member of what `find(context)` refers to.
  template <class Find, class Owner, class Result, class... Parameters>
  void member(const std::string& name, Find find, Result (Owner::*method)(Parameters...)) {
    add(name, std::function<Result(Context&, Parameters...)>([=](Context& context, Parameters... parameters) -> Result {
          return (find(context).*method)(std::forward<Parameters>(parameters)...);
        }));
  }
  template <class Find, class Owner, class Result, class... Parameters>
  void member(const std::string& name, Find find, Result (Owner::*method)(Parameters...) const) {
    add(name, std::function<Result(Context&, Parameters...)>([=](Context& context, Parameters... parameters) -> Result {
          return (find(context).*method)(std::forward<Parameters>(parameters)...);
        }));
  }

  /// Throws RequestError for an unknown name and for arguments that don't fit, before anything is done.
  Value call(const std::string& name, Context& context, const Arguments& arguments) const {
    const auto found = calls_.find(name);
    if (found == calls_.end()) throw RequestError(fmt::format("no such call: \"{}\"", name));
    return found->second(context, arguments);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    result.reserve(calls_.size());
    for (const auto& entry : calls_) result.push_back(entry.first);
    return result;
  }

 private:
  template <class Parameter>
  static std::decay_t<Parameter> decode(const Arguments& arguments, std::size_t at) {
    using Type = std::decay_t<Parameter>;
    if constexpr (kIsOptional<Type>) {
      if (at >= arguments.size()) return std::nullopt;
    }
    if (at >= arguments.size()) throw RequestError(fmt::format("argument {} is missing", at + 1));
    try {
      return Codec<Type>::decode(arguments[at]);
    } catch (const RequestError& problem) {
      throw RequestError(fmt::format("argument {}: {}", at + 1, problem.what()));
    }
  }

  template <class Result, class... Parameters, class Body, std::size_t... At>
  static Value invoke(const Arguments& arguments, const Body& body, std::index_sequence<At...>) {
    if (arguments.size() > sizeof...(Parameters))
      throw RequestError(fmt::format("{} arguments at most, got {}", sizeof...(Parameters), arguments.size()));
    // A braced list is decoded from left to right.
    std::tuple<std::decay_t<Parameters>...> decoded{decode<Parameters>(arguments, At)...};
    if constexpr (std::is_void_v<Result>) {
      std::apply(body, std::move(decoded));
      return {};
    } else {
      return Codec<std::decay_t<Result>>::encode(std::apply(body, std::move(decoded)));
    }
  }

  std::map<std::string, std::function<Value(Context&, const Arguments&)>> calls_;
};

}  // namespace samplehost
