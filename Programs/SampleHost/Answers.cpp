#include "Programs/SampleHost/Answers.h"

#include <fmt/format.h>

#include <vector>

#include "Programs/SampleHost/PopoverAnswer.h"

namespace samplehost {

namespace {

struct Question {
  const char* kind;
  const char* member;
  Value fallback;
  void (*check)(const Value&);
};

template <class T>
void check(const Value& value) {
  Codec<T>::decode(value);
}

/// An answer of null: the application delegate's class doesn't have the method.
template <class T>
constexpr auto kMethod = check<std::optional<T>>;

const std::vector<Question>& questions() {
  using platform::Bitmap;
  using platform::Color;
  using platform::Rect;
  using platform::Size;
  using std::optional;
  using std::string;
  using std::vector;
  static const vector<Question> all = {
      {"application", "applicationShouldHandleReopen:hasVisibleWindows:", true, kMethod<bool>},
      {"application", "applicationShouldTerminate:", 1, kMethod<std::int32_t>},
      {"application", "applicationDockMenu:", "Host", kMethod<string>},
      {"app", "handleFunctionKey", true, check<bool>},
      {"app", "applicationShouldHandleReopen", true, check<bool>},
      {"window", "uiWindowID", {}, check<optional<string>>},
      {"window", "uiWindowBounds", {}, check<optional<Rect>>},
      {"window", "initialWindowSize", Codec<Size>::encode({}), check<Size>},
      {"window", "frameAutosaveName", {}, check<optional<string>>},
      {"window", "initialAttachmentsEdge", {}, check<optional<vector<int>>>},
      {"window", "attachWithoutAppendingAsChild", false, check<bool>},
      {"window", "isOrderedOutWithFirstBecomeMain", false, check<bool>},
      {"window", "popoverWindowDescription", {}, check<optional<PopoverAnswer>>},
      {"window", "parentWindowHelper", {}, check<optional<WindowName>>},
      {"window", "contentImage", {}, check<optional<Bitmap>>},
      {"window", "showOnlyCloseButton", false, check<bool>},
      {"window", "closableByUserInterface", true, check<bool>},
      {"window", "customTitleBackgroundColor", {}, check<optional<Color>>},
      {"window", "spaceLogoImage", {}, check<optional<Bitmap>>},
      {"window", "spaceName", {}, check<optional<string>>},
      {"window", "isInputableIosResponder", false, check<bool>},
      {"window", "mouseDoubleTapped", false, check<bool>},
      {"window", "mouseRightClick", false, check<bool>},
      {"window", "windowShouldClose", true, check<bool>},
      {"text", "requestToSendMessage", true, check<bool>},
      {"text", "shouldHandleBackspaceIn", true, check<bool>},
      {"text", "shouldChangeTextInTextView", true, check<bool>},
  };
  return all;
}

const Question& question(const std::string& delegate, const std::string& member) {
  const std::string kind = kindOfName(delegate);
  for (const Question& candidate : questions())
    if (candidate.kind == kind && candidate.member == member) return candidate;
  throw RequestError(fmt::format("\"{}\" is never asked \"{}\"", delegate, member));
}

}  // namespace

void Answers::set(const std::string& delegate, const std::string& member, const Value& value) {
  question(delegate, member).check(value);
  values_[{delegate, member}] = value;
}

Value Answers::get(const std::string& delegate, const std::string& member) const {
  const auto found = values_.find({delegate, member});
  return found == values_.end() ? question(delegate, member).fallback : found->second;
}

std::string kindOfName(const std::string& name) {
  return name.substr(0, name.find(':'));
}

std::string identifierOfName(const std::string& name) {
  const std::size_t colon = name.find(':');
  return colon == std::string::npos ? std::string() : name.substr(colon + 1);
}

}  // namespace samplehost
