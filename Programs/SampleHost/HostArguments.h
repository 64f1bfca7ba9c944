#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Platform/Foundation/URL.h"
#include "Programs/SampleHost/Codec.h"
#include "Programs/SampleHost/HostEvent.h"
#include "VeltrikAppKit/Protocols/VeltrikPopoverMenuItemProtocol.h"

namespace samplehost {

/// The delegate that the host keeps for an object: the text "host".
struct DelegateName {};

template <>
struct Codec<DelegateName> {
  static DelegateName decode(const Value& value);
};

/// A file's path, or the whole text of another URL.
template <>
struct Codec<platform::URL> {
  static platform::URL decode(const Value& value);
  static Value encode(const platform::URL& value);
};

/// A context menu's item as a value.
struct MenuItemAnswer {
  std::string title;
  std::string state;
  bool separator = false;
};

/// `{"title","state","separator"}`, each may be missing
template <>
struct Codec<MenuItemAnswer> {
  static MenuItemAnswer decode(const Value& value);
};

/// An item that tells of its being chosen.
class PopoverMenuItem : public veltrik::VeltrikPopoverMenuItemProtocol {
 public:
  /// `events` is borrowed and outlives the item.
  PopoverMenuItem(MenuItemAnswer item, std::string from, const HostEvents& events)
      : item_(std::move(item)), from_(std::move(from)), events_(events) {}

  std::string title() const override { return item_.title; }
  std::string state() const override { return item_.state; }
  bool isSeperator() const override { return item_.separator; }
  std::function<void()> handler() const override;

 private:
  MenuItemAnswer item_;
  std::string from_;
  const HostEvents& events_;
};

}  // namespace samplehost
