#include "Backends/Desktop/StatusNotifierItem.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Log.h"

namespace desktop {

using platform::Bitmap;

namespace {

constexpr const char* kInterface = "org.kde.StatusNotifierItem";
constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds kPatience{10};
constexpr const char* kTitle = "Mirelo";

/// Pixels as the interface has them: alpha, red, green, blue, colours not premultiplied.
std::vector<std::uint8_t> argbBytes(const Bitmap& bitmap) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(bitmap.pixels.size() * 4);
  for (const std::uint32_t pixel : bitmap.pixels) {
    const std::uint32_t alpha = pixel >> 24;
    bytes.push_back(static_cast<std::uint8_t>(alpha));
    for (const int shift : {16, 8, 0}) {
      const std::uint32_t channel = (pixel >> shift) & 0xFF;
      bytes.push_back(static_cast<std::uint8_t>(alpha == 0 ? 0 : (channel * 255 + alpha / 2) / alpha));
    }
  }
  return bytes;
}

int appendPictures(sd_bus_message* message, const std::vector<Bitmap>& pictures) {
  int result = sd_bus_message_open_container(message, 'a', "(iiay)");
  for (const Bitmap& picture : pictures) {
    const auto bytes = argbBytes(picture);
    if (result >= 0) result = sd_bus_message_open_container(message, 'r', "iiay");
    if (result >= 0) result = sd_bus_message_append(message, "ii", picture.width, picture.height);
    if (result >= 0) result = sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size());
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

}  // namespace

/// What the bus library calls, with the item as `self`.
struct StatusNotifierItem::Handlers {
  static int text(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void* self,
                  sd_bus_error*) {
    const std::string_view asked = name;
    const char* value = "";
    if (asked == "Category") value = "Communications";
    if (asked == "Status") value = "Active";
    if (asked == "Title") value = kTitle;
    if (asked == "Id") value = static_cast<StatusNotifierItem*>(self)->identifier_.c_str();
    return sd_bus_message_append(reply, "s", value);
  }
  static int pixmap(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void* self,
                    sd_bus_error*) {
    const bool isIcon = std::string_view(name) == "IconPixmap";
    return appendPictures(reply, isIcon ? static_cast<StatusNotifierItem*>(self)->pictures_ : std::vector<Bitmap>());
  }
  static int toolTip(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "(sa(iiay)ss)", "", 0, kTitle, "");
  }
  static int constants(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void*,
                       sd_bus_error*) {
    const std::string_view asked = name;
    if (asked == "WindowId") return sd_bus_message_append(reply, "i", 0);
    if (asked == "ItemIsMenu") return sd_bus_message_append(reply, "b", 1);
    return sd_bus_message_append(reply, "o", DBusMenu::kPath);
  }
  static const sd_bus_vtable kTable[];
};

// No Activate and no ContextMenu: whoever shows the item shows its menu instead.
const sd_bus_vtable StatusNotifierItem::Handlers::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Category", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("WindowId", "i", constants, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconName", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconPixmap", "a(iiay)", pixmap, 0, 0),
    SD_BUS_PROPERTY("OverlayIconName", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", pixmap, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionIconName", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", pixmap, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionMovieName", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", toolTip, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ItemIsMenu", "b", constants, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Menu", "o", constants, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL("NewIcon", "", 0),
    SD_BUS_SIGNAL("NewTitle", "", 0),
    SD_BUS_SIGNAL("NewToolTip", "", 0),
    SD_BUS_SIGNAL("NewStatus", "s", 0),
    SD_BUS_SIGNAL("NewMenu", "", 0),
    SD_BUS_VTABLE_END};

StatusNotifierItem::StatusNotifierItem(std::string identifier, std::string wellKnownName,
                                       platform::port::TrayItemSink& sink)
    : identifier_(std::move(identifier)),
      wellKnownName_(std::move(wellKnownName)),
      menu_(bus_, [&sink](std::int32_t chosen) { sink.trayMenuItemChosen(chosen); }) {
  bus_.onConnection([this] { offer(); });
  bus_.watchOwner(kWatcher, [this](const std::string& owner) { watcherChanged(owner); });
}

void StatusNotifierItem::offer() {
  // Without a handler of ours a refused name would end the connection.
  const auto whateverComes = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
  sd_bus_add_object_vtable(bus_.connection(), nullptr, kPath, kInterface, Handlers::kTable, this);
  sd_bus_request_name_async(bus_.connection(), nullptr, wellKnownName_.c_str(), 0, whateverComes, nullptr);
}

void StatusNotifierItem::watcherChanged(const std::string& owner) {
  if (owner.empty()) return platform::NSLog("There is no status bar; the item will be shown when there is one");
  const char* own = nullptr;
  const BusMessage message =
      bus_.newCall(owner.c_str(), "/StatusNotifierWatcher", kWatcher, "RegisterStatusNotifierItem");
  if (!message || sd_bus_get_unique_name(bus_.connection(), &own) < 0) return;
  sd_bus_message_append(message.get(), "s", own);
  bus_.call(message, kPatience, [](const SessionBus::Reply& reply) {
    if (!reply.succeeded) platform::NSLog("The status bar doesn't take the item: " + reply.error);
  });
}

void StatusNotifierItem::setPictures(std::vector<Bitmap> pictures) {
  pictures_ = std::move(pictures);
  sd_bus_message* made = nullptr;
  if (!bus_.connection() || sd_bus_message_new_signal(bus_.connection(), &made, kPath, kInterface, "NewIcon") < 0)
    return;
  bus_.send(BusMessage(made));
}

}  // namespace desktop
