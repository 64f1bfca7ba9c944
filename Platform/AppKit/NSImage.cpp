#include "Platform/AppKit/NSImage.h"

#include <algorithm>
#include <filesystem>

#include "Platform/AppKit/PNG.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"

namespace platform {

namespace {

std::optional<Bitmap> readBitmap(const std::filesystem::path& file) {
  try {
    return bitmapFromPNG(FileManager().contents(URL::fileURL(file.native())));
  } catch (const CocoaError&) {
    return std::nullopt;
  }
}

}  // namespace

NSImage::NSImage(Size size, std::vector<Bitmap> representations)
    : size_(size), representations_(std::move(representations)) {
  for (Bitmap& bitmap : representations_) bitmap.scale = size.width > 0 ? bitmap.width / size.width : 1;
  std::ranges::stable_sort(representations_, {}, &Bitmap::width);
}

std::shared_ptr<NSImage> NSImage::forResource(const Bundle& bundle, const std::string& name) {
  const auto main = bundle.pathForResource(name + ".png");
  auto bitmap = main ? readBitmap(*main) : std::nullopt;
  if (!bitmap) return nullptr;
  const Size size{static_cast<double>(bitmap->width), static_cast<double>(bitmap->height)};
  std::vector<Bitmap> representations{std::move(*bitmap)};
  const std::string prefix = main->stem().native() + "@";
  std::error_code failure;
  for (std::filesystem::directory_iterator file(main->parent_path(), failure), end; !failure && file != end;
       file.increment(failure)) {
    if (!file->path().filename().native().starts_with(prefix) || file->path().extension() != ".png") continue;
    if (auto other = readBitmap(file->path())) representations.push_back(std::move(*other));
  }
  return std::make_shared<NSImage>(size, std::move(representations));
}

std::optional<Bitmap> NSImage::bestRepresentation(double scale) const {
  if (representations_.empty()) return std::nullopt;
  const auto found =
      std::ranges::find_if(representations_, [scale](const Bitmap& bitmap) { return bitmap.scale >= scale; });
  return found == representations_.end() ? representations_.back() : *found;
}

}  // namespace platform
