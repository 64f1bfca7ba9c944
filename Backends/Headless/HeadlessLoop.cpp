#include "Backends/Headless/HeadlessLoop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace headless {

namespace {

// More turns than any test needs; blocks that post one another for ever end here.
constexpr int kMaxTurns = 1'000'000;

}  // namespace

HeadlessLoop::HeadlessLoop() : wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wakeDescriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

HeadlessLoop::~HeadlessLoop() {
  close(wakeDescriptor_);
}

void HeadlessLoop::wake() noexcept {
  const std::uint64_t one = 1;
  // It only fails when the counter is full, and then a wake is pending anyway.
  [[maybe_unused]] const ssize_t written = write(wakeDescriptor_, &one, sizeof one);
}

std::uint64_t HeadlessLoop::watch(int descriptor, std::function<void()> ready) {
  watches_.push_back({++lastWatch_, descriptor, std::move(ready)});
  return lastWatch_;
}

void HeadlessLoop::unwatch(std::uint64_t watch) {
  std::erase_if(watches_, [watch](const Watch& each) { return each.id == watch; });
}

void HeadlessLoop::wait(double deadline) {
  // Asked first, as in serviceAll: a worker that goes idle meanwhile has left a wake behind.
  const bool busy = workersAtWork();
  if (deliverSomething() || deadline <= now_) return;
  if (busy || !watches_.empty()) return waitInRealTime(deadline);
  if (std::isinf(deadline)) throw std::runtime_error("headless loop: an endless wait for something that can't come");
  now_ = deadline;
  service();
}

void HeadlessLoop::advance(double seconds) {
  const double end = now_ + seconds;
  for (double next = serviceAll(); next <= end; next = serviceAll()) now_ = std::max(now_, next);
  now_ = std::max(now_, end);
}

void HeadlessLoop::settle() {
  serviceAll();
}

double HeadlessLoop::serviceAll() {
  for (int turn = 0; turn < kMaxTurns; ++turn) {
    // Asked first: what a worker posted before it went idle is then seen by the service below.
    const bool busy = workersAtWork();
    const double next = service();
    if (deliverSomething(!drivenFromOutside_) || next <= now_) continue;
    if (!busy) return next;
    if (workersAtWork()) waitInRealTime(std::numeric_limits<double>::infinity());
  }
  throw std::runtime_error("headless loop: the application doesn't come to rest");
}

double HeadlessLoop::service() {
  return sink_ ? sink_->service() : std::numeric_limits<double>::infinity();
}

bool HeadlessLoop::deliverSomething(bool fromWatched) {
  if (!deliveries_.empty()) {
    const auto delivery = std::move(deliveries_.front());
    deliveries_.pop_front();
    delivery();
    service();
    return true;
  }
  if (deliverReady(0, fromWatched)) return true;
  if (!painter_ || !painter_()) return false;
  service();
  return true;
}

bool HeadlessLoop::deliverReady(double seconds, bool fromWatched) {
  std::vector<pollfd> polled{{wakeDescriptor_, POLLIN, 0}};
  std::vector<std::uint64_t> ids{0};
  if (fromWatched) {
    for (const Watch& each : watches_) {
      polled.push_back({each.descriptor, POLLIN, 0});
      ids.push_back(each.id);
    }
  }
  const int limit = std::isinf(seconds) ? -1 : static_cast<int>(std::ceil(seconds * 1000));
  if (poll(polled.data(), polled.size(), limit) <= 0) return false;
  if (polled.front().revents != 0) {
    std::uint64_t wakes = 0;
    [[maybe_unused]] const ssize_t got = read(wakeDescriptor_, &wakes, sizeof wakes);
    service();
  }
  for (std::size_t i = 1; i < polled.size(); ++i)
    if (polled[i].revents != 0) callReady(ids[i]);
  return true;
}

void HeadlessLoop::callReady(std::uint64_t id) {
  // One that was called before may have ended this watch.
  const auto found = std::ranges::find(watches_, id, &Watch::id);
  if (found == watches_.end()) return;
  const auto ready = found->ready;
  ready();
  service();
}

void HeadlessLoop::waitInRealTime(double deadline) {
  const bool busy = workersAtWork();
  if (drivenFromOutside_ && !busy) {
    deliverReady(std::numeric_limits<double>::infinity());
    return;
  }
  if (deliverReady(busy ? kSilence : std::min(deadline - now_, kSilence))) return;
  if (busy || deadline - now_ > kSilence) throw std::runtime_error("headless loop: nothing came for ten seconds");
  now_ = std::max(now_, deadline);
  service();
}

}  // namespace headless
