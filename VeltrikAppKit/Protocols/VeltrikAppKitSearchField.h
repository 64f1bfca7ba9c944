#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/AppKit/NSView.h"

namespace veltrik {

/// What a search field tells its owner; each may be empty.
struct SearchFieldCallbacks {
  /// The text was clicked into; gets the current text.
  std::function<void(const std::string& text)> focused;
  /// Up or Down Arrow was pressed in the field; true for Down.
  std::function<void(bool down)> arrowKeyDidDown;
  /// The field lost the focus, or Return or Tab was pressed in it.
  std::function<void()> didEndEditing;
  /// The user, the input method or the button that clears changed the text; gets the new one.
  std::function<void(const std::string& text)> textChanged;
};

/// A C entry of the bundle: stores a new search field in `*searchField`, a view that the caller gives a frame (26
/// points high fits it) and puts into a window's view tree. Main thread.
using VeltrikAppKitMakeSearchFieldFunction = void(const SearchFieldCallbacks& callbacks,
                                                  std::shared_ptr<platform::NSView>* searchField);
inline constexpr const char* kVeltrikAppKitMakeSearchFieldSymbol = "VeltrikAppKitMakeSearchField";

}  // namespace veltrik
