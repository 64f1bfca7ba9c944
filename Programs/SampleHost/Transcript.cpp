#include "Programs/SampleHost/Transcript.h"

#include <fmt/format.h>

#include "Platform/Foundation/JSON.h"

namespace samplehost {

void Transcript::line(const std::string& text) {
  for (std::FILE* const stream : streams_) {
    std::fputs((text + "\n").c_str(), stream);
    std::fflush(stream);
  }
}

void Transcript::scene(std::string_view title) {
  line(fmt::format("\n{}. {}", ++scenes_, title));
}

void Transcript::note(std::string_view text) {
  line(fmt::format("         {}", text));
}

void Transcript::check(std::string_view what, const Value& expected, const Value& seen) {
  ++checks_;
  const bool holds = expected == seen;
  if (!holds) ++failures_;
  line(fmt::format("  {}  {}: expected {}, saw {}", holds ? "ok    " : "FAILED", what, platform::jsonText(expected),
                   platform::jsonText(seen)));
}

void Transcript::failed(std::string_view what, std::string_view why) {
  ++checks_;
  ++failures_;
  line(fmt::format("  FAILED  {}: {}", what, why));
}

bool Transcript::finish() {
  line(fmt::format("\n{} scenes, {} checks, {} failed", scenes_, checks_, failures_));
  return failures_ == 0;
}

}  // namespace samplehost
