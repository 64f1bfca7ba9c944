#pragma once

#include <filesystem>
#include <string>

#include "Platform/Foundation/Bundle.h"
#include "Programs/SampleHost/Host.h"

namespace samplehost {

/// What the bundle's Info.plist says; empty where it says nothing.
std::string versionOf(const platform::Bundle& bundle);

/// Packs the application bundle that this program runs from, as the version given, and the relauncher that is among its
/// resources. Throws std::runtime_error with a reason to be shown.
void makeUpdate(const std::string& version, const std::filesystem::path& archive);

/// Has the plug-in install the update in a later turn of the main loop, and ends the application once the relauncher
/// has been started. The host is told no outcome, so it listens for that line of the log. `host` outlives the run.
void installUpdate(Host& host, const std::string& archive);

}  // namespace samplehost
