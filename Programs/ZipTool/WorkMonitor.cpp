#include "Programs/ZipTool/WorkMonitor.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace ziptool {
namespace {

constexpr int kRedrawMilliseconds = 100;
constexpr int kBarWidth = 40;
constexpr std::string_view kWipeLine = "\r\x1b[K";

void writeToTerminal(std::string_view text) {
  // A terminal that has gone away is no reason to stop the work.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

sigset_t interruptingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

WorkMonitor::Descriptor::Descriptor(int number) : number_(number) {
  if (number_ < 0) throw std::system_error(errno, std::generic_category(), "cannot watch for signals");
}

WorkMonitor::Descriptor::~Descriptor() {
  ::close(number_);
}

WorkMonitor::WorkMonitor(platform::Progress& progress, std::string_view title)
    : progress_(progress),
      title_(title),
      onTerminal_(::isatty(STDERR_FILENO) == 1),
      signals_(interruptingSignals()),
      signalDescriptor_(::signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK)),
      stopDescriptor_(::eventfd(0, EFD_CLOEXEC)) {
  // Blocked before the watcher starts, so that it inherits the mask and only the descriptor gets the signals.
  pthread_sigmask(SIG_BLOCK, &signals_, &previousMask_);
  watcher_ = std::thread([this] { watch(); });
}

WorkMonitor::~WorkMonitor() {
  const std::uint64_t stop = 1;
  [[maybe_unused]] const auto written = ::write(stopDescriptor_.number(), &stop, sizeof stop);
  watcher_.join();
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

void WorkMonitor::watch() {
  pollfd watched[] = {{signalDescriptor_.number(), POLLIN, 0}, {stopDescriptor_.number(), POLLIN, 0}};
  while ((watched[1].revents & POLLIN) == 0) {
    if (onTerminal_) draw();
    ::poll(watched, std::size(watched), onTerminal_ ? kRedrawMilliseconds : -1);
    signalfd_siginfo received;
    if (::read(signalDescriptor_.number(), &received, sizeof received) == sizeof received) progress_.cancel();
  }
  if (!onTerminal_) return;
  draw();
  writeToTerminal(kWipeLine);
}

void WorkMonitor::draw() const {
  const double fraction = std::clamp(progress_.fractionCompleted(), 0.0, 1.0);
  const auto filled = static_cast<std::size_t>(fraction * kBarWidth);
  writeToTerminal(fmt::format("\r{} [{:#<{}}{: <{}}] {:3}%", title_, "", filled, "", kBarWidth - filled,
                              static_cast<int>(fraction * 100)));
}

}  // namespace ziptool
