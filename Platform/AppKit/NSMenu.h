#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Export.h"

namespace platform {

class NSMenuItem;

class PLATFORM_EXPORT NSMenuDelegate {
 public:
  virtual ~NSMenuDelegate() = default;
  virtual void menuDidClose() {}
};

/// A menu as a model: what it shows and does. Main thread.
class PLATFORM_EXPORT NSMenu {
 public:
  explicit NSMenu(std::string title) : title_(std::move(title)) {}
  const std::string& title() const { return title_; }
  bool autoenablesItems() const { return autoenables_; }
  void setAutoenablesItems(bool autoenables) { autoenables_ = autoenables; }
  void addItem(std::shared_ptr<NSMenuItem> item) { items_.push_back(std::move(item)); }
  const std::vector<std::shared_ptr<NSMenuItem>>& items() const { return items_; }

 private:
  std::string title_;
  bool autoenables_ = true;
  std::vector<std::shared_ptr<NSMenuItem>> items_;
};

/// `action` names what the item does ("openMainWindow:"); `target` carries it out while it lives.
class PLATFORM_EXPORT NSMenuItem {
 public:
  using Handler = std::function<void(NSMenuItem&)>;

  NSMenuItem(std::string title, std::string action, std::string keyEquivalent)
      : title_(std::move(title)), action_(std::move(action)), keyEquivalent_(std::move(keyEquivalent)) {}
  const std::string& title() const { return title_; }
  const std::string& action() const { return action_; }
  const std::string& keyEquivalent() const { return keyEquivalent_; }
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }
  /// `handler` runs when the item is chosen, as long as `target` lives.
  void setTarget(std::weak_ptr<void> target, Handler handler) {
    target_ = std::move(target);
    handler_ = std::move(handler);
  }
  std::shared_ptr<void> target() const { return target_.lock(); }
  /// As the user's choice. False when the target has gone.
  bool perform() {
    const auto target = target_.lock();
    if (!target || !handler_) return false;
    handler_(*this);
    return true;
  }

 private:
  std::string title_;
  std::string action_;
  std::string keyEquivalent_;
  int tag_ = 0;
  std::weak_ptr<void> target_;
  Handler handler_;
};

}  // namespace platform
