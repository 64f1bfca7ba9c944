#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Export.h"
#include "Platform/Port/Bitmap.h"

namespace platform {

class NSMenu;

/// What stands before an item's title; `mixed` is a dash.
enum class MenuItemState { off, on, mixed };

/// One line of a menu. `action` names what the item does ("openMainWindow:"); `target` carries it out while it lives.
/// Every change of a shown property is told to the observers of the menu that holds the item. Main thread.
class PLATFORM_EXPORT NSMenuItem {
 public:
  using Handler = std::function<void(NSMenuItem&)>;

  NSMenuItem(std::string title, std::string action, std::string keyEquivalent)
      : title_(std::move(title)), action_(std::move(action)), keyEquivalent_(std::move(keyEquivalent)) {}
  NSMenuItem(const NSMenuItem&) = delete;
  NSMenuItem& operator=(const NSMenuItem&) = delete;
  ~NSMenuItem();
  /// A line between items. It can't be chosen.
  static std::shared_ptr<NSMenuItem> separatorItem();

  bool isSeparatorItem() const { return separator_; }
  const std::string& title() const { return title_; }
  void setTitle(std::string title);
  const std::string& action() const { return action_; }
  /// The characters of the shortcut's key; empty for no shortcut.
  const std::string& keyEquivalent() const { return keyEquivalent_; }
  void setKeyEquivalent(std::string keyEquivalent);
  /// As event modifier flags; Command unless it is set.
  std::uint64_t keyEquivalentModifierMask() const { return keyEquivalentModifiers_; }
  void setKeyEquivalentModifierMask(std::uint64_t modifiers);
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }
  MenuItemState state() const { return state_; }
  void setState(MenuItemState state);
  /// Beside the title; null for none.
  const std::shared_ptr<const Bitmap>& image() const { return image_; }
  void setImage(std::shared_ptr<const Bitmap> image);
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  /// Whether the user can choose the item, or open its submenu. In a menu that enables its items itself an item
  /// without a submenu is enabled while it has a target that lives; elsewhere `setEnabled` says so. Never for a
  /// separator.
  bool isEnabled() const;
  void setEnabled(bool enabled);
  const std::shared_ptr<NSMenu>& submenu() const { return submenu_; }
  /// A menu that hangs on another item, or that holds this one, throws std::logic_error. Null takes the submenu away.
  void setSubmenu(std::shared_ptr<NSMenu> submenu);
  const std::any& representedObject() const { return representedObject_; }
  void setRepresentedObject(std::any object) { representedObject_ = std::move(object); }
  /// The menu that holds the item; null for none.
  NSMenu* menu() const { return menu_; }

  /// `handler` runs when the item is chosen, as long as `target` lives.
  void setTarget(std::weak_ptr<void> target, Handler handler);
  std::shared_ptr<void> target() const { return target_.lock(); }
  /// As the user's choice. False, without effect, when the item isn't enabled, has a submenu or its target has gone.
  bool perform();

 private:
  friend class NSMenu;
  void changed();

  std::string title_;
  std::string action_;
  std::string keyEquivalent_;
  std::uint64_t keyEquivalentModifiers_ = ModifierFlag::kCommand;
  bool separator_ = false;
  bool enabled_ = true;
  bool hidden_ = false;
  MenuItemState state_ = MenuItemState::off;
  int tag_ = 0;
  std::shared_ptr<const Bitmap> image_;
  std::shared_ptr<NSMenu> submenu_;
  std::any representedObject_;
  std::weak_ptr<void> target_;
  Handler handler_;
  NSMenu* menu_ = nullptr;
};

}  // namespace platform
