#include "Backends/Desktop/SelectionReader.h"

#include <poll.h>

#include <algorithm>

namespace desktop {

using namespace std::chrono_literals;

namespace {

/// An application that is alive tells at once what it offers; a picture has to be made first.
constexpr auto kPatienceForTargets = 1s;
constexpr auto kPatienceForContents = 4s;
/// One that didn't answer isn't asked again for so long: a paste asks several questions.
constexpr auto kPassedBy = 3s;
/// What the largest picture that is read would need, with a header.
constexpr std::size_t kMostBytes = 260'000'000;
constexpr std::uint32_t kWordsAtOnce = 1 << 18;
constexpr std::uint8_t kSentByClient = 0x80;
const std::string kProperty = "VELTRIK_SELECTION_";
constexpr unsigned kProperties = 16;

bool isEndOf(const xcb_generic_event_t& event, xcb_window_t window) {
  return (event.response_type & ~kSentByClient) == XCB_DESTROY_NOTIFY &&
         reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == window;
}

}  // namespace

void SelectionReader::connect() {
  if (connection_) return;
  connection_ = xcb_connect(nullptr, nullptr);
  const xcb_setup_t* setup = xcb_get_setup(connection_);
  if (!setup) return;
  window_ = xcb_generate_id(connection_);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, xcb_setup_roots_iterator(setup).data->root, -10, -10, 1,
                    1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

SelectionReader::~SelectionReader() {
  if (connection_) xcb_disconnect(connection_);
}

xcb_atom_t SelectionReader::atom(const std::string& name) {
  const auto reply = owned(xcb_intern_atom_reply(
      connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string SelectionReader::nameOf(xcb_atom_t atom) {
  const auto reply = owned(xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
  if (!reply) return {};
  return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

xcb_window_t SelectionReader::ownerOf(xcb_atom_t selection) {
  const auto reply =
      owned(xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, selection), nullptr));
  return reply ? reply->owner : xcb_window_t{XCB_NONE};
}

bool SelectionReader::isSilent(xcb_window_t owner) {
  while (nextEvent(Clock::now())) {
  }
  return owner == silentOwner_ && Clock::now() - silentSince_ < kPassedBy;
}

std::vector<std::string> SelectionReader::targets(const std::string& selection) {
  connect();
  const auto reply = convert(atom(selection), atom("TARGETS"), XCB_CURRENT_TIME, kPatienceForTargets);
  if (!reply || reply->type != XCB_ATOM_ATOM) return {};
  std::vector<std::string> names;
  constexpr std::size_t kMostTargets = 256;
  for (std::size_t at = 0; at + 4 <= reply->bytes.size() && names.size() < kMostTargets; at += 4) {
    xcb_atom_t each = XCB_ATOM_NONE;
    std::copy_n(reply->bytes.data() + at, 4, reinterpret_cast<char*>(&each));
    if (std::string name = nameOf(each); !name.empty()) names.push_back(std::move(name));
  }
  return names;
}

std::optional<std::string> SelectionReader::read(const std::string& selection, const std::string& target,
                                                 xcb_timestamp_t time) {
  connect();
  auto reply = convert(atom(selection), atom(target), time, kPatienceForContents);
  if (!reply) return std::nullopt;
  return std::move(reply->bytes);
}

std::optional<SelectionReader::Reply> SelectionReader::convert(xcb_atom_t selection, xcb_atom_t target,
                                                               xcb_timestamp_t time, Clock::duration patience) {
  const xcb_window_t owner = ownerOf(selection);
  if (owner == XCB_NONE || isSilent(owner)) return std::nullopt;
  // To hear at once when it dies.
  const std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_, owner, XCB_CW_EVENT_MASK, &structure);
  // Not the one before: an owner that was given up may still write there.
  property_ = atom(kProperty + std::to_string(++questions_ % kProperties));
  xcb_delete_property(connection_, window_, property_);
  xcb_convert_selection(connection_, window_, selection, target, property_, time);
  xcb_flush(connection_);
  std::optional<Reply> reply;
  if (waitForNotice(selection, target, owner, patience)) {
    reply = takeProperty();
    if (reply && reply->type == atom("INCR")) reply = takeIncrements(owner);
  }
  if (owner != silentOwner_) {
    const std::uint32_t nothing = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_, owner, XCB_CW_EVENT_MASK, &nothing);
    xcb_flush(connection_);
  }
  return reply;
}

bool SelectionReader::waitForNotice(xcb_atom_t selection, xcb_atom_t target, xcb_window_t owner,
                                    Clock::duration patience) {
  const auto deadline = Clock::now() + patience;
  while (const Event event = nextEvent(deadline)) {
    if (isEndOf(*event, owner)) return false;
    if ((event->response_type & ~kSentByClient) != XCB_SELECTION_NOTIFY) continue;
    const auto& notice = *reinterpret_cast<const xcb_selection_notify_event_t*>(event.get());
    if (notice.selection != selection) continue;
    // A late answer to an earlier question is none to this one. A drag source of Qt refuses without saying what.
    if (notice.target == target) return notice.property != XCB_ATOM_NONE;
    if (notice.target == XCB_ATOM_NONE) return false;
  }
  silentOwner_ = owner;
  silentSince_ = Clock::now();
  return false;
}

/// The property's value, which is deleted, so that the owner may go on.
std::optional<SelectionReader::Reply> SelectionReader::takeProperty() {
  Reply result;
  for (std::uint32_t offset = 0;; offset += kWordsAtOnce) {
    const auto reply = owned(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, window_, property_, XCB_GET_PROPERTY_TYPE_ANY, offset, kWordsAtOnce),
        nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
    result.type = reply->type;
    result.bytes.append(static_cast<const char*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    if (reply->bytes_after == 0) break;
    if (result.bytes.size() > kMostBytes) return std::nullopt;
  }
  xcb_delete_property(connection_, window_, property_);
  xcb_flush(connection_);
  return result;
}

std::optional<SelectionReader::Reply> SelectionReader::takeIncrements(xcb_window_t owner) {
  Reply whole;
  while (waitForIncrement(owner)) {
    const auto part = takeProperty();
    if (!part) return std::nullopt;
    whole.type = part->type;
    if (part->bytes.empty()) return whole;  // the end
    if (part->bytes.size() > kMostBytes - whole.bytes.size()) return std::nullopt;
    whole.bytes += part->bytes;
  }
  return std::nullopt;
}

bool SelectionReader::waitForIncrement(xcb_window_t owner) {
  const auto deadline = Clock::now() + kPatienceForContents;
  while (const Event event = nextEvent(deadline)) {
    if (isEndOf(*event, owner)) return false;
    if ((event->response_type & ~kSentByClient) != XCB_PROPERTY_NOTIFY) continue;
    const auto& change = *reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
    if (change.window == window_ && change.atom == property_ && change.state == XCB_PROPERTY_NEW_VALUE) return true;
  }
  silentOwner_ = owner;
  silentSince_ = Clock::now();
  return false;
}

SelectionReader::Event SelectionReader::nextEvent(Clock::time_point deadline) {
  for (;;) {
    if (Event event{xcb_poll_for_event(connection_)}) {
      // Its number may be another's from now on.
      if (isEndOf(*event, silentOwner_)) silentOwner_ = XCB_NONE;
      return event;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || xcb_connection_has_error(connection_)) return nullptr;
    pollfd polled{xcb_get_file_descriptor(connection_), POLLIN, 0};
    poll(&polled, 1, static_cast<int>(left.count()));
  }
}

}  // namespace desktop
