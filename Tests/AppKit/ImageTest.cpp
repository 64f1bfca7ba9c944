#include <cstdint>
#include <filesystem>
#include <fstream>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/PNG.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// A square of one colour.
std::string pngOf(int side) {
  const auto png =
      pngFromBitmap({.width = side, .height = side, .pixels = std::vector<std::uint32_t>(side * side, ~0U)});
  return std::string(textOf(*png));
}

class ImageTest : public AppKitTest {
 protected:
  ImageTest() {
    std::filesystem::create_directories(folder / "Contents/Resources");
    std::ofstream(folder / "Contents/Info.plist") << R"(<?xml version="1.0"?><plist version="1.0"><dict/></plist>)";
  }
  void put(const std::string& name, const std::string& contents) const {
    std::ofstream(folder / "Contents/Resources" / name, std::ios::binary) << contents;
  }

  const std::filesystem::path folder = desktop.folders().home / "Pictures.bundle";
};

TEST_F(ImageTest, AResourceHasAllItsSizes) {
  put("icon.png", pngOf(1));
  put("icon@2x.png", pngOf(2));
  put("icon@big.png", pngOf(4));
  put("icon@broken.png", "no picture");
  put("iconic.png", pngOf(2));
  const auto bundle = Bundle::open(folder);
  ASSERT_TRUE(bundle);
  const auto image = NSImage::forResource(*bundle, "icon");
  ASSERT_TRUE(image);
  EXPECT_EQ(image->size(), (Size{1, 1}));
  std::vector<double> scales;
  for (const Bitmap& bitmap : image->representations()) scales.push_back(bitmap.scale);
  EXPECT_EQ(scales, (std::vector<double>{1, 2, 4}));
  for (const auto& [scale, width] : {std::pair{0.5, 1}, {1.0, 1}, {1.5, 2}, {2.0, 2}, {3.0, 4}, {9.0, 4}})
    EXPECT_EQ(image->bestRepresentation(scale)->width, width) << "at scale " << scale;
}

TEST_F(ImageTest, WhatIsNoPictureIsNoImage) {
  put("broken.png", "no picture");
  put("icon@2x.png", pngOf(2));
  const auto bundle = Bundle::open(folder);
  ASSERT_TRUE(bundle);
  for (const char* name : {"broken", "missing", "icon", "", "../Info", "/etc/passwd"})
    EXPECT_FALSE(NSImage::forResource(*bundle, name)) << name;
}

}  // namespace
}  // namespace platform
