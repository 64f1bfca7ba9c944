#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/MenuHost.h"

namespace headless {

/// Menus in memory. While one is open the user's keys and presses are its own: arrows and Return choose, Escape and a
/// press elsewhere leave it.
class HeadlessMenus final : public platform::port::MenuHost {
 public:
  static constexpr double kWidth = 160, kRowHeight = 22;

  struct Menu {
    std::vector<platform::port::MenuEntry> entries;
    platform::Point topLeft;  ///< screen points, bottom-left origin

    /// The middle of a row.
    platform::Point pointOf(std::size_t row) const;
  };

  HeadlessMenus(HeadlessLoop& loop, Journal& journal) : loop_(loop), journal_(journal) {}

  std::optional<std::size_t> popUp(const std::vector<platform::port::MenuEntry>& entries,
                                   const std::function<platform::Point(platform::Size)>& place) override;
  void closeMenus() override;
  std::optional<platform::Bitmap> snapshot() override { return std::nullopt; }

  /// The menu that the user sees, the newest one; null when none is open. Borrowed until it closes.
  const Menu* open() const;
  /// The user chooses the entry with this title, at any depth. False, and nothing changes, when there is none that is
  /// enabled.
  bool choose(std::string_view title);
  void leave();

 private:
  friend class HeadlessUser;
  struct Shown {
    Menu menu;
    std::optional<std::size_t> selected;  ///< a row
    bool pressedInside = false;
    bool done = false;
    std::optional<std::size_t> chosen;
  };
  void pressed(platform::Point at);
  void released(platform::Point at);
  void key(std::uint16_t keyCode);
  void step(int direction);
  void activate(std::optional<std::size_t> row);

  HeadlessLoop& loop_;
  Journal& journal_;
  std::vector<Shown*> shown_;
};

}  // namespace headless
