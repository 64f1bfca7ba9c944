// A process with a notification centre on the real desktop, driven by lines on its standard input for bus_test.py:
//   observe NAME          from now on "got NAME PAYLOAD" is written for each that comes (JSON)
//   count NAME            as observe, but only counted: each carries "number", one more than the one before
//   post NAME PAYLOAD     posts a JSON object
//   report                writes "report COUNT DISORDER LONGEST": milliseconds that the main thread was at work before
//   a timer had its turn
// It ends with its standard input.

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "Backends/Desktop/DesktopBackend.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/JSON.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Timer.h"

namespace {

using platform::Dictionary;
using platform::DistributedNotificationCenter;

class Peer {
 public:
  void run() {
    constexpr double kForever = std::numeric_limits<double>::infinity();
    platform::port::LoopDriver& driver = platform::Session::current().backend().loop();
    driver.watch(STDIN_FILENO, [this] { read(); });
    platform::RunLoop& loop = platform::RunLoop::main();
    loop.runUntil([this] { return ended_; }, kForever);
  }

 private:
  void read() {
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    ended_ = count <= 0;
    if (count > 0) input_.append(buffer.data(), static_cast<std::size_t>(count));
    for (auto end = input_.find('\n'); end != std::string::npos; end = input_.find('\n')) {
      const std::string line = input_.substr(0, end);
      input_.erase(0, end + 1);
      obey(line);
    }
  }

  void obey(const std::string& line) {
    std::istringstream words(line);
    std::string verb, name, payload;
    words >> verb >> name;
    std::getline(words >> std::ws, payload);
    DistributedNotificationCenter& center = DistributedNotificationCenter::defaultCenter();
    if (verb == "observe")
      add(name, [](const std::string& got, const Dictionary& info) { say("got " + got + " " + jsonText(info)); });
    else if (verb == "count")
      add(name, [this](const std::string&, const Dictionary& info) { count(info); });
    else if (verb == "post")
      center.post(name, "", *platform::valueFromJSON(payload)->get<Dictionary>(),
                  DistributedNotificationCenter::kDeliverImmediately);
    else if (verb == "report")
      say("report " + std::to_string(counted_) + " " + std::to_string(disorder_) + " " +
          std::to_string(longest_ * 1000));
  }

  void add(const std::string& name, DistributedNotificationCenter::Handler handler) {
    DistributedNotificationCenter::defaultCenter().addObserver(
        this, name, "", DistributedNotificationCenter::kSuspensionDeliverImmediately, std::move(handler));
    say("ready");
  }

  void count(const Dictionary& info) {
    const std::int64_t number = *info.at("number").get<std::int64_t>();
    disorder_ += number != last_ + 1;
    last_ = number;
    if (++counted_ == 1)
      beat_ = platform::Timer::scheduledTimer(kBeat, true, [this, last = timeAtWork()](platform::Timer&) mutable {
        const double now = timeAtWork();
        longest_ = std::max(longest_, now - last);
        last = now;
      });
  }

  /// The main thread's own, so that other programs on the machine don't count.
  static double timeAtWork() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  }

  static void say(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
  }

  static constexpr double kBeat = 0.001;
  std::string input_;
  bool ended_ = false;
  std::int64_t counted_ = 0, last_ = -1, disorder_ = 0;
  double longest_ = 0;
  std::shared_ptr<platform::Timer> beat_;
};

/// Still there at exit, after the toolkit's own globals: the process ends well all the same.
std::unique_ptr<desktop::DesktopBackend> backend;

}  // namespace

int main() {
  backend = std::make_unique<desktop::DesktopBackend>();
  platform::Session session(*backend);
  Peer().run();
}
