#pragma once

#include <map>
#include <string>
#include <utility>

#include "Programs/SampleHost/Codec.h"

namespace samplehost {

/// What the host's delegates answer when they are asked. A delegate is named "app", "application", "window:ID" or
/// "text:ID", a question by its member's name. Main thread.
class Answers {
 public:
  /// From now on `delegate` answers `member` with `value`. Throws RequestError for a question that no such delegate is
  /// asked, and for a value of another type than the answer's.
  void set(const std::string& delegate, const std::string& member, const Value& value);
  /// The answer set last, or the one the sample host gives by itself.
  Value get(const std::string& delegate, const std::string& member) const;
  template <class T>
  T get(const std::string& delegate, const std::string& member) const {
    return Codec<T>::decode(get(delegate, member));
  }

 private:
  std::map<std::pair<std::string, std::string>, Value> values_;
};

/// The kind of a delegate or target: "window" of "window:main".
std::string kindOfName(const std::string& name);
/// "main" of "window:main"; empty where there is no identifier.
std::string identifierOfName(const std::string& name);

}  // namespace samplehost
