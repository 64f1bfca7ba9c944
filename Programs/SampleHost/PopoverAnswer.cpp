#include "Programs/SampleHost/PopoverAnswer.h"

#include <fmt/format.h>

namespace samplehost {

WindowName Codec<WindowName>::decode(const Value& value) {
  constexpr std::string_view kPrefix = "window:";
  const std::string name = Codec<std::string>::decode(value);
  if (!name.starts_with(kPrefix)) throw RequestError(fmt::format("expected \"window:ID\", got \"{}\"", name));
  return {name.substr(kPrefix.size())};
}

PopoverAnswer Codec<PopoverAnswer>::decode(const Value& value) {
  PopoverAnswer answer;
  for (const auto& [name, member] : Codec<platform::Dictionary>::decode(value)) {
    if (name == "targetFrame") {
      answer.targetFrame = Codec<std::optional<platform::Rect>>::decode(member);
    } else if (name == "parentWindowHelper") {
      answer.parentWindowHelper = Codec<std::optional<WindowName>>::decode(member);
    } else if (name == "attachments") {
      answer.attachments = Codec<std::optional<std::vector<std::int32_t>>>::decode(member);
    } else {
      throw RequestError(fmt::format("a popover description has no \"{}\"", name));
    }
  }
  return answer;
}

}  // namespace samplehost
