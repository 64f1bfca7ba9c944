#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/Tray.h"

namespace desktop {

/// A menu for other processes to show: the interface com.canonical.dbusmenu, version 3, at `kPath`. A change of a
/// line's properties goes out as one, only lines that come and go make a new layout.
class DBusMenu {
 public:
  static constexpr const char* kPath = "/MenuBar";
  /// Key names with their modifiers, as the interface writes a shortcut.
  using Shortcut = std::vector<std::string>;
  using Property = std::variant<std::string, bool, std::int32_t, Shortcut>;
  /// Those that differ from the interface's defaults.
  using Properties = std::map<std::string, Property>;

  /// The bus is borrowed and outlives this. `chosen` gets the identifier of a line, outside of the bus library; it may
  /// destroy this.
  DBusMenu(SessionBus& bus, std::function<void(std::int32_t)> chosen);
  DBusMenu(const DBusMenu&) = delete;
  DBusMenu& operator=(const DBusMenu&) = delete;

  void show(const std::vector<platform::port::TrayMenuItem>& items);

 private:
  struct Line {
    Properties properties;
    std::vector<std::int32_t> children;
    friend bool operator==(const Line&, const Line&) = default;
  };
  using Lines = std::map<std::int32_t, Line>;
  struct Handlers;
  friend struct Handlers;

  static void add(Lines& lines, std::int32_t parent, const std::vector<platform::port::TrayMenuItem>& items);
  static Properties propertiesOf(const platform::port::TrayMenuItem& item);
  bool hasStructureOf(const Lines& lines) const;
  void tellProperties(const Lines& former);
  void tellLayout();
  bool appendTree(sd_bus_message* message, std::int32_t identifier, int depth,
                  const std::vector<std::string>& names) const;
  void clicked(std::int32_t identifier);

  SessionBus& bus_;
  std::function<void(std::int32_t)> chosen_;
  Lines lines_{{0, {{{"children-display", "submenu"}}, {}}}};
  std::uint32_t revision_ = 1;
};

}  // namespace desktop
