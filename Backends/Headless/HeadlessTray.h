#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/Tray.h"

namespace headless {

/// A status bar in memory, whose user is the test.
class HeadlessTray final : public platform::port::Tray {
 public:
  struct Item {
    platform::port::TrayItemSink* sink;
    std::vector<platform::Bitmap> pictures;
    std::vector<platform::port::TrayMenuItem> menu;
  };

  HeadlessTray(HeadlessLoop& loop, Journal& journal) : loop_(loop), journal_(journal) {}

  std::unique_ptr<platform::port::TrayItem> makeItem(platform::port::TrayItemSink& sink) override;

  /// What is shown, the oldest first.
  const std::vector<const Item*>& items() const { return items_; }
  /// The user chooses the first visible line with this title, at any depth; the application hears of it in a later
  /// turn. False when there is none that is enabled.
  bool choose(const Item& item, std::string_view title);

 private:
  class Shown;
  HeadlessLoop& loop_;
  Journal& journal_;
  std::vector<const Item*> items_;
};

}  // namespace headless
