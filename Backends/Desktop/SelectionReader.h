#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Backends/Desktop/XReply.h"

namespace desktop {

/// Asks the owner of a selection (ICCCM 2) for what it offers, over a connection of its own, with patience and memory
/// bounded: an owner that doesn't answer, answers for ever or dies while it does costs a few seconds and no more. Main
/// thread; never for a selection that this process owns, which could not answer meanwhile.
class SelectionReader {
 public:
  SelectionReader() = default;
  ~SelectionReader();
  SelectionReader(const SelectionReader&) = delete;
  SelectionReader& operator=(const SelectionReader&) = delete;

  /// The names of what the owner offers; empty when there is no owner, or it doesn't answer.
  std::vector<std::string> targets(const std::string& selection);
  /// The bytes of one of them. `time` is that of the event that leads to it, as drag sources want it; 0 for now.
  std::optional<std::string> read(const std::string& selection, const std::string& target, xcb_timestamp_t time);

 private:
  using Clock = std::chrono::steady_clock;
  struct Reply {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::string bytes;
  };

  /// To the display that DISPLAY names, at the first question.
  void connect();
  xcb_atom_t atom(const std::string& name);
  std::string nameOf(xcb_atom_t atom);
  xcb_window_t ownerOf(xcb_atom_t selection);
  std::optional<Reply> convert(xcb_atom_t selection, xcb_atom_t target, xcb_timestamp_t time, Clock::duration patience);
  bool waitForNotice(xcb_atom_t selection, xcb_atom_t target, xcb_window_t owner, Clock::duration patience);
  std::optional<Reply> takeProperty();
  std::optional<Reply> takeIncrements(xcb_window_t owner);
  bool waitForIncrement(xcb_window_t owner);
  /// The next event of the connection; null when none comes until then or the server has gone.
  using Event = XReply<xcb_generic_event_t>;
  Event nextEvent(Clock::time_point deadline);
  bool isSilent(xcb_window_t owner);

  xcb_connection_t* connection_ = nullptr;
  xcb_window_t window_ = XCB_NONE;
  xcb_atom_t property_ = XCB_ATOM_NONE;  ///< where the answer to the present question goes
  unsigned questions_ = 0;
  xcb_window_t silentOwner_ = XCB_NONE;  ///< left a question without an answer
  Clock::time_point silentSince_;
};

}  // namespace desktop
