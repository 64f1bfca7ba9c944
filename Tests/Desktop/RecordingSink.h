#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Port/WindowHost.h"

namespace desktop_tests {

/// A window that remembers what its surface reports. It paints one colour, and leaves keys to the input method while it
/// has a text.
class RecordingSink : public platform::port::SurfaceSink {
 public:
  void surfacePaint(platform::port::Canvas& canvas, const platform::Rect& dirty) override {
    canvas.fill(dirty, {0, 0, 1, 1}, 0);
    ++paints;
  }
  void surfaceFrameChanged(const platform::Rect& frame) override { frames.push_back(frame); }
  void surfaceActivated(bool isActive) override { active = isActive; }
  void surfaceMinimised(bool isMinimised) override { minimised = isMinimised; }
  void surfaceZoomed(bool isZoomed) override { zoomed = isZoomed; }
  void surfaceKeptAbove(bool) override {}
  void surfaceCloseRequested() override {}
  void surfacePointer(const platform::port::PointerInput& input) override {
    pointers.push_back(input);
    if (onPointer) onPointer(input);
  }
  void surfaceWheel(const platform::port::WheelInput& input) override { wheels.push_back(input); }
  platform::port::KeyDisposition surfaceKey(const platform::port::KeyInput& input) override {
    keys.push_back(input);
    if (onKey) onKey(input);
    using platform::port::KeyDisposition;
    return hasText ? KeyDisposition::inputMethod : KeyDisposition::handled;
  }
  void surfaceKeyAfterInputMethod(const platform::port::KeyInput& input) override {
    left.push_back(input);
    if (input.characters.size() == 1 && input.characters.front() >= ' ' && input.characters.front() != '\x7f')
      insert(std::u16string(1, static_cast<char16_t>(input.characters.front())));
  }
  void surfaceMarkedText(const std::u16string& preedit, std::size_t) override { marked = preedit; }
  void surfaceCommittedText(const std::u16string& committed) override { insert(committed); }
  void surfaceDeleteSurrounding(std::ptrdiff_t, std::size_t) override {}
  std::optional<platform::port::TextInputState> surfaceTextInput() override {
    if (!hasText) return std::nullopt;
    return platform::port::TextInputState{caret, text, text.size(), text.size()};
  }
  bool surfaceDragMoved(const platform::port::Contents&, platform::Point) override { return false; }
  void surfaceDragExited() override {}
  bool surfaceDropped(const platform::port::Contents&, platform::Point) override { return false; }

  void insert(const std::u16string& more) {
    text += more;
    marked.clear();
  }
  /// The keys that went down, by their characters.
  std::string typed() const {
    std::string result;
    for (const auto& key : keys)
      if (key.down) result += key.characters + (key.repeated ? " (repeated) " : " ");
    return result;
  }
  std::size_t count(platform::port::PointerAction action) const {
    std::size_t found = 0;
    for (const auto& each : pointers) found += each.action == action;
    return found;
  }

  int paints = 0;
  std::vector<platform::Rect> frames;
  bool active = false, minimised = false, zoomed = false;
  std::vector<platform::port::PointerInput> pointers;
  std::vector<platform::port::WheelInput> wheels;
  std::vector<platform::port::KeyInput> keys, left;
  std::function<void(const platform::port::KeyInput&)> onKey;
  std::function<void(const platform::port::PointerInput&)> onPointer;
  bool hasText = false;
  std::u16string text, marked;
  platform::Rect caret;
};

/// The state of a window that is on the screen.
inline platform::port::SurfaceState shownAt(const platform::Rect& frame) {
  platform::port::SurfaceState state;
  state.frame = frame;
  state.visible = true;
  return state;
}

}  // namespace desktop_tests
