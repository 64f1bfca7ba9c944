#include "Platform/AppKit/ImageReading.h"

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/PNG.h"
#include "Tests/AppKit/AppKitTest.h"
#include "Tests/ScratchFolder.h"

namespace platform {
namespace {

using namespace std::string_literals;
using Pixels = std::vector<std::uint32_t>;

/// A few pixels, written by another program.
struct Picture {
  std::string file;
  int width;
  int tolerance;  ///< what the format may lose of a channel
  Pixels pixels;
};

std::string contentsOf(const std::string& file) {
  return readText(std::filesystem::path(TEST_PICTURES) / file);
}

std::optional<Bitmap> read(const std::string& bytes) {
  return bitmapFromImage(bytesOf(bytes));
}

const std::vector<Picture>& pictures() {
  static const Pixels kOpaque{0xFFFF0000, 0xFF008000, 0xFF0000FF, 0xFF0A141E, 0xFFFFFFFF, 0xFF000000};
  static const Pixels kTransparent{0xFFFF0000, 0x80004000, 0x00000000, 0xFF0A141E};
  static const Pixels kOneColour(4, 0xFFC8285A);
  static const std::vector<Picture> all = {
      {"Palette.png", 3, 0, kOpaque},
      {"TrueColourAlpha.png", 2, 0, {0xFFFF0000, 0x80008000, 0x00000000, 0xFF0A141E}},
      {"TrueColour.png", 2, 0, {0xFF010203, 0xFFFFFEFD, 0xFF000000, 0xFF804020}},
      {"TransparentInPalette.png", 2, 0, {0x00000000, 0xFF0000FF, 0xFF0000FF, 0xFF0000FF}},
      {"Greys.png", 2, 0, {0xFF000000, 0xFF7F7F7F, 0xFFC8C8C8, 0xFFFFFFFF}},
      {"Pixels24.bmp", 3, 0, kOpaque},
      {"Palette.bmp", 3, 0, kOpaque},
      {"Bitfields16.bmp", 3, 8, kOpaque},
      {"Plain.tiff", 3, 0, kOpaque},
      {"LZW.tiff", 3, 0, kOpaque},
      {"AlphaInPalette.png", 2, 0, kTransparent},
      {"Alpha.bmp", 2, 0, kTransparent},
      {"Alpha.tiff", 2, 0, kTransparent},
      {"Baseline.jpeg", 2, 4, kOneColour},
      {"Progressive.jpeg", 2, 4, kOneColour}};
  return all;
}

class ImageReadingTest : public testing::TestWithParam<Picture> {
 protected:
  const std::string whole = contentsOf(GetParam().file);
};

bool isNear(std::uint32_t a, std::uint32_t b, int tolerance) {
  for (int shift = 0; shift < 32; shift += 8) {
    const int distance = static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF);
    if (distance > tolerance || -distance > tolerance) return false;
  }
  return true;
}

TEST_P(ImageReadingTest, ShowsWhatAnotherProgramWroteAndComesBackFromAPNG) {
  const Picture& picture = GetParam();
  const auto bitmap = read(whole);
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(bitmap->width, picture.width);
  ASSERT_EQ(bitmap->pixels.size(), picture.pixels.size());
  for (std::size_t i = 0; i < picture.pixels.size(); ++i)
    EXPECT_TRUE(isNear(bitmap->pixels[i], picture.pixels[i], picture.tolerance))
        << i << ": " << std::hex << bitmap->pixels[i] << " is not " << picture.pixels[i];
  const auto again = bitmapFromImage(pngFromBitmap(*bitmap).value());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->width, bitmap->width);
  EXPECT_EQ(again->pixels, bitmap->pixels);
}

