#include "Tests/Desktop/Machine.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Backends/Desktop/DesktopBackend.h"
#include "Backends/Headless/HeadlessBackend.h"

namespace desktop_tests {

using platform::Rect;

bool Machine::spin(const std::function<bool()>& done) {
  platform::port::LoopDriver& loop = backend().loop();
  constexpr double kLimit = 5, kStep = 0.02;
  for (const double end = loop.now() + kLimit; loop.now() < end;) {
    if (done()) return true;
    loop.wait(loop.now() + kStep);
  }
  return done();
}

namespace {

class DesktopMachine final : public Machine {
 public:
  platform::port::Backend& backend() override { return backend_; }

  Rect frameOf(std::uint64_t window) override {
    // The screen's height comes from the server too, so that a wrong flip doesn't cancel itself out.
    std::istringstream answer(
        outside(fmt::format("xwininfo -id {} | awk '/Absolute upper-left/{{print $NF}} /Width:|Height:/{{print $NF}}'; "
                            "xwininfo -root | awk '/Height:/{{print $NF}}'",
                            window)));
    double x = 0, y = 0, width = 0, height = 0, screen = 0;
    answer >> x >> y >> width >> height >> screen;
    return {x / scale(), (screen - y - height) / scale(), width / scale(), height / scale()};
  }
  bool isAbove(std::uint64_t upper, std::uint64_t lower) override {
    const std::string order = outside("xprop -root -notype _NET_CLIENT_LIST_STACKING");
    const auto high = order.find(fmt::format("{:#x}", upper)), low = order.find(fmt::format("{:#x}", lower));
    return high != std::string::npos && low != std::string::npos && high > low;
  }
  bool staysAbove(std::uint64_t window) override {
    return property(window, "_NET_WM_STATE").find("STATE_ABOVE") != std::string::npos;
  }
  double opacityOf(std::uint64_t window) override {
    const std::string value = property(window, "_NET_WM_WINDOW_OPACITY 32c");
    const auto equals = value.find("= ");
    return equals == std::string::npos ? 1 : std::stod(value.substr(equals + 2)) / 0xFFFFFFFF;
  }
  bool isMinimised(std::uint64_t window) override {
    return property(window, "WM_STATE").find("Iconic") != std::string::npos;
  }
  std::string titleOf(std::uint64_t window) override { return property(window, "_NET_WM_NAME"); }
  void copyElsewhere(const std::string& text) override {
    outside(fmt::format("printf '%s' '{}' | xclip -selection clipboard -i >/dev/null 2>&1", text));
  }
  std::string pasteElsewhere() override { return outside("xclip -selection clipboard -o"); }
  void postElsewhere(const std::string& name, const platform::Dictionary& userInfo) override {
    std::string entries;
    for (const auto& [key, value] : userInfo) entries += fmt::format(" '{}' s '{}'", key, *value.get<std::string>());
    outside(
        fmt::format("busctl --user emit /com/brenholt/VeltrikAppKit/Notifications "
                    "com.brenholt.VeltrikAppKit.Notifications Posted 'ssa{{sv}}' '{}' '' {}{}",
                    name, userInfo.size(), entries));
  }

 private:
  static std::string property(std::uint64_t window, const std::string& name) {
    const auto space = name.find(' ');
    const std::string format = space == std::string::npos ? "" : " " + name.substr(space + 1);
    const std::string plain = name.substr(0, space);
    return outside(fmt::format("xprop -id {}{}{} {}", window, format.empty() ? "" : " -f " + plain, format, plain));
  }

  desktop::DesktopBackend backend_;
};

class HeadlessMachine final : public Machine {
 public:
  platform::port::Backend& backend() override { return backend_; }
  Rect frameOf(std::uint64_t window) override { return surface(window).state().frame; }
  bool isAbove(std::uint64_t upper, std::uint64_t lower) override {
    const auto stack = backend_.windows().stack();
    return std::find(stack.begin(), stack.end(), &surface(upper)) >
           std::find(stack.begin(), stack.end(), &surface(lower));
  }
  bool staysAbove(std::uint64_t window) override { return surface(window).effectiveLevel() >= 3; }
  double opacityOf(std::uint64_t window) override { return surface(window).state().alpha; }
  bool isMinimised(std::uint64_t window) override { return surface(window).isMinimised(); }
  std::string titleOf(std::uint64_t window) override { return surface(window).state().title; }
  void copyElsewhere(const std::string& text) override {
    backend_.clipboard().setContents({{"text/plain;charset=utf-8", text}});
  }
  std::string pasteElsewhere() override { return backend_.clipboard().contents().at("text/plain;charset=utf-8"); }
  void postElsewhere(const std::string& name, const platform::Dictionary& userInfo) override {
    backend_.broadcast()->receiveFromOtherProcess({name, "", userInfo});
  }

 private:
  headless::HeadlessSurface& surface(std::uint64_t window) { return *backend_.windows().surfaceWithHandle(window); }

  headless::HeadlessBackend backend_;
};

std::unique_ptr<Machine> theDesktop;

/// The toolkit must be gone before the process's globals are.
class Ending final : public testing::Environment {
 public:
  void TearDown() override { theDesktop.reset(); }
};

[[maybe_unused]] const testing::Environment* const ending = testing::AddGlobalTestEnvironment(new Ending);

struct Closer {
  void operator()(FILE* pipe) const { status = pclose(pipe); }
  static inline int status = 0;
};

}  // namespace

Machine& desktopMachine() {
  if (!theDesktop) theDesktop = std::make_unique<DesktopMachine>();
  return *theDesktop;
}

std::unique_ptr<Machine> makeHeadlessMachine() {
  return std::make_unique<HeadlessMachine>();
}

double scale() {
  const char* factor = std::getenv("QT_SCALE_FACTOR");
  return factor ? std::stod(factor) : 1;
}

std::string rootPixels(const platform::Point& point) {
  const double height = desktopMachine().backend().windows().screens().front().frame.height;
  return fmt::format("{:.0f} {:.0f}", point.x * scale(), (height - point.y) * scale());
}

std::string outside(const std::string& command) {
  platform::port::LoopDriver& loop = desktopMachine().backend().loop();
  std::unique_ptr<FILE, Closer> pipe(popen(("exec 2>&1; " + command).c_str(), "r"));
  const int descriptor = fileno(pipe.get());
  fcntl(descriptor, F_SETFL, O_NONBLOCK);
  std::string output;
  bool ended = false;
  const auto watch = loop.watch(descriptor, [&] {
    std::array<char, 4096> buffer;
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) output.append(buffer.data(), static_cast<std::size_t>(count));
    ended = count == 0;
  });
  for (const double end = loop.now() + 10; !ended && loop.now() < end;) loop.wait(end);
  loop.unwatch(watch);
  EXPECT_TRUE(ended) << command << " takes too long";
  pipe.reset();
  EXPECT_EQ(Closer::status, 0) << command << ": " << output;
  while (output.ends_with('\n')) output.pop_back();
  return output;
}

}  // namespace desktop_tests
