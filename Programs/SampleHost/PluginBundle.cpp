#include "Programs/SampleHost/PluginBundle.h"

#include <fmt/format.h>

#include <stdexcept>

#include "Platform/Foundation/Bundle.h"
#include "VeltrikAppKit/Protocols/CFDateGetIdleTimeInterval.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDiagnosis.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitEntry.h"

namespace samplehost {

namespace {

/// A C function of the loaded plug-in; null before it was loaded.
template <class Function>
Function* pluginFunction(const char* symbol) {
  for (const auto& bundle : platform::Bundle::allBundles())
    if (bundle->isLoaded() && bundle->bundleIdentifier() == veltrik::kVeltrikAppKitBundleIdentifier)
      return reinterpret_cast<Function*>(bundle->symbol(symbol));
  return nullptr;
}

}  // namespace

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

std::shared_ptr<platform::NSView> makeSearchField(const veltrik::SearchFieldCallbacks& callbacks) {
  const auto make =
      pluginFunction<veltrik::VeltrikAppKitMakeSearchFieldFunction>(veltrik::kVeltrikAppKitMakeSearchFieldSymbol);
  if (!make) throw std::runtime_error("the plug-in has no search field");
  std::shared_ptr<platform::NSView> made;
  make(callbacks, &made);
  return made;
}

double idleTimeInterval() {
  const auto read =
      pluginFunction<veltrik::CFDateGetIdleTimeIntervalFunction>(veltrik::kCFDateGetIdleTimeIntervalSymbol);
  return read ? read() : 0;
}

platform::Dictionary attachedValues(const platform::NSWindow& window) {
  const auto read =
      pluginFunction<veltrik::VeltrikAppKitWindowValuesFunction>(veltrik::kVeltrikAppKitWindowValuesSymbol);
  platform::Dictionary values;
  if (read) read(window, &values);
  return values;
}

}  // namespace samplehost