TEST_P(ImageReadingTest, SurvivesEachTruncationAndEachFlippedByte) {
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto bitmap = read(whole.substr(0, length));
    EXPECT_TRUE(!bitmap || bitmap->pixels.size() == GetParam().pixels.size()) << "cut to " << length;
  }
  for (std::size_t at = 0; at < whole.size(); ++at)
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string damaged = whole;
      damaged[at] = static_cast<char>(damaged[at] ^ flip);
      const auto bitmap = read(damaged);
      if (bitmap) {
        EXPECT_EQ(bitmap->pixels.size(),
                  static_cast<std::size_t>(bitmap->width) * static_cast<std::size_t>(bitmap->height));
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Pictures, ImageReadingTest, testing::ValuesIn(pictures()), [](const auto& row) {
  std::string name = row.param.file;
  std::ranges::replace(name, '.', '_');
  return name;
});

TEST(ImageSizeTest, TooManyPixelsAreRefusedByTheHeaderAlone) {
  struct Claim {
    std::string file, honest, huge;  ///< the bytes of its size, and those of 65000 by 65000 pixels
  };
  const Claim claims[] = {{"Palette.png", "\0\0\0\3\0\0\0\2\4\3\0\0\0\x6f\x5a\x7b\x29"s,
                           "\0\0\xfd\xe8\0\0\xfd\xe8\4\3\0\0\0\x50\x79\xc4\x39"s},
                          {"Pixels24.bmp", "\3\0\0\0\2\0\0\0"s, "\xe8\xfd\0\0\xe8\xfd\0\0"s},
                          {"Baseline.jpeg", "\x08\0\2\0\2\3"s, "\x08\xfd\xe8\xfd\xe8\3"s},
                          {"Plain.tiff", "\3\0\0\0\1\1\3\0\1\0\0\0\2\0"s, "\xe8\xfd\0\0\1\1\3\0\1\0\0\0\xe8\xfd"s}};
  for (const Claim& claim : claims) {
    SCOPED_TRACE(claim.file);
    std::string bytes = contentsOf(claim.file);
    ASSERT_TRUE(read(bytes));
    bytes.replace(bytes.find(claim.honest), claim.huge.size(), claim.huge);
    EXPECT_FALSE(read(bytes));
  }
  EXPECT_TRUE(isReadableSize(8000, 8000));
  EXPECT_FALSE(isReadableSize(8000, 8001));
  EXPECT_FALSE(isReadableSize(-1, 10));
  EXPECT_FALSE(isReadableSize(0, 10));
  EXPECT_FALSE(isReadableSize(INT64_MAX, 2));
}

TEST(ImageSizeTest, TooManyPixelsAreRefusedWhereTheyAreAllThere) {
  constexpr int kHeight = 8000, kBytesInRow = 1004;
  std::string bytes = contentsOf("Palette.bmp");
  bytes.replace(46, 1, "\2");  // colours, for pixels of one bit
  bytes.append(std::size_t{kHeight} * kBytesInRow, '\0');
  for (const int width : {8, 8001}) {
    bytes.replace(
        18, 12,
        std::string{static_cast<char>(width & 0xFF), static_cast<char>(width >> 8)} + "\0\0\x40\x1f\0\0\1\0\1\0"s);
    EXPECT_EQ(read(bytes).has_value(), width == 8) << width;
  }
}

TEST(ImageSizeTest, OtherBytesAreNoPicture) {
  for (const std::string bytes : {"", "B", "BM", "GIF89a", "<svg/>", "II*"}) EXPECT_FALSE(read(bytes)) << bytes;
}

/// A square of one colour.
std::string pngOf(int side) {
  const auto png =
      pngFromBitmap({.width = side, .height = side, .pixels = std::vector<std::uint32_t>(side * side, ~0U)});
  return std::string(textOf(*png));
}

class ImageTest : public AppKitTest {
 protected:
  ImageTest() {
    writeText(folder / "Contents/Info.plist", R"(<?xml version="1.0"?><plist version="1.0"><dict/></plist>)");
  }
  void put(const std::string& name, const std::string& contents) const {
    writeText(folder / "Contents/Resources" / name, contents);
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
