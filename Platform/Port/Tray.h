#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Port/Bitmap.h"

namespace platform::port {

/// One line of a status item's menu. Texts are UTF-8.
struct TrayMenuItem {
  enum class Mark { none, check, dash };

  std::int32_t identifier = 0;  ///< above 0; stays the same as long as the line is in the menu
  bool isSeparator = false;     ///< a line; only `isVisible` counts then
  std::string title;
  bool isEnabled = true;
  bool isVisible = true;
  Mark mark = Mark::none;
  std::string keyEquivalent;    ///< the shortcut's key, empty for none; for show
  std::uint64_t modifiers = 0;  ///< the shortcut's, as event modifier flags
  std::vector<TrayMenuItem> children;
  friend bool operator==(const TrayMenuItem&, const TrayMenuItem&) = default;
};

/// Implemented by the model: what the user does with an item. May destroy the item.
class TrayItemSink {
 public:
  virtual ~TrayItemSink() = default;
  virtual void trayMenuItemChosen(std::int32_t identifier) = 0;
};

/// An icon with a menu, shown by every status bar that is there or appears later; it leaves with this object.
class TrayItem {
 public:
  virtual ~TrayItem() = default;
  /// The same picture in several sizes; none for an empty place.
  virtual void setPictures(std::vector<Bitmap> pictures) = 0;
  virtual void setMenu(std::vector<TrayMenuItem> items) = 0;
};

/// The desktop's status bar. Main thread.
class Tray {
 public:
  virtual ~Tray() = default;
  /// `sink` is borrowed and outlives the item.
  virtual std::unique_ptr<TrayItem> makeItem(TrayItemSink& sink) = 0;
};

}  // namespace platform::port
