#include "Backends/Headless/HeadlessMenus.h"

namespace headless {

using platform::Point;
using platform::port::MenuEntry;

namespace {

constexpr std::uint16_t kReturn = 36, kEscape = 53, kDownArrow = 125, kUpArrow = 126;

bool canBeChosen(const MenuEntry& entry) {
  return entry.enabled && !entry.separator && entry.children.empty();
}

const MenuEntry* find(const std::vector<MenuEntry>& entries, std::string_view title) {
  for (const MenuEntry& entry : entries) {
    if (canBeChosen(entry) && entry.title == title) return &entry;
    if (!entry.enabled) continue;
    if (const MenuEntry* found = find(entry.children, title)) return found;
  }
  return nullptr;
}

std::optional<std::size_t> rowAt(const HeadlessMenus::Menu& menu, Point at) {
  const double x = at.x - menu.topLeft.x, y = menu.topLeft.y - at.y;
  if (x < 0 || x >= HeadlessMenus::kWidth || y < 0) return std::nullopt;
  const auto row = static_cast<std::size_t>(y / HeadlessMenus::kRowHeight);
  return row < menu.entries.size() ? std::optional(row) : std::nullopt;
}

}  // namespace

Point HeadlessMenus::Menu::pointOf(std::size_t row) const {
  return {topLeft.x + kWidth / 2, topLeft.y - (static_cast<double>(row) + 0.5) * kRowHeight};
}

std::optional<std::size_t> HeadlessMenus::popUp(const std::vector<MenuEntry>& entries,
                                                const std::function<Point(platform::Size)>& place) {
  Shown shown;
  shown.menu = {entries, place({kWidth, kRowHeight * static_cast<double>(entries.size())})};
  std::string line = "menu:";
  for (const MenuEntry& entry : entries) line += entry.separator ? " -" : " " + entry.title;
  journal_.write(std::move(line));
  struct Stack {
    std::vector<Shown*>& stack;
    Stack(std::vector<Shown*>& all, Shown* newest) : stack(all) { stack.push_back(newest); }
    ~Stack() { stack.pop_back(); }
  } stack(shown_, &shown);
  while (!shown.done) {
    const double next = loop_.serve();
    if (!shown.done) loop_.wait(next);
  }
  return shown.chosen;
}

void HeadlessMenus::closeMenus() {
  for (Shown* each : shown_) each->done = true;
}

const HeadlessMenus::Menu* HeadlessMenus::open() const {
  return shown_.empty() || shown_.back()->done ? nullptr : &shown_.back()->menu;
}

bool HeadlessMenus::choose(std::string_view title) {
  const Menu* menu = open();
  const MenuEntry* entry = menu ? find(menu->entries, title) : nullptr;
  if (!entry) return false;
  shown_.back()->chosen = entry->number;
  shown_.back()->done = true;
  return true;
}

void HeadlessMenus::leave() {
  if (open()) shown_.back()->done = true;
}

void HeadlessMenus::pressed(Point at) {
  shown_.back()->selected = rowAt(shown_.back()->menu, at);
  shown_.back()->pressedInside = shown_.back()->selected.has_value();
  if (!shown_.back()->pressedInside) leave();
}

/// Only of a press inside of the menu: the one that led to the menu chooses nothing.
void HeadlessMenus::released(Point at) {
  if (shown_.back()->pressedInside) activate(rowAt(shown_.back()->menu, at));
}

void HeadlessMenus::key(std::uint16_t keyCode) {
  if (keyCode == kEscape) return leave();
  if (keyCode == kReturn) return activate(shown_.back()->selected);
  if (keyCode == kDownArrow) return step(1);
  if (keyCode == kUpArrow) return step(-1);
}

void HeadlessMenus::step(int direction) {
  Shown& shown = *shown_.back();
  const std::size_t count = shown.menu.entries.size();
  std::size_t row = shown.selected.value_or(direction > 0 ? count - 1 : 0);
  for (std::size_t tries = 0; tries < count; ++tries) {
    row = (row + (direction > 0 ? 1 : count - 1)) % count;
    if (!canBeChosen(shown.menu.entries[row])) continue;
    shown.selected = row;
    return;
  }
}

void HeadlessMenus::activate(std::optional<std::size_t> row) {
  Shown& shown = *shown_.back();
  if (!row || !canBeChosen(shown.menu.entries[*row])) return;
  shown.chosen = shown.menu.entries[*row].number;
  shown.done = true;
}

}  // namespace headless
