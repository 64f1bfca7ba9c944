#include "Backends/Desktop/IdleMonitor.h"

#include <algorithm>

namespace desktop {

namespace {

using std::chrono::steady_clock;

constexpr std::uint64_t kPatienceMicroseconds = 25'000;
constexpr std::chrono::seconds kFirstQuiet{2}, kLongestQuiet{64};

}  // namespace

IdleMonitor::IdleMonitor(SessionBus& bus, const Place& place) : place_(place), quiet_(kFirstQuiet) {
  bus.watchOwner(place.name, [this](const std::string& owner) {
    owner_ = owner;
    own_.reset();
    quietUntil_ = {};
    quiet_ = kFirstQuiet;
  });
}

std::optional<std::uint64_t> IdleMonitor::idleMilliseconds() {
  if (owner_.empty() || steady_clock::now() < quietUntil_) return std::nullopt;
  const auto answer = ask();
  if (answer) {
    quiet_ = kFirstQuiet;
  } else {
    own_.reset();
    quietUntil_ = steady_clock::now() + quiet_;
    quiet_ = std::min(2 * quiet_, kLongestQuiet);
  }
  return answer;
}

std::optional<std::uint64_t> IdleMonitor::ask() {
  if (!own_) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return std::nullopt;
    own_.reset(opened);
    sd_bus_set_exit_on_disconnect(opened, 0);
  }
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_method_call(own_.get(), &made, owner_.c_str(), place_.path, place_.interface, place_.member) <
      0)
    return std::nullopt;
  const BusMessage question(made);
  sd_bus_message* answered = nullptr;
  if (sd_bus_call(own_.get(), question.get(), kPatienceMicroseconds, nullptr, &answered) < 0) return std::nullopt;
  const BusMessage answer(answered);
  std::uint64_t wide = 0;
  std::uint32_t narrow = 0;
  const int read =
      place_.isWide ? sd_bus_message_read(answered, "t", &wide) : sd_bus_message_read(answered, "u", &narrow);
  return read > 0 ? std::optional(place_.isWide ? wide : std::uint64_t{narrow}) : std::nullopt;
}

}  // namespace desktop
