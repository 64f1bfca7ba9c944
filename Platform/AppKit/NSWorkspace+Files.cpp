#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/FallbackFileIcon.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/AppKit/UniformTypes.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

constexpr int kIconSide = 32;  // points

using Ask = void (port::FileOpener::*)(const std::string&, port::FileOpener::Completion);

void ask(Ask what, const URL& file, const std::string& failed) {
  const std::string path = file.path();
  // Percent-encoded: a name may hold anything, also a line's end.
  const auto log = [failed, text = file.absoluteString()](const std::string& failure) {
    if (!failure.empty()) NSLog(text + failed + failure);
  };
  port::FileOpener* opener = Session::current().backend().fileOpener();
  if (!opener) return log("this desktop has no programs for it");
  if (!path.starts_with('/') || path.find('\0') != std::string::npos) return log("no file has such a path");
  (opener->*what)(path, log);
}

/// Pixels to a point where they are finest.
double finestScale() {
  double scale = 1;
  for (const port::ScreenInfo& screen : NSScreen::screens()) scale = std::max(scale, screen.scale);
  return scale;
}

Bitmap iconOf(const port::FileType& type, int side) {
  port::FileIcons* icons = Session::current().backend().fileIcons();
  auto icon = icons ? icons->icon(type, side) : std::nullopt;
  return icon ? std::move(*icon) : fallbackFileIcon(type, side);
}

}  // namespace

void NSWorkspace::openFile(const std::string& path) {
  requireMainThread("NSWorkspace::openFile");
  // As a URL it would be the working directory.
  if (path.empty()) return NSLog("A file without a path can't be opened");
  ask(&port::FileOpener::open, URL::fileURL(path), " can't be opened: ");
}

void NSWorkspace::activateFileViewerSelecting(const URL& file) {
  requireMainThread("NSWorkspace::activateFileViewerSelecting");
  ask(&port::FileOpener::reveal, file, " can't be shown: ");
}

std::shared_ptr<NSImage> NSWorkspace::iconForFileType(const std::string& type) const {
  requireMainThread("NSWorkspace::iconForFileType");
  const port::FileType known = fileTypeOf(type);
  const int side = static_cast<int>(std::ceil(kIconSide * finestScale()));
  return std::make_shared<NSImage>(Size{kIconSide, kIconSide}, std::vector{iconOf(known, side)});
}

}  // namespace platform
