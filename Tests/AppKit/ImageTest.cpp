#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/PNG.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

std::string bytesOfHex(const std::string& hex) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
    bytes.push_back(static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16)));
  return bytes;
}

struct Picture {
  const char* name;
  std::string png;
  std::vector<std::uint32_t> pixels;
};

/// Two by two pixels each, written by another program.
const std::vector<Picture>& pictures() {
  static const std::vector<Picture> all = {
      {"colours with alpha",
       bytesOfHex("89504e470d0a1a0a0000000d494844520000000200000002080600000072b60d24000000164944415478da63f8cfc0f01f08"
                  "1b1840349788dc7f00378005b88871a6150000000049454e44ae426082"),
       {0xFFFF0000, 0x80008000, 0x00000000, 0xFF0A141E}},
      {"colours",
       bytesOfHex("89504e470d0a1a0a0000000d4948445200000002000000020802000000fdd49a73000000154944415478da63606462feffef"
                  "2f031034382800001d4003e170af11580000000049454e44ae426082"),
       {0xFF010203, 0xFFFFFEFD, 0xFF000000, 0xFF804020}},
      {"two colours of a palette, one transparent",
       bytesOfHex(
           "89504e470d0a1a0a0000000d494844520000000200000002010300000048789f6700000006504c5445ff00000000ff6ca1fd8e00000"
           "00174524e530040e6d8660000000c4944415478da63706038000001840101348243fc0000000049454e44ae426082"),
       {0x00000000, 0xFF0000FF, 0xFF0000FF, 0xFF0000FF}},
      {"greys",
       bytesOfHex("89504e470d0a1a0a0000000d494844520000000200000002080000000057dd52f80000000e4944415478da6360a86738f11f"
                  "000491024787a86eb00000000049454e44ae426082"),
       {0xFF000000, 0xFF7F7F7F, 0xFFC8C8C8, 0xFFFFFFFF}},
  };
  return all;
}

TEST(PNGTest, ReadsEachKindAsPremultipliedPixels) {
  for (const Picture& picture : pictures()) {
    SCOPED_TRACE(picture.name);
    const auto bitmap = bitmapFromPNG(bytesOf(picture.png));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width, 2);
    EXPECT_EQ(bitmap->height, 2);
    EXPECT_EQ(bitmap->pixels, picture.pixels);
  }
}

TEST(PNGTest, ReadsNothingOfWhatIsCutOffOrDamaged) {
  for (const Picture& picture : pictures()) {
    // The last chunk holds nothing, so a file without it shows the whole picture.
    const std::size_t end = picture.png.size() - 12;
    for (std::size_t length = 0; length < end; ++length)
      EXPECT_FALSE(bitmapFromPNG(bytesOf(picture.png.substr(0, length)))) << picture.name << " cut to " << length;
    for (std::size_t at = 0; at < end; ++at) {
      std::string damaged = picture.png;
      damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
      const auto bitmap = bitmapFromPNG(bytesOf(damaged));
      EXPECT_TRUE(!bitmap || bitmap->pixels.size() == 4) << picture.name << " damaged at " << at;
    }
  }
}

TEST(PNGTest, ReadsNothingThatClaimsToBeHuge) {
  // 65536 by 65536 pixels: 16 GiB that no file of 69 bytes has.
  const std::string huge = bytesOfHex(
      "89504e470d0a1a0a0000000d49484452000100000001000008060000006c8430e3000000094944415478da63000000010001b10db6930000"
      "000049454e44ae426082");
  EXPECT_FALSE(bitmapFromPNG(bytesOf(huge)));
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
  put("icon.png", bytesOfHex("89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de0000000c4944415478da636"
                             "064620600000e0007e99237d40000000049454e44ae426082"));
  put("icon@2x.png", pictures()[0].png);
  put("icon@big.png", bytesOfHex("89504e470d0a1a0a0000000d4948445200000004000000040802000000269309290000000c4944415478d"
                                 "a6360201d00000034000148a37d6f0000000049454e44ae426082"));
  put("icon@broken.png", "no picture");
  put("iconic.png", pictures()[0].png);
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
  put("icon@2x.png", pictures()[0].png);
  const auto bundle = Bundle::open(folder);
  ASSERT_TRUE(bundle);
  for (const char* name : {"broken", "missing", "icon", "", "../Info", "/etc/passwd"})
    EXPECT_FALSE(NSImage::forResource(*bundle, name)) << name;
}

}  // namespace
}  // namespace platform
