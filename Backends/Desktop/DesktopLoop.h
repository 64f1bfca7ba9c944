#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <map>
#include <memory>

#include "Platform/Port/LoopDriver.h"

class QSocketNotifier;

namespace desktop {

/// The toolkit's event loop as the run loop's driver. The sink is also served while a foreign loop of the toolkit runs
/// (a menu, a dialog): before that loop goes to sleep, at the sink's deadlines and after wakes.
class DesktopLoop final : public platform::port::LoopDriver {
 public:
  DesktopLoop();
  ~DesktopLoop() override;
  DesktopLoop(const DesktopLoop&) = delete;
  DesktopLoop& operator=(const DesktopLoop&) = delete;

  void setSink(platform::port::LoopSink* sink) override;
  double now() const override;
  double wallClock() const override;
  void wait(double deadline) override;
  void wake() noexcept override;
  std::uint64_t watch(int descriptor, std::function<void()> ready) override;
  void unwatch(std::uint64_t watch) override;

 private:
  class Waker;

  void serve();
  void serveForeignLoop();
  void arm(double deadline);

  platform::port::LoopSink* sink_ = nullptr;
  double nextService_ = 0;
  int waitLevel_ = -1;     ///< how many loops of the toolkit ran when our innermost wait began; -1: none waits
  int servingLevel_ = -1;  ///< how many loops of the toolkit ran when a foreign one's service began; -1: none is served
  QTimer alarm_;
  std::unique_ptr<Waker> waker_;
  QMetaObject::Connection aboutToBlock_;
  std::uint64_t lastWatch_ = 0;
  std::map<std::uint64_t, std::unique_ptr<QSocketNotifier>> watches_;
};

}  // namespace desktop
