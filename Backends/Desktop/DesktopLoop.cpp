#include "Backends/Desktop/DesktopLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "Backends/Desktop/Clock.h"

namespace desktop {

using namespace std::chrono;

/// Carries a wake from any thread into the toolkit's queue; many wakes before the next turn are one.
class DesktopLoop::Waker final : public QObject {
 public:
  explicit Waker(DesktopLoop& loop) : loop_(loop) {}

  void wake() {
    if (!posted_.exchange(true)) QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
  }

  bool event(QEvent* event) override {
    if (event->type() != QEvent::User) return QObject::event(event);
    posted_ = false;
    loop_.nextService_ = 0;
    loop_.serveForeignLoop();
    return true;
  }

 private:
  DesktopLoop& loop_;
  std::atomic<bool> posted_ = false;
};

DesktopLoop::DesktopLoop() : waker_(std::make_unique<Waker>(*this)) {
  alarm_.setSingleShot(true);
  alarm_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&alarm_, &QTimer::timeout, &alarm_, [this] { serveForeignLoop(); });
  aboutToBlock_ = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                                   waker_.get(), [this] { serveForeignLoop(); });
}

DesktopLoop::~DesktopLoop() {
  QObject::disconnect(aboutToBlock_);
}

void DesktopLoop::setSink(platform::port::LoopSink* sink) {
  sink_ = sink;
  nextService_ = 0;
}

double DesktopLoop::now() const {
  return desktop::now();
}

double DesktopLoop::wallClock() const {
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

void DesktopLoop::wait(double deadline) {
  const double limit = std::min(deadline, nextService_);
  const int outer = std::exchange(waitLevel_, QThread::currentThread()->loopLevel());
  if (limit <= now()) {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
  } else {
    arm(limit);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  }
  // Without an outer loop of the toolkit nobody else deletes what was given up in a handler. An object whose handler is
  // still on the stack belongs to an outer turn and is left alone.
  if (outer < 0) QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  waitLevel_ = outer;
  serve();
}

void DesktopLoop::serve() {
  if (!sink_) return;
  nextService_ = sink_->service();
  arm(nextService_);
}

void DesktopLoop::serveForeignLoop() {
  const int level = QThread::currentThread()->loopLevel();
  // A service may itself run a loop of the toolkit, which wants to be served in turn.
  if (level <= waitLevel_ || level <= servingLevel_) return;
  const int outer = std::exchange(servingLevel_, level);
  serve();
  servingLevel_ = outer;
}

void DesktopLoop::arm(double deadline) {
  if (!std::isfinite(deadline)) {
    alarm_.stop();
    return;
  }
  const double milliseconds = std::ceil(std::max(0.0, deadline - now()) * 1000);
  alarm_.start(static_cast<int>(std::min<double>(milliseconds, std::numeric_limits<int>::max())));
}

void DesktopLoop::wake() noexcept {
  waker_->wake();
}

std::uint64_t DesktopLoop::watch(int descriptor, std::function<void()> ready) {
  auto notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  // A copy of the callback is called, since it may unwatch itself.
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this, ready = std::move(ready)] {
    const auto call = ready;
    call();
    serveForeignLoop();
  });
  watches_.emplace(++lastWatch_, std::move(notifier));
  return lastWatch_;
}

void DesktopLoop::unwatch(std::uint64_t watch) {
  const auto found = watches_.find(watch);
  if (found == watches_.end()) return;
  found->second->setEnabled(false);
  found->second.release()->deleteLater();
  watches_.erase(found);
}

}  // namespace desktop
