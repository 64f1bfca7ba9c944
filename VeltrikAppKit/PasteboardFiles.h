#pragma once

#include <string>
#include <vector>

#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/Foundation/URL.h"

namespace veltrik {

/// The locations on a pasteboard when one of them is a file's; otherwise that of the first picture on it, which is put
/// as a PNG into the folder of that name in the application's cache, named after the second. Empty when there is
/// neither or the picture can't be put there. Main thread.
std::vector<platform::URL> readFiles(const platform::NSPasteboard& pasteboard, const std::string& imageFolder);

}  // namespace veltrik
