#include "Backends/Desktop/XServer.h"

#include <QtGui/qguiapplication_platform.h>
#include <QGuiApplication>
#include <algorithm>
#include <stdexcept>

#include "Backends/Desktop/XReply.h"

namespace desktop {

namespace {

constexpr std::uint32_t kFromApplication = 1;
constexpr std::uint32_t kFromPager = 2;
constexpr std::uint32_t kLongestProperty = 1 << 16;

}  // namespace

XServer::XServer() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) throw std::runtime_error("the desktop back end needs an X server (under Wayland: XWayland)");
  connection_ = x11->connection();
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

xcb_atom_t XServer::atom(const std::string& name) {
  if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
  const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
  return atoms_[name] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<std::uint32_t> XServer::property(xcb_window_t window, const std::string& name, xcb_atom_t type) {
  const auto cookie = xcb_get_property(connection_, 0, window, atom(name), type, 0, kLongestProperty);
  const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  return {values, values + reply->value_len};
}

bool XServer::hasWindowManager() {
  const auto check = property(root_, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW);
  // The property outlives its writer; a window manager that runs answers for its own window too.
  return !check.empty() && property(check.front(), "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW) == check;
}

bool XServer::supports(const std::string& hint) {
  if (!hasWindowManager()) return false;
  const auto supported = property(root_, "_NET_SUPPORTED", XCB_ATOM_ATOM);
  return std::find(supported.begin(), supported.end(), atom(hint)) != supported.end();
}

bool XServer::hasCompositor() {
  const auto cookie = xcb_get_selection_owner(connection_, atom("_NET_WM_CM_S" + std::to_string(screen_)));
  const auto reply = owned(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

void XServer::sendToRoot(const void* event) {
  xcb_send_event(connection_, 0, root_, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 static_cast<const char*>(event));
}

void XServer::sendMessage(xcb_window_t window, const std::string& message, const std::uint32_t (&data)[5]) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(message);
  std::copy(std::begin(data), std::end(data), event.data.data32);
  sendToRoot(&event);
}

void XServer::changeState(xcb_window_t window, const std::string& state, bool on) {
  sendMessage(window, "_NET_WM_STATE", {on ? 1U : 0U, atom(state), 0, kFromApplication, 0});
}

void XServer::stack(xcb_window_t window, bool above, xcb_window_t sibling) {
  const std::uint32_t mode = above ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW;
  const std::uint32_t values[] = {sibling, mode};
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
}

void XServer::raiseAbove(xcb_window_t window, xcb_window_t top) {
  // Events are sent in full length, also those that are shorter.
  union {
    xcb_configure_request_event_t request;
    xcb_generic_event_t whole;
  } event{};
  event.request.response_type = XCB_CONFIGURE_REQUEST;
  event.request.stack_mode = XCB_STACK_MODE_ABOVE;
  event.request.parent = root_;
  event.request.window = window;
  event.request.sibling = top;
  event.request.value_mask = XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE;
  sendToRoot(&event);
}

std::vector<xcb_window_t> XServer::stacking() {
  return property(root_, "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
}

bool XServer::hasState(xcb_window_t window, const std::string& state) {
  const auto states = property(window, "_NET_WM_STATE", XCB_ATOM_ATOM);
  return std::find(states.begin(), states.end(), atom(state)) != states.end();
}

bool XServer::isMinimised(xcb_window_t window) {
  constexpr std::uint32_t kIconic = 3;
  const auto state = property(window, "WM_STATE", atom("WM_STATE"));
  if (state.empty() || state.front() != kIconic) return false;
  return hasState(window, "_NET_WM_STATE_HIDDEN") || !supports("_NET_WM_STATE_HIDDEN");
}

bool XServer::isKeptAbove(xcb_window_t window) {
  const auto types = property(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM);
  const bool isDock = std::find(types.begin(), types.end(), atom("_NET_WM_WINDOW_TYPE_DOCK")) != types.end();
  return isDock || hasState(window, "_NET_WM_STATE_ABOVE") || hasState(window, "_NET_WM_STATE_FULLSCREEN");
}

xcb_window_t XServer::makeHiddenWindow() {
  const xcb_window_t window = xcb_generate_id(connection_);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return window;
}

void XServer::destroyWindow(xcb_window_t window) {
  xcb_destroy_window(connection_, window);
  flush();
}

bool XServer::requestFrameExtents(xcb_window_t window) {
  if (!supports("_NET_REQUEST_FRAME_EXTENTS")) return false;
  sendMessage(window, "_NET_REQUEST_FRAME_EXTENTS", {});
  flush();
  return true;
}

int XServer::processOf(xcb_window_t window) {
  const auto identifier = property(window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
  return identifier.empty() ? 0 : static_cast<int>(identifier.front());
}

void XServer::activateForUser(xcb_window_t window) {
  sendMessage(window, "_NET_ACTIVE_WINDOW", {kFromPager, XCB_CURRENT_TIME, 0, 0, 0});
}

void XServer::setTransientFor(xcb_window_t window, xcb_window_t parent) {
  if (parent)
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 32, 1,
                        &parent);
  else
    xcb_delete_property(connection_, window, XCB_ATOM_WM_TRANSIENT_FOR);
}

void XServer::setClass(xcb_window_t window, const std::string& name) {
  // Instance and class, each with its terminator.
  const std::string both = name + '\0' + name + '\0';
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(both.size()), both.data());
}

void XServer::setNormalType(xcb_window_t window) {
  const xcb_atom_t normal = atom("_NET_WM_WINDOW_TYPE_NORMAL");
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1,
                      &normal);
}

void XServer::setFunctions(xcb_window_t window, bool resizable, bool minimisable) {
  constexpr std::uint32_t kHasFunctions = 1, kHasDecorations = 2;
  constexpr std::uint32_t kResize = 2, kMove = 4, kMinimise = 8, kMaximise = 16, kClose = 32;
  const std::uint32_t functions =
      kMove | kClose | (resizable ? kResize | kMaximise : 0U) | (minimisable ? kMinimise : 0U);
  const std::uint32_t hints[] = {kHasFunctions | kHasDecorations, functions, 0, 0, 0};
  const xcb_atom_t name = atom("_MOTIF_WM_HINTS");
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, name, 32, 5, hints);
}

std::optional<QRect> XServer::geometry(xcb_window_t window) {
  const auto sizeCookie = xcb_get_geometry(connection_, window);
  const auto placeCookie = xcb_translate_coordinates(connection_, window, root_, 0, 0);
  const auto size = owned(xcb_get_geometry_reply(connection_, sizeCookie, nullptr));
  const auto place = owned(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
  if (!size || !place) return std::nullopt;
  return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

xcb_window_t XServer::inputFocus() {
  const auto reply = owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

std::uint16_t XServer::pointerState() {
  const auto reply = owned(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
  return reply ? reply->mask : std::uint16_t{0};
}

bool XServer::isPointerTaken(xcb_window_t window) {
  const auto cookie = xcb_grab_pointer(connection_, 0, window, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                       XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
  xcb_ungrab_pointer(connection_, XCB_CURRENT_TIME);
  const auto reply = owned(xcb_grab_pointer_reply(connection_, cookie, nullptr));
  return reply && (reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED || reply->status == XCB_GRAB_STATUS_FROZEN);
}

bool XServer::isDown(std::uint8_t keycode) {
  const auto reply = owned(xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
  return reply && (reply->keys[keycode / 8] >> (keycode % 8) & 1);
}

}  // namespace desktop
