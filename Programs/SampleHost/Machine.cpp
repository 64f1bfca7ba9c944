#include "Programs/SampleHost/Machine.h"

#include <fmt/format.h>

#include <array>
#include <stdexcept>
#include <string_view>

#ifdef WITH_DESKTOP
#include "Backends/Desktop/DesktopBackend.h"
#endif

namespace samplehost {

namespace {

/// A back end that this program was built with.
struct BackendEntry {
  std::string_view name;
  /// Throws std::runtime_error with a reason where it can't run.
  std::unique_ptr<platform::port::Backend> (*make)();
  /// Whether it may be chosen without being asked for.
  bool automatic;
};

template <class Made>
std::unique_ptr<platform::port::Backend> make() {
  return std::make_unique<Made>();
}

/// In the order in which they are preferred.
constexpr std::array kEntries = {
#ifdef WITH_DESKTOP
    BackendEntry{"desktop", make<desktop::DesktopBackend>, true},
#endif
    BackendEntry{"headless", make<headless::HeadlessBackend>, false},
};

std::string names() {
  std::string result;
  for (const BackendEntry& entry : kEntries) result += fmt::format("{}{}", result.empty() ? "" : ", ", entry.name);
  return result;
}

std::unique_ptr<platform::port::Backend> makeNamed(const std::string& name) {
  for (const BackendEntry& entry : kEntries)
    if (entry.name == name) return entry.make();
  throw std::runtime_error(fmt::format("no back end is called \"{}\"; there are: {}", name, names()));
}

std::unique_ptr<platform::port::Backend> makeFirstUsable() {
  std::string reasons;
  for (const BackendEntry& entry : kEntries) {
    if (!entry.automatic) continue;
    try {
      return entry.make();
    } catch (const std::runtime_error& problem) {
      reasons += fmt::format("back end \"{}\" can't run here ({}); ", entry.name, problem.what());
    }
  }
  throw std::runtime_error(fmt::format("{}choose one with --backend: {}", reasons, names()));
}

}  // namespace

Machine makeMachine(const std::optional<std::string>& name) {
  Machine machine;
  machine.backend = name ? makeNamed(*name) : makeFirstUsable();
  machine.headless = dynamic_cast<headless::HeadlessBackend*>(machine.backend.get());
  return machine;
}

}  // namespace samplehost
