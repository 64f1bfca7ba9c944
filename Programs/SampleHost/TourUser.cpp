#include "Programs/SampleHost/TourUser.h"

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Unicode.h"

namespace samplehost {

using platform::EventType;
using platform::NSApplication;
using platform::NSEvent;
using platform::Point;

namespace {

class SimulatedUser : public TourUser {
 public:
  explicit SimulatedUser(headless::HeadlessBackend& desktop) : desktop_(desktop) {}

  void type(const std::string& utf8) override { desktop_.user().type(utf8); }
  void key(std::uint16_t keyCode, std::uint64_t modifiers) override { desktop_.user().key(keyCode, {}, modifiers); }
  void compose(const std::u16string& preedit) override { desktop_.inputMethod().compose(preedit); }
  void commit(const std::u16string& text) override { desktop_.inputMethod().commit(text); }
  void click(Point at, int count, bool secondary) override {
    desktop_.user().click(at, count, secondary ? headless::Button::right : headless::Button::left);
  }
  void drag(Point from, Point to) override { desktop_.user().drag(from, to); }
  void chooseMenuItem(const std::string& title) override { desktop_.menus()->choose(title); }
  bool canChooseFromMenus() const override { return true; }
  bool dropFiles(const std::string& uriList, Point at) override {
    return desktop_.user().drop({{"text/uri-list", uriList}}, at);
  }
  bool canMoveWindows() const override { return true; }

 private:
  headless::HeadlessBackend& desktop_;
};

class DirectUser : public TourUser {
 public:
  explicit DirectUser(platform::port::MenuHost& menus) : menus_(menus) {}

  void type(const std::string& utf8) override {
    const std::u16string text = platform::utf16(utf8);
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t next = platform::nextCharacter(text, at);
      send(EventType::keyDown, kUnmappedKey, 0, platform::utf8(std::u16string_view(text).substr(at, next - at)));
      at = next;
    }
  }
  void key(std::uint16_t keyCode, std::uint64_t modifiers) override {
    send(EventType::keyDown, keyCode, modifiers, keyCode == platform::KeyCode::kReturn ? "\r" : "");
    send(EventType::keyUp, keyCode, modifiers, "");
  }
  void compose(const std::u16string& preedit) override {
    if (const auto text = focusedText()) text->setMarkedText(preedit, preedit.size());
  }
  void commit(const std::u16string& committed) override {
    if (const auto text = focusedText()) text->insertText(committed);
  }
  void click(Point at, int count, bool secondary) override {
    for (int click = 1; click <= count; ++click) {
      post(secondary ? EventType::rightMouseDown : EventType::leftMouseDown, at, click);
      post(secondary ? EventType::rightMouseUp : EventType::leftMouseUp, at, click);
    }
    platform::RunLoop::main().runDue();
  }
  void drag(Point from, Point to) override {
    post(EventType::leftMouseDown, from);
    post(EventType::leftMouseDragged, to);
    post(EventType::leftMouseUp, to);
    platform::RunLoop::main().runDue();
  }
  void chooseMenuItem(const std::string&) override { menus_.closeMenus(); }
  bool canChooseFromMenus() const override { return false; }
  bool dropFiles(const std::string&, Point) override { return false; }
  bool canMoveWindows() const override { return false; }

 private:
  /// A key that stands for its text only.
  static constexpr std::uint16_t kUnmappedKey = 0x7F;

  static std::shared_ptr<platform::NSTextView> focusedText() {
    const auto window = NSApplication::shared().keyWindow();
    return window ? std::dynamic_pointer_cast<platform::NSTextView>(window->firstResponder()) : nullptr;
  }

  static NSEvent event(EventType type) {
    NSEvent result;
    const auto window = NSApplication::shared().keyWindow();
    result.type = type;
    result.timestamp = platform::RunLoop::main().now();
    result.windowNumber = window ? window->windowNumber() : 0;
    return result;
  }

  static void send(EventType type, std::uint16_t keyCode, std::uint64_t modifiers, const std::string& characters) {
    NSEvent made = event(type);
    made.keyCode = keyCode;
    made.modifierFlags = modifiers + platform::ModifierFlag::kPlainKey;
    made.characters = characters;
    made.charactersIgnoringModifiers = characters;
    NSApplication::shared().sendEvent(std::make_shared<const NSEvent>(made));
  }

  static void post(EventType type, Point onScreen, int clickCount = 1) {
    NSEvent made = event(type);
    const auto window = NSApplication::shared().keyWindow();
    made.locationInWindow = window ? window->convertPointFromScreen(onScreen) : onScreen;
    made.clickCount = clickCount;
    NSApplication::shared().postEvent(std::make_shared<const NSEvent>(made), false);
  }

  platform::port::MenuHost& menus_;
};

}  // namespace

std::unique_ptr<TourUser> makeTourUser(Machine& machine) {
  if (machine.headless) return std::make_unique<SimulatedUser>(*machine.headless);
  return std::make_unique<DirectUser>(*machine.backend->menus());
}

}  // namespace samplehost
