#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "Programs/SampleHost/Codec.h"

namespace samplehost {

/// What a tour expected and saw, written as it goes along. Main thread.
class Transcript {
 public:
  /// The streams are borrowed and outlive the transcript.
  explicit Transcript(std::vector<std::FILE*> streams) : streams_(std::move(streams)) {}

  void scene(std::string_view title);
  void note(std::string_view text);
  /// One check; `what` is a statement that the two values decide.
  template <class T, class S>
  void expect(std::string_view what, const T& expected, const S& seen) {
    check(what, Codec<T>::encode(expected), Codec<T>::encode(seen));
  }
  void expect(std::string_view what, const char* expected, const std::string& seen) { check(what, expected, seen); }
  void expectTrue(std::string_view what, bool seen) { check(what, true, seen); }
  void failed(std::string_view what, std::string_view why);
  /// The last line; answers whether every check held.
  bool finish();

 private:
  void check(std::string_view what, const Value& expected, const Value& seen);
  void line(const std::string& text);

  std::vector<std::FILE*> streams_;
  int scenes_ = 0;
  int checks_ = 0;
  int failures_ = 0;
};

}  // namespace samplehost
