#include "Programs/SampleHost/PngFile.h"

#include <stdexcept>

#include "Platform/AppKit/PNG.h"
#include "Platform/Foundation/FileManager.h"

namespace samplehost {

void writePng(const platform::Bitmap& bitmap, const std::filesystem::path& file) {
  const auto png = platform::pngFromBitmap(bitmap);
  if (!png) throw std::runtime_error(file.string() + ": there are no pixels to write");
  platform::FileManager().writeAtomically(*png, platform::URL::fileURL(file.native()));
}

}  // namespace samplehost
