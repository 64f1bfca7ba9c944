#include "Programs/SampleHost/PluginBundle.h"

#include <fmt/format.h>

#include <stdexcept>

#include "Platform/Foundation/Bundle.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDiagnosis.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitEntry.h"

namespace samplehost {

std::filesystem::path defaultBundlePath() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path().parent_path() / "lib" / "VeltrikAppKit.bundle";
}

std::shared_ptr<veltrik::VeltrikAppKitProtocol> loadPlugin(const std::filesystem::path& path) {
  const auto bundle = platform::Bundle::open(path);
  if (!bundle) throw std::runtime_error(fmt::format("{}: not a bundle", path.string()));
  std::string reason;
  if (!bundle->load(&reason)) throw std::runtime_error(fmt::format("{}: {}", path.string(), reason));
  auto appKit = veltrik::createVeltrikAppKit(*bundle);
  if (!appKit) throw std::runtime_error(fmt::format("{}: built for another version of the host", path.string()));
  return appKit;
}

platform::Dictionary attachedValues(const platform::NSWindow& window) {
  for (const auto& bundle : platform::Bundle::allBundles()) {
    if (bundle->bundleIdentifier() != veltrik::kVeltrikAppKitBundleIdentifier || !bundle->isLoaded()) continue;
    const auto read = reinterpret_cast<veltrik::VeltrikAppKitWindowValuesFunction*>(
        bundle->symbol(veltrik::kVeltrikAppKitWindowValuesSymbol));
    platform::Dictionary values;
    if (read) read(window, &values);
    return values;
  }
  return {};
}

}  // namespace samplehost
