#include "Backends/Desktop/DBusMenu.h"

#include <algorithm>
#include <cerrno>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Unicode.h"

namespace desktop {

using platform::port::TrayMenuItem;

namespace {

constexpr const char* kInterface = "com.canonical.dbusmenu";
constexpr std::uint64_t kShift = 0x20000, kControl = 0x40000, kAlt = 0x80000, kSuper = 0x100000;

/// An underscore marks the next character as the line's access key; ours have none.
std::string label(const std::string& title) {
  std::string result;
  for (const char character : platform::utf8(platform::utf16(title)))
    result += character == '_' ? std::string("__") : std::string(1, character);
  return result;
}

DBusMenu::Shortcut shortcut(const TrayMenuItem& item) {
  DBusMenu::Shortcut keys;
  for (const auto& [flag, name] : {std::pair{kControl, "Control"}, {kAlt, "Alt"}, {kShift, "Shift"}, {kSuper, "Super"}})
    if (item.modifiers & flag) keys.emplace_back(name);
  keys.push_back(platform::utf8(platform::utf16(item.keyEquivalent)));
  return keys;
}

/// Writes a property's value as a variant.
class VariantWriter {
 public:
  explicit VariantWriter(sd_bus_message* message) : message_(message) {}
  bool operator()(const std::string& text) const {
    return sd_bus_message_append(message_, "v", "s", text.c_str()) >= 0;
  }
  bool operator()(bool truth) const { return sd_bus_message_append(message_, "v", "b", truth ? 1 : 0) >= 0; }
  bool operator()(std::int32_t number) const { return sd_bus_message_append(message_, "v", "i", number) >= 0; }
  bool operator()(const DBusMenu::Shortcut& keys) const {
    bool written = sd_bus_message_open_container(message_, 'v', "aas") >= 0 &&
                   sd_bus_message_open_container(message_, 'a', "as") >= 0 &&
                   sd_bus_message_open_container(message_, 'a', "s") >= 0;
    for (const std::string& key : keys)
      written = written && sd_bus_message_append_basic(message_, 's', key.c_str()) >= 0;
    for (int level = 0; level < 3; ++level) written = written && sd_bus_message_close_container(message_) >= 0;
    return written;
  }

 private:
  sd_bus_message* message_;
};

/// a{sv} of those with one of the names, or of all when there are no names.
bool appendProperties(sd_bus_message* message, const DBusMenu::Properties& properties,
                      const std::vector<std::string>& names = {}) {
  if (sd_bus_message_open_container(message, 'a', "{sv}") < 0) return false;
  for (const auto& [name, value] : properties) {
    if (!names.empty() && std::ranges::find(names, name) == names.end()) continue;
    const bool written = sd_bus_message_open_container(message, 'e', "sv") >= 0 &&
                         sd_bus_message_append_basic(message, 's', name.c_str()) >= 0 &&
                         std::visit(VariantWriter(message), value) && sd_bus_message_close_container(message) >= 0;
    if (!written) return false;
  }
  return sd_bus_message_close_container(message) >= 0;
}

template <class T>
std::vector<T> readArray(sd_bus_message* message, char type) {
  std::vector<T> elements;
  const char contents[] = {type, '\0'};
  if (sd_bus_message_enter_container(message, 'a', contents) < 0) return elements;
  std::conditional_t<std::is_same_v<T, std::string>, const char*, T> element{};
  while (sd_bus_message_read_basic(message, type, &element) > 0) elements.emplace_back(element);
  sd_bus_message_exit_container(message);
  return elements;
}

BusMessage replyTo(sd_bus_message* call) {
  sd_bus_message* made = nullptr;
  return sd_bus_message_new_method_return(call, &made) < 0 ? nullptr : BusMessage(made);
}

BusMessage newSignal(sd_bus* bus, const char* member) {
  sd_bus_message* made = nullptr;
  const bool isMade = bus && sd_bus_message_new_signal(bus, &made, DBusMenu::kPath, kInterface, member) >= 0;
  return isMade ? BusMessage(made) : nullptr;
}

int sendReply(const BusMessage& reply, bool written) {
  return written ? sd_bus_send(nullptr, reply.get(), nullptr) : -ENOMEM;
}

int unknownLine(sd_bus_error* error, std::int32_t identifier) {
  return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "the menu has no line %d", identifier);
}

}  // namespace

/// What the bus library calls, with the menu as `self`.
struct DBusMenu::Handlers {
  static int getLayout(sd_bus_message* call, void* self, sd_bus_error* error) {
    const auto& menu = *static_cast<DBusMenu*>(self);
    std::int32_t parent = 0, depth = 0;
    if (sd_bus_message_read(call, "ii", &parent, &depth) < 0) return -EINVAL;
    const auto names = readArray<std::string>(call, 's');
    if (!menu.lines_.contains(parent)) return unknownLine(error, parent);
    const BusMessage reply = replyTo(call);
    return sendReply(reply, reply && sd_bus_message_append(reply.get(), "u", menu.revision_) >= 0 &&
                                menu.appendTree(reply.get(), parent, depth, names));
  }

