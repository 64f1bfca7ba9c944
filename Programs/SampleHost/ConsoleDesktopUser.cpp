#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/WindowReference.h"

namespace samplehost {

using headless::Button;
using headless::HeadlessBackend;
using platform::Point;
using std::optional;
using std::string;

namespace {

/// Does something on the simulated desktop after the answer: it may run the application's loops until a later request.
void act(ConsoleContext& context, std::function<void(HeadlessBackend&)> action) {
  context.afterAnswer.push_back([&desktop = context.headless(), action = std::move(action)] { action(desktop); });
}

headless::HeadlessSurface& surfaceAt(ConsoleContext& context, const WindowReference& reference) {
  const auto window = windowAt(context.host.layer(), reference);
  auto* const surface = context.headless().windows().surfaceWithHandle(window->nativeHandle());
  if (!surface) throw RequestError("the window is not on the screen");
  return *surface;
}

Button buttonNamed(const optional<string>& name) {
  static constexpr std::array<std::pair<std::string_view, Button>, 3> kButtons = {
      {{"left", Button::left}, {"right", Button::right}, {"other", Button::other}}};
  for (const auto& [known, button] : kButtons)
    if (known == name.value_or("left")) return button;
  throw RequestError(fmt::format("no button is called \"{}\"; there are left, right, other", *name));
}

void key(ConsoleContext& context, std::uint32_t keyCode, const optional<string>& characters,
         optional<std::uint64_t> modifiers, const optional<string>& action) {
  if (keyCode > 0xFFFF) throw RequestError(fmt::format("{} is no key code", keyCode));
  const auto code = static_cast<std::uint16_t>(keyCode);
  const string text = characters.value_or("");
  const std::uint64_t flags = modifiers.value_or(0);
  if (!action) return act(context, [=](HeadlessBackend& d) { d.user().key(code, text, flags); });
  if (*action == "down") return act(context, [=](HeadlessBackend& d) { d.user().keyDown(code, text, flags); });
  if (*action == "up") return act(context, [=](HeadlessBackend& d) { d.user().keyUp(code, text, flags); });
  throw RequestError(fmt::format("a key goes \"down\" or \"up\", not \"{}\"", *action));
}

void mouse(ConsoleContext& context, const string& action, Point at, const optional<string>& buttonName) {
  const Button button = buttonNamed(buttonName);
  using Step = void (*)(headless::HeadlessUser&, Point, Button);
  static constexpr std::array<std::pair<std::string_view, Step>, 5> kSteps = {
      {{"move", [](headless::HeadlessUser& user, Point p, Button) { user.moveTo(p); }},
       {"press", [](headless::HeadlessUser& user, Point p, Button b) { user.press(p, b); }},
       {"release",
        [](headless::HeadlessUser& user, Point p, Button b) {
          user.moveTo(p);
          user.release(b);
        }},
       {"click", [](headless::HeadlessUser& user, Point p, Button b) { user.click(p, 1, b); }},
       {"doubleClick", [](headless::HeadlessUser& user, Point p, Button b) { user.click(p, 2, b); }}}};
  for (const auto& [known, step] : kSteps)
    if (known == action) return act(context, [=, run = step](HeadlessBackend& d) { run(d.user(), at, button); });
  throw RequestError(fmt::format("the pointer can't \"{}\"", action));
}

void addInput(ConsoleCalls& calls) {
  calls.add("key", key);
  calls.add("text",
            [](ConsoleContext& c, string text) { act(c, [text](HeadlessBackend& d) { d.user().type(text); }); });
  calls.add("mouse", mouse);
  calls.add("drag", [](ConsoleContext& c, Point from, Point to, optional<std::int32_t> steps) {
    act(c, [=](HeadlessBackend& d) { d.user().drag(from, to, std::max(1, steps.value_or(4))); });
  });
  calls.add("wheel", [](ConsoleContext& c, Point at, double deltaX, double deltaY) {
    act(c, [=](HeadlessBackend& d) { d.user().wheel(at, deltaX, deltaY); });
  });
  calls.add("holdModifiers", [](ConsoleContext& c, std::uint64_t flags) { c.headless().user().holdModifiers(flags); });
  calls.add("markedText", [](ConsoleContext& c, std::u16string text, optional<std::uint64_t> caret) {
    act(c, [=](HeadlessBackend& d) { d.inputMethod().compose(text, caret); });
  });
  calls.add("commitText", [](ConsoleContext& c, std::u16string text) {
    act(c, [=](HeadlessBackend& d) { d.inputMethod().commit(text); });
  });
}

void addWindowManager(ConsoleCalls& calls) {
  calls.add("userMoves", [](ConsoleContext& c, WindowReference w, platform::Rect frame) {
    c.headless().windows().userMoves(surfaceAt(c, w), frame);
  });
  calls.add("userActivates",
            [](ConsoleContext& c, WindowReference w) { c.headless().windows().userActivates(surfaceAt(c, w)); });
  calls.add("userLeaves", [](ConsoleContext& c) { c.headless().windows().userDeactivatesAll(); });
  calls.add("userMinimises", [](ConsoleContext& c, WindowReference w, bool minimised) {
    c.headless().windows().userMinimises(surfaceAt(c, w), minimised);
  });
  calls.add("userZooms", [](ConsoleContext& c, WindowReference w, bool zoomed) {
    c.headless().windows().userZooms(surfaceAt(c, w), zoomed);
  });
  calls.add("userKeepsAbove", [](ConsoleContext& c, WindowReference w, bool above) {
    c.headless().windows().userKeepsAbove(surfaceAt(c, w), above);
  });
  calls.add("userCloses",
            [](ConsoleContext& c, WindowReference w) { c.headless().windows().userCloses(surfaceAt(c, w)); });
}

}  // namespace

void addUserCalls(ConsoleCalls& calls) {
  addInput(calls);
  addWindowManager(calls);
}

}  // namespace samplehost
