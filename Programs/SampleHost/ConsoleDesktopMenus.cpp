#include <fmt/format.h>

#include "Platform/Foundation/FileManager.h"
#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/PngFile.h"

namespace samplehost {

using platform::Dictionary;
using platform::Point;
using platform::Value;
using platform::port::MenuEntry;
using std::string;

namespace {

string nameOf(platform::port::MenuMark mark) {
  switch (mark) {
    case platform::port::MenuMark::none:
      return "none";
    case platform::port::MenuMark::check:
      return "check";
    case platform::port::MenuMark::dash:
      break;
  }
  return "dash";
}

Value describe(const std::vector<MenuEntry>& entries) {
  Value::Array rows;
  for (const MenuEntry& entry : entries) {
    if (entry.separator)
      rows.push_back(Dictionary{{"separator", true}});
    else
      rows.push_back(Dictionary{{"title", entry.title},
                                {"enabled", entry.enabled},
                                {"mark", nameOf(entry.mark)},
                                {"submenu", describe(entry.children)}});
  }
  return rows;
}

Value menu(ConsoleContext& context) {
  const auto* open = context.headless().menus()->open();
  if (!open) return {};
  return Dictionary{{"items", describe(open->entries)}, {"topLeft", Codec<Point>::encode(open->topLeft)}};
}

void chooseMenuItem(ConsoleContext& context, const string& title) {
  if (!context.headless().menus()->choose(title))
    throw RequestError(fmt::format("no open menu has an item \"{}\" that can be chosen", title));
}

void takeMenuScreenshot(ConsoleContext& context, const string& path) {
  auto* const menus = context.machine.backend->menus();
  const auto picture = menus ? menus->snapshot() : std::nullopt;
  if (!picture) throw RequestError("no menu is open, or this machine can't tell what it shows");
  writePng(*picture, path);
}

/// Types to texts, or to `{"file": path}` for a file's bytes.
std::map<string, string> contentsOf(const Dictionary& described) {
  std::map<string, string> contents;
  for (const auto& [type, value] : described) {
    const auto* file = value.get<Dictionary>();
    if (!file) {
      contents[type] = Codec<string>::decode(value);
      continue;
    }
    if (file->size() != 1 || !file->contains("file")) throw RequestError("expected a text, or {\"file\"}");
    const string path = Codec<string>::decode(file->at("file"));
    contents[type] = platform::textOf(platform::FileManager().contents(platform::URL::fileURL(path)));
  }
  return contents;
}

/// What is dragged comes to an end before the answer: it has no loop of its own.
void addDragging(ConsoleCalls& calls) {
  calls.add("setClipboardContents", [](ConsoleContext& c, const Dictionary& contents) {
    c.headless().clipboard().setContents(contentsOf(contents));
  });
  calls.add("dragOver", [](ConsoleContext& c, const Dictionary& contents, Point at) {
    return c.headless().user().dragOver(contentsOf(contents), at);
  });
  calls.add("dragAway", [](ConsoleContext& c) { c.headless().user().dragAway(); });
  calls.add("drop", [](ConsoleContext& c, const Dictionary& contents, Point at) {
    return c.headless().user().drop(contentsOf(contents), at);
  });
}

}  // namespace

void addMenuCalls(ConsoleCalls& calls) {
  calls.add("menu", menu);
  calls.add("chooseMenuItem", chooseMenuItem);
  calls.add("leaveMenu", [](ConsoleContext& c) { c.headless().menus()->leave(); });
  calls.add("menuScreenshot", takeMenuScreenshot);
  addDragging(calls);
}

}  // namespace samplehost
