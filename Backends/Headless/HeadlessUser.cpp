#include "Backends/Headless/HeadlessUser.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Platform/Foundation/Unicode.h"

namespace headless {

using platform::Point;
using platform::port::KeyDisposition;
using platform::port::KeyInput;
using platform::port::PointerAction;

namespace {

// Modifier flags and virtual key codes as key events carry them.
constexpr std::uint64_t kPlainKey = 0x100, kShift = 0x20000, kControl = 0x40000, kNumericPad = 0x200000,
                        kFunction = 0x800000;
constexpr std::uint16_t kReturn = 36, kFirstArrow = 123, kLastArrow = 126;
/// A key that types what no key of a US keyboard does.
constexpr std::uint16_t kOtherKey = 10;

struct Key {
  std::uint16_t code;
  bool shifted;
};

/// Where a character stands on a US keyboard.
Key keyFor(char character) {
  // By virtual key code; a blank where none types a character. The first 51 cover every printable ASCII character.
  static constexpr std::string_view kPlain = "asdfhgzxcv bqweryt123465=97-80]ou[ip lj'k;\\,/nm.  `";
  static constexpr std::string_view kShifted = "ASDFHGZXCV BQWERYT!@#$^%+(&_*)}OU{IP LJ\"K:|<?NM>  ~";
  if (character == ' ') return {49, false};
  if (character == '\n') return {kReturn, false};
  if (character == '\t') return {48, false};
  if (const auto at = kPlain.find(character); at != kPlain.npos) return {static_cast<std::uint16_t>(at), false};
  if (const auto at = kShifted.find(character); at != kShifted.npos) return {static_cast<std::uint16_t>(at), true};
  return {kOtherKey, false};
}

std::uint64_t flagsFor(std::uint16_t keyCode, std::uint64_t modifiers) {
  const bool arrow = keyCode >= kFirstArrow && keyCode <= kLastArrow;
  return kPlainKey | modifiers | (arrow ? kNumericPad | kFunction : 0);
}

/// With Control held a letter types a control character.
std::string typedBy(std::string_view characters, std::uint64_t modifiers) {
  if ((modifiers & kControl) == 0 || characters.size() != 1) return std::string(characters);
  const char lower = static_cast<char>(characters[0] | 0x20);
  return lower >= 'a' && lower <= 'z' ? std::string(1, static_cast<char>(lower - 'a' + 1)) : std::string(characters);
}

std::string_view plainCharacters(std::uint16_t keyCode, std::string_view characters) {
  return characters.empty() && keyCode == kReturn ? "\r" : characters;
}

class DraggedContents final : public platform::port::Contents {
 public:
  explicit DraggedContents(const std::map<std::string, std::string>& contents) : contents_(contents) {}
  std::vector<std::string> types() const override {
    std::vector<std::string> types;
    types.reserve(contents_.size());
    for (const auto& each : contents_) types.push_back(each.first);
    return types;
  }
  std::optional<std::string> read(const std::string& type) const override {
    const auto found = contents_.find(type);
    return found == contents_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  const std::map<std::string, std::string>& contents_;
};

PointerAction actionFor(Button button, bool down) {
  switch (button) {
    case Button::left:
      return down ? PointerAction::leftDown : PointerAction::leftUp;
    case Button::right:
      return down ? PointerAction::rightDown : PointerAction::rightUp;
    case Button::other:
      break;
  }
  return down ? PointerAction::otherDown : PointerAction::otherUp;
}

}  // namespace

void HeadlessUser::act(std::function<void()> action) {
  loop_.deliver(std::move(action));
  if (!queueing_) loop_.settle();
}

void HeadlessUser::together(const std::function<void()>& actions) {
  const bool inner = std::exchange(queueing_, true);
  actions();
  queueing_ = inner;
  if (!inner) loop_.settle();
}

void HeadlessUser::moveTo(Point location) {
  act([this, location] { deliverMove(location); });
}

void HeadlessUser::press(Button button) {
  act([this, button] { deliverPress(button); });
}

void HeadlessUser::press(Point at, Button button) {
  moveTo(at);
  press(button);
}

void HeadlessUser::release(Button button) {
  act([this, button] { deliverRelease(button); });
}

void HeadlessUser::click(Point at, int count, Button button) {
  together([=, this] {
    moveTo(at);
    for (int i = 0; i < count; ++i) {
      press(button);
      release(button);
    }
  });
}

void HeadlessUser::drag(Point from, Point to, int steps) {
  together([=, this] {
    press(from);
    for (int i = 1; i <= steps; ++i)
      moveTo({from.x + (to.x - from.x) * i / steps, from.y + (to.y - from.y) * i / steps});
    release();
  });
}

void HeadlessUser::wheel(Point at, double deltaX, double deltaY) {
  act([=, this] {
    presence_.userActs();
    windows_.movePointer(at);
    if (HeadlessSurface* const surface = windows_.surfaceAt(at))
      surface->sink().surfaceWheel(
          {.location = at, .deltaX = deltaX, .deltaY = deltaY, .modifiers = held_, .time = loop_.now()});
  });
}

bool HeadlessUser::dragOver(const std::map<std::string, std::string>& contents, Point at) {
  windows_.movePointer(at);
  HeadlessSurface* const surface = windows_.surfaceAt(at);
  if (surface != draggedOver_) dragAway();
  draggedOver_ = surface;
  return surface && surface->sink().surfaceDragMoved(DraggedContents(contents), at);
}

void HeadlessUser::dragAway() {
  HeadlessSurface* const left = std::exchange(draggedOver_, nullptr);
  const auto shown = windows_.stack();
  if (left && std::ranges::find(shown, left) != shown.end()) left->sink().surfaceDragExited();
}

bool HeadlessUser::drop(const std::map<std::string, std::string>& contents, Point at) {
  if (!dragOver(contents, at)) {
    dragAway();
    return false;
  }
  HeadlessSurface* const surface = std::exchange(draggedOver_, nullptr);
  const bool taken = surface->sink().surfaceDropped(DraggedContents(contents), at);
  loop_.settle();
  return taken;
}

void HeadlessUser::key(std::uint16_t keyCode, std::string_view characters, std::uint64_t modifiers) {
  keyDown(keyCode, characters, modifiers);
  keyUp(keyCode, characters, modifiers);
}

void HeadlessUser::keyDown(std::uint16_t keyCode, std::string_view characters, std::uint64_t modifiers, bool repeated) {
  modifiers |= held_;
  const std::string_view plain = plainCharacters(keyCode, characters);
  KeyInput input{.down = true,
                 .keyCode = keyCode,
                 .modifiers = flagsFor(keyCode, modifiers),
                 .characters = typedBy(plain, modifiers),
                 .charactersIgnoringModifiers = std::string(plain),
                 .repeated = repeated,
                 .time = 0};
  act([this, input = std::move(input)] { deliverKey(input); });
}

void HeadlessUser::keyUp(std::uint16_t keyCode, std::string_view characters, std::uint64_t modifiers) {
  modifiers |= held_;
  const std::string_view plain = plainCharacters(keyCode, characters);
  KeyInput input{.down = false,
                 .keyCode = keyCode,
                 .modifiers = flagsFor(keyCode, modifiers),
                 .characters = typedBy(plain, modifiers),
                 .charactersIgnoringModifiers = std::string(plain),
                 .repeated = false,
                 .time = 0};
  act([this, input = std::move(input)] { deliverKey(input); });
}

void HeadlessUser::type(std::string_view utf8) {
  const std::u16string text = platform::utf16(utf8);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t next = platform::nextCharacter(text, at);
    const std::string character = platform::utf8(std::u16string_view(text).substr(at, next - at));
    const Key where = character.size() == 1 ? keyFor(character[0]) : Key{kOtherKey, false};
    key(where.code, character == "\n" ? "\r" : character, where.shifted ? kShift : 0);
    at = next;
  }
}

void HeadlessUser::deliverMove(Point location) {
  presence_.userActs();
  windows_.movePointer(location);
  if (windows_.moving_ || menus_.open()) return;
  HeadlessSurface* const target = windows_.grab_ ? windows_.grab_ : windows_.surfaceAt(location);
  HeadlessSurface* const left = std::exchange(windows_.under_, target);
  if (left && left != target) deliverPointer(*left, PointerAction::exited);
  // The one left may have changed what there is.
  if (target && windows_.under_ == target) deliverPointer(*target, PointerAction::moved);
}

void HeadlessUser::deliverPress(Button button) {
  presence_.userActs();
  ++buttonsDown_;
  if (button == Button::left) windows_.leftButtonDown_ = true;
  if (menus_.open()) return menus_.pressed(windows_.pointer_);
  if (!windows_.grab_) {
    windows_.grab_ = windows_.surfaceAt(windows_.pointer_);
    if (windows_.grab_) windows_.activateByPress(*windows_.grab_);
  }
  if (windows_.grab_) deliverPointer(*windows_.grab_, actionFor(button, true));
}

void HeadlessUser::deliverRelease(Button button) {
  presence_.userActs();
  buttonsDown_ = std::max(0, buttonsDown_ - 1);
  if (button == Button::left) windows_.leftButtonDown_ = false;
  HeadlessSurface* const moved = button == Button::left ? std::exchange(windows_.moving_, nullptr) : nullptr;
  HeadlessSurface* const target = moved ? moved : windows_.grab_;
  if (buttonsDown_ == 0) windows_.grab_ = nullptr;
  if (menus_.open() && !moved) return menus_.released(windows_.pointer_);
  if (moved && windows_.faults_.moveReportedAtEnd) windows_.changeFrame(*moved, moved->state().frame);
  if (moved)
    windows_.report(*moved, [this](platform::port::SurfaceSink& sink) {
      sink.surfacePointer({PointerAction::leftUp, windows_.pointer_, held_, loop_.now()});
    });
  else if (target)
    deliverPointer(*target, actionFor(button, false));
}

void HeadlessUser::deliverPointer(HeadlessSurface& to, PointerAction action) {
  to.sink().surfacePointer({action, windows_.pointer_, held_, loop_.now()});
}

void HeadlessUser::deliverKey(KeyInput input) {
  presence_.userActs();
  input.time = loop_.now();
  if (menus_.open()) {
    if (input.down) menus_.key(input.keyCode);
    return;
  }
  HeadlessSurface* const surface = windows_.active();
  if (!surface || surface->sink().surfaceKey(input) != KeyDisposition::inputMethod) return;
  if (inputMethod_.consumes(input)) return;
  // The input method gives the key back to the surface that has the focus now, if it still is the same.
  if (windows_.active() == surface) surface->sink().surfaceKeyAfterInputMethod(input);
}

}  // namespace headless