  static int getGroupProperties(sd_bus_message* call, void* self, sd_bus_error*) {
    const auto& menu = *static_cast<DBusMenu*>(self);
    auto identifiers = readArray<std::int32_t>(call, 'i');
    const auto names = readArray<std::string>(call, 's');
    if (identifiers.empty())
      for (const auto& line : menu.lines_) identifiers.push_back(line.first);
    const BusMessage reply = replyTo(call);
    bool written = reply && sd_bus_message_open_container(reply.get(), 'a', "(ia{sv})") >= 0;
    for (const std::int32_t identifier : identifiers) {
      const auto line = menu.lines_.find(identifier);
      if (line == menu.lines_.end()) continue;
      written = written && sd_bus_message_open_container(reply.get(), 'r', "ia{sv}") >= 0 &&
                sd_bus_message_append(reply.get(), "i", identifier) >= 0 &&
                appendProperties(reply.get(), line->second.properties, names) &&
                sd_bus_message_close_container(reply.get()) >= 0;
    }
    return sendReply(reply, written && sd_bus_message_close_container(reply.get()) >= 0);
  }

  static int getProperty(sd_bus_message* call, void* self, sd_bus_error* error) {
    const auto& menu = *static_cast<DBusMenu*>(self);
    std::int32_t identifier = 0;
    const char* name = nullptr;
    if (sd_bus_message_read(call, "is", &identifier, &name) < 0) return -EINVAL;
    const auto line = menu.lines_.find(identifier);
    if (line == menu.lines_.end()) return unknownLine(error, identifier);
    const auto property = line->second.properties.find(name);
    if (property == line->second.properties.end())
      return sd_bus_error_setf(error, SD_BUS_ERROR_UNKNOWN_PROPERTY, "line %d has no %s", identifier, name);
    const BusMessage reply = replyTo(call);
    return sendReply(reply, reply && std::visit(VariantWriter(reply.get()), property->second));
  }

  /// Reads one (isvu); false for a line that isn't there.
  static bool readEvent(DBusMenu& menu, sd_bus_message* call, std::int32_t& identifier) {
    const char* kind = nullptr;
    if (sd_bus_message_read(call, "is", &identifier, &kind) < 0 || sd_bus_message_skip(call, "vu") < 0) return false;
    if (!menu.lines_.contains(identifier)) return false;
    if (std::string_view(kind) == "clicked") menu.clicked(identifier);
    return true;
  }

  static int event(sd_bus_message* call, void* self, sd_bus_error* error) {
    std::int32_t identifier = 0;
    if (!readEvent(*static_cast<DBusMenu*>(self), call, identifier)) return unknownLine(error, identifier);
    return sd_bus_reply_method_return(call, "");
  }

  static int eventGroup(sd_bus_message* call, void* self, sd_bus_error*) {
    std::vector<std::int32_t> unknown;
    if (sd_bus_message_enter_container(call, 'a', "(isvu)") < 0) return -EINVAL;
    while (sd_bus_message_enter_container(call, 'r', "isvu") > 0) {
      std::int32_t identifier = 0;
      if (!readEvent(*static_cast<DBusMenu*>(self), call, identifier)) unknown.push_back(identifier);
      if (sd_bus_message_exit_container(call) < 0) return -EINVAL;
    }
    const BusMessage reply = replyTo(call);
    return sendReply(reply, reply && sd_bus_message_append_array(reply.get(), 'i', unknown.data(),
                                                                 unknown.size() * sizeof(std::int32_t)) >= 0);
  }

  static int aboutToShow(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "b", 0);
  }

  static int aboutToShowGroup(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "aiai", 0, 0);
  }

  static int property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void*,
                      sd_bus_error*) {
    const std::string_view asked = name;
    if (asked == "Version") return sd_bus_message_append(reply, "u", 3);
    if (asked == "IconThemePath") return sd_bus_message_append(reply, "as", 0);
    return sd_bus_message_append(reply, "s", asked == "Status" ? "normal" : "ltr");
  }

  static const sd_bus_vtable kTable[];
};

const sd_bus_vtable DBusMenu::Handlers::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "u", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("TextDirection", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "as", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", getLayout, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", getGroupProperties, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetProperty", "is", "v", getProperty, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Event", "isvu", "", event, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
    SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
    SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
    SD_BUS_VTABLE_END};

DBusMenu::DBusMenu(SessionBus& bus, std::function<void(std::int32_t)> chosen) : bus_(bus), chosen_(std::move(chosen)) {
  bus_.onConnection(
      [this] { sd_bus_add_object_vtable(bus_.connection(), nullptr, kPath, kInterface, Handlers::kTable, this); });
}

