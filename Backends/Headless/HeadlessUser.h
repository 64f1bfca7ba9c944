#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "Backends/Headless/HeadlessInputMethod.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/HeadlessMenus.h"
#include "Backends/Headless/HeadlessPresence.h"
#include "Backends/Headless/HeadlessWindowHost.h"
#include "Platform/Port/WindowHost.h"

namespace headless {

enum class Button { left, right, other };

/// The user at pointer and keyboard. Every action goes to the surface it would go to: the pointer to the topmost
/// surface under it, from a press to the release to the pressed one; keys to the activated surface and its input
/// method; both to the open menu while there is one. An action returns when the application has dealt with it. Inside
/// `together` actions only queue up and then run one by one, so that a nested loop of the application (a drag, a menu,
/// a modal alert) takes the later ones:
///
///     user.together([&] { user.press(a); user.moveTo(b); user.then([&] { EXPECT_EQ(…); }); user.release(); });
class HeadlessUser {
 public:
  HeadlessUser(HeadlessLoop& loop, HeadlessWindowHost& windows, HeadlessInputMethod& inputMethod,
               HeadlessPresence& presence, HeadlessMenus& menus)
      : loop_(loop), windows_(windows), inputMethod_(inputMethod), presence_(presence), menus_(menus) {}

  // The pointer; screen points, bottom-left origin.
  void moveTo(platform::Point location);
  /// Presses and releases at the pointer's location; with `at`, moves there first.
  void press(Button button = Button::left);
  void press(platform::Point at, Button button = Button::left);
  void release(Button button = Button::left);
  void click(platform::Point at, int count = 1, Button button = Button::left);
  /// Presses at `from`, moves to `to` in `steps` equal steps, releases.
  void drag(platform::Point from, platform::Point to, int steps = 4);
  /// Deltas in points; positive scrolls towards the start.
  void wheel(platform::Point at, double deltaX, double deltaY);

  // The keyboard. `modifiers` as event modifier flags.
  /// A key goes down and up again.
  void key(std::uint16_t keyCode, std::string_view characters = {}, std::uint64_t modifiers = 0);
  void keyDown(std::uint16_t keyCode, std::string_view characters = {}, std::uint64_t modifiers = 0,
               bool repeated = false);
  void keyUp(std::uint16_t keyCode, std::string_view characters = {}, std::uint64_t modifiers = 0);
  /// Each ASCII character by its key, "\n" by Return; others as a key that types them.
  void type(std::string_view utf8);
  /// Held until changed; added to pointer, wheel and key input.
  void holdModifiers(std::uint64_t modifiers) { held_ = modifiers; }

  // Things of another application; MIME types to contents. Each answers at once whether the application would take, or
  // has taken, a copy.
  bool dragOver(const std::map<std::string, std::string>& contents, platform::Point at);
  void dragAway();
  bool drop(const std::map<std::string, std::string>& contents, platform::Point at);

  void together(const std::function<void()>& actions);
  /// A step between the queued ones.
  void then(std::function<void()> step) { act(std::move(step)); }

 private:
  void act(std::function<void()> action);
  void deliverPointer(HeadlessSurface& to, platform::port::PointerAction action);
  void deliverMove(platform::Point location);
  void deliverPress(Button button);
  void deliverRelease(Button button);
  void deliverKey(platform::port::KeyInput input);

  HeadlessLoop& loop_;
  HeadlessWindowHost& windows_;
  HeadlessInputMethod& inputMethod_;
  HeadlessPresence& presence_;
  HeadlessMenus& menus_;
  std::uint64_t held_ = 0;
  int buttonsDown_ = 0;
  HeadlessSurface* draggedOver_ = nullptr;
  bool queueing_ = false;
};

}  // namespace headless
