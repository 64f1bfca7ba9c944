#include "VeltrikAppKit/PasteboardFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <optional>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/PNG.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/UserDirectories.h"

namespace veltrik {

using platform::FileManager;
using platform::URL;

namespace {

URL imageLocation(const std::string& folder) {
  const auto main = platform::Bundle::main();
  const auto seconds = static_cast<std::int64_t>(platform::RunLoop::main().wallClock());
  return platform::cachesDirectory()
      .appendingPathComponent(main ? main->bundleIdentifier() : "")
      .appendingPathComponent(folder)
      .appendingPathComponent(fmt::format("Image_{}.png", seconds))
      .standardized();
}

void createFile(const FileManager& files, platform::DataView bytes, const URL& url) {
  try {
    files.writeAtomically(bytes, url);
  } catch (const platform::CocoaError&) {
    // Whoever gets the location finds no file there, never a part of one.
  }
}

std::optional<URL> writeImage(const platform::NSImage& image, const std::string& folder) {
  const auto bitmap = image.bestRepresentation(1);
  const auto png = bitmap ? platform::pngFromBitmap(*bitmap) : std::nullopt;
  if (!png) return std::nullopt;
  const FileManager files;
  const URL url = imageLocation(folder);
  try {
    if (files.isReachableItem(url)) files.removeItem(url);
    files.createParentDirectories(url);
  } catch (const platform::CocoaError&) {
    return std::nullopt;
  }
  createFile(files, *png, url);
  return url;
}

}  // namespace

std::vector<URL> readFiles(const platform::NSPasteboard& pasteboard, const std::string& imageFolder) {
  auto urls = pasteboard.readURLs();
  if (std::ranges::any_of(urls, &URL::isFileURL)) return urls;
  const auto image = pasteboard.readImage();
  const auto written = image ? writeImage(*image, imageFolder) : std::nullopt;
  return written ? std::vector{*written} : std::vector<URL>();
}

}  // namespace veltrik