void DBusMenu::show(const std::vector<TrayMenuItem>& items) {
  Lines lines{{0, {{{"children-display", std::string("submenu")}}, {}}}};
  add(lines, 0, items);
  if (lines == lines_) return;
  const bool sameStructure = hasStructureOf(lines);
  const Lines former = std::exchange(lines_, std::move(lines));
  if (sameStructure)
    tellProperties(former);
  else
    tellLayout();
}

void DBusMenu::add(Lines& lines, std::int32_t parent, const std::vector<TrayMenuItem>& items) {
  for (const TrayMenuItem& item : items) {
    lines[parent].children.push_back(item.identifier);
    lines[item.identifier].properties = propertiesOf(item);
    add(lines, item.identifier, item.children);
  }
}

DBusMenu::Properties DBusMenu::propertiesOf(const TrayMenuItem& item) {
  Properties properties;
  if (!item.isVisible) properties["visible"] = false;
  if (item.isSeparator) {
    properties["type"] = std::string("separator");
    return properties;
  }
  properties["label"] = label(item.title);
  if (!item.isEnabled) properties["enabled"] = false;
  if (!item.keyEquivalent.empty()) properties["shortcut"] = shortcut(item);
  if (item.mark != TrayMenuItem::Mark::none) {
    properties["toggle-type"] = std::string("checkmark");
    properties["toggle-state"] = item.mark == TrayMenuItem::Mark::check ? 1 : -1;
  }
  if (!item.children.empty()) properties["children-display"] = std::string("submenu");
  return properties;
}

bool DBusMenu::hasStructureOf(const Lines& lines) const {
  return std::ranges::equal(lines_, lines, [](const auto& one, const auto& other) {
    return one.first == other.first && one.second.children == other.second.children;
  });
}

void DBusMenu::tellProperties(const Lines& former) {
  const BusMessage message = newSignal(bus_.connection(), "ItemsPropertiesUpdated");
  bool written = message && sd_bus_message_open_container(message.get(), 'a', "(ia{sv})") >= 0;
  for (const auto& [identifier, line] : lines_) {
    const Properties& before = former.at(identifier).properties;
    Properties changed;
    for (const auto& [name, value] : line.properties)
      if (const auto old = before.find(name); old == before.end() || old->second != value) changed[name] = value;
    if (changed.empty()) continue;
    written = written && sd_bus_message_open_container(message.get(), 'r', "ia{sv}") >= 0 &&
              sd_bus_message_append(message.get(), "i", identifier) >= 0 && appendProperties(message.get(), changed) &&
              sd_bus_message_close_container(message.get()) >= 0;
  }
  written = written && sd_bus_message_close_container(message.get()) >= 0 &&
            sd_bus_message_open_container(message.get(), 'a', "(ias)") >= 0;
  for (const auto& [identifier, line] : lines_) {
    std::vector<char*> gone;
    for (const auto& [name, value] : former.at(identifier).properties)
      if (!line.properties.contains(name)) gone.push_back(const_cast<char*>(name.c_str()));
    if (gone.empty()) continue;
    gone.push_back(nullptr);
    written = written && sd_bus_message_open_container(message.get(), 'r', "ias") >= 0 &&
              sd_bus_message_append(message.get(), "i", identifier) >= 0 &&
              sd_bus_message_append_strv(message.get(), gone.data()) >= 0 &&
              sd_bus_message_close_container(message.get()) >= 0;
  }
  if (written && sd_bus_message_close_container(message.get()) >= 0) bus_.send(message);
}

void DBusMenu::tellLayout() {
  ++revision_;
  const BusMessage message = newSignal(bus_.connection(), "LayoutUpdated");
  if (message && sd_bus_message_append(message.get(), "ui", revision_, 0) >= 0) bus_.send(message);
}

bool DBusMenu::appendTree(sd_bus_message* message, std::int32_t identifier, int depth,
                          const std::vector<std::string>& names) const {
  const Line& line = lines_.at(identifier);
  bool written = sd_bus_message_open_container(message, 'r', "ia{sv}av") >= 0 &&
                 sd_bus_message_append(message, "i", identifier) >= 0 &&
                 appendProperties(message, line.properties, names) &&
                 sd_bus_message_open_container(message, 'a', "v") >= 0;
  if (depth != 0)
    for (const std::int32_t child : line.children)
      written = written && sd_bus_message_open_container(message, 'v', "(ia{sv}av)") >= 0 &&
                appendTree(message, child, depth - 1, names) && sd_bus_message_close_container(message) >= 0;
  return written && sd_bus_message_close_container(message) >= 0 && sd_bus_message_close_container(message) >= 0;
}

void DBusMenu::clicked(std::int32_t identifier) {
  bus_.deliver([chosen = chosen_, identifier] { chosen(identifier); });
}

}  // namespace desktop
