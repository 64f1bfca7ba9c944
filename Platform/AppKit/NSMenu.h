#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/AppKit/NSMenuItem.h"
#include "Platform/Export.h"
#include "Platform/Port/Geometry.h"

namespace platform {

class NSView;

class NSMenuDelegate {
 public:
  virtual ~NSMenuDelegate() = default;
  /// The menu has left the screen, chosen from or not; a chosen item acts after this.
  virtual void menuDidClose(NSMenu& /*menu*/) {}
};

/// One who shows a menu elsewhere, and so has to follow its changes. Hears of submenus, too.
class NSMenuObserver {
 public:
  virtual ~NSMenuObserver() = default;
  /// An item came, or a submenu was put on one or taken from it.
  virtual void menuItemsChanged(NSMenu& menu) = 0;
  /// A shown property of an item is another one.
  virtual void menuItemChanged(NSMenuItem& item) = 0;
};

/// A menu as a model: what it shows and does. Main thread.
class PLATFORM_EXPORT NSMenu : public std::enable_shared_from_this<NSMenu> {
 public:
  explicit NSMenu(std::string title) : title_(std::move(title)) {}
  NSMenu(const NSMenu&) = delete;
  NSMenu& operator=(const NSMenu&) = delete;
  ~NSMenu();

  const std::string& title() const { return title_; }
  std::shared_ptr<NSMenuDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<NSMenuDelegate> delegate) { delegate_ = std::move(delegate); }
  /// Whether an item's target decides that it is enabled, or `NSMenuItem::setEnabled`. True unless it is set.
  bool autoenablesItems() const { return autoenables_; }
  void setAutoenablesItems(bool autoenables);

  /// An item that another menu holds throws std::logic_error.
  void addItem(std::shared_ptr<NSMenuItem> item);
  const std::vector<std::shared_ptr<NSMenuItem>>& items() const { return items_; }
  /// The first one; null when there is none. Submenus aren't looked through.
  std::shared_ptr<NSMenuItem> itemWithTag(int tag) const;
  /// The item that this menu is the submenu of; null for none.
  NSMenuItem* superItem() const { return superItem_; }

  void addObserver(std::weak_ptr<NSMenuObserver> observer);

  /// Shows the menu as it is now, without its hidden items, as a native context menu: its top left corner at `location`
  /// in `view`'s coordinates (on the screen when null), or where it has room in the work area of the screen there. Runs
  /// a nested loop until the user has chosen or left it; the menu closes with the view's window, too, and when another
  /// menu pops up. Then the delegate hears that it closed, and the chosen item acts. True when one did. Where there is
  /// nothing to show, or no native menus, or the view is in no window, it closes at once.
  bool popUp(Point location, const NSView* view);

 private:
  friend class NSMenuItem;
  void tell(const std::function<void(NSMenuObserver&)>& call);
  void itemsChanged();

  std::string title_;
  std::weak_ptr<NSMenuDelegate> delegate_;
  bool autoenables_ = true;
  std::vector<std::shared_ptr<NSMenuItem>> items_;
  std::vector<std::weak_ptr<NSMenuObserver>> observers_;
  NSMenuItem* superItem_ = nullptr;
};

}  // namespace platform
