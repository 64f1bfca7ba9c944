#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Export.h"
#include "Platform/Port/WindowHost.h"

namespace platform {

/// A view that text can be typed into, as its window sees it. A window asks its first responder with `dynamic_cast`;
/// what an input method makes goes here, and a window without such a first responder drops it. Offsets are UTF-16
/// units. Every call may end with the view, the window or the focus gone, so a caller touches nothing of theirs
/// afterwards. Main thread.
class PLATFORM_EXPORT NSTextInputClient {
 public:
  virtual ~NSTextInputClient() = default;

  /// Caret, surrounding text and selection for the input method; the marked text is left out of the surrounding text.
  /// Nothing when no text can be entered now.
  virtual std::optional<port::TextInputState> textInputState() = 0;

  /// The preedit now, in place of the one before or the selection; empty: the composition ended with nothing.
  virtual void setMarkedText(const std::u16string& text, std::size_t caret) = 0;
  /// Text that the input method has finished, in place of the preedit or the selection.
  virtual void insertText(const std::u16string& text) = 0;
  /// Removes `length` units that start `offset` units after the caret (negative: before), the preedit not counted.
  virtual void deleteSurrounding(std::ptrdiff_t offset, std::size_t length) = 0;

  /// A key that the input method left: the key bindings' command, or the key's text.
  virtual void interpretKeyDirectly(const EventPointer& event) = 0;

  /// The window became (or resigned) key while this is its first responder. Without it a composition ends: the preedit
  /// becomes ordinary text and the input method forgets it.
  virtual void windowKeyChanged(bool key) = 0;
};

}  // namespace platform
