#include "Platform/AppKit/FallbackFileIcon.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/AppKit/UniformTypes.h"

namespace platform {

namespace {

constexpr std::uint32_t kPaper = 0xFFFFFFFF, kFold = 0xFFDDE1E6, kEdge = 0xFF9AA1AB, kLetters = 0xFFFFFFFF;
constexpr std::uint32_t kFolder = 0xFF5B9BD5, kFolderTab = 0xFF3F7FB9;
constexpr std::size_t kLongestLabel = 4;
constexpr int kGlyphWidth = 3, kGlyphHeight = 5;

constexpr std::string_view kGlyphNames = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
/// Three by five dots each, an octal digit a row.
constexpr std::array<std::string_view, 36> kGlyphs = {
    "75557", "26227", "71747", "71717", "55711", "74717", "74757", "71111", "75757", "75717", "25755", "65656",
    "34443", "65556", "74647", "74644", "34553", "55755", "72227", "11152", "55655", "44447", "57755", "65555",
    "25552", "65644", "25563", "65655", "34216", "72222", "55557", "55552", "55775", "55255", "55222", "71247"};

std::uint32_t colorOf(FileFamily family) {
  switch (family) {
    case FileFamily::text:
      return 0xFF6B7785;
    case FileFamily::image:
      return 0xFF8E5BB5;
    case FileFamily::audio:
      return 0xFFD2691E;
    case FileFamily::video:
      return 0xFFB03A5B;
    case FileFamily::archive:
      return 0xFF9A7B2F;
    case FileFamily::document:
      return 0xFF2F6DB5;
    case FileFamily::sheet:
      return 0xFF2E8B57;
    case FileFamily::slides:
      return 0xFFCC5B2C;
    case FileFamily::generic:
    case FileFamily::folder:
      return 0xFF7C8794;
  }
  return 0;
}

/// The ending, or the last word of the MIME type, when it is short enough to be read.
std::string labelOf(const port::FileType& type) {
  const std::string& source = type.extension.empty() ? type.mimeType : type.extension;
  std::string label = source.substr(source.find_last_of("./-+") + 1);
  for (char& character : label) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  const bool readable = label.size() <= kLongestLabel && label.find_first_not_of(kGlyphNames) == std::string::npos;
  return readable ? label : "";
}

class Drawing {
 public:
  explicit Drawing(int side) : bitmap_{side, side, 1, {}} {
    bitmap_.pixels.resize(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  }

  void fill(int left, int top, int right, int bottom, std::uint32_t color) {
    for (int y = std::max(0, top); y < std::min(bottom, bitmap_.height); ++y)
      for (int x = std::max(0, left); x < std::min(right, bitmap_.width); ++x) pixel(x, y) = color;
  }

  void folder() {
    const int side = bitmap_.width;
    fill(side / 16, side * 3 / 16, side / 2, side / 2, kFolderTab);
    fill(side / 16, side * 5 / 16, side * 15 / 16, side * 14 / 16, kFolder);
  }

  void sheet() {
    const int side = bitmap_.width, left = side / 8, right = side - left, fold = side / 4;
    for (int y = 0; y < side; ++y) {
      const int end = y < fold ? right - fold + y : right;  // the cut corner
      fill(left, y, end, y + 1, kPaper);
      fill(left, y, left + 1, y + 1, kEdge);
      fill(end - 1, y, end, y + 1, kEdge);
      if (y < fold) fill(right - fold, y, end - 1, y + 1, kFold);
    }
    fill(left, 0, right - fold, 1, kEdge);
    fill(left, side - 1, right, side, kEdge);
    fill(right - fold, fold, right, fold + 1, kEdge);
  }

  void band(std::string_view label, std::uint32_t color) {
    const int side = bitmap_.width, top = side / 2, height = side * 5 / 16;
    fill(side / 16, top, side - side / 16, top + height, color);
    if (label.empty()) return;
    const int columns = static_cast<int>(label.size()) * (kGlyphWidth + 1) - 1;
    const int dot = std::min((side * 7 / 8 - 2) / columns, (height - 2) / kGlyphHeight);
    int left = (side - columns * dot) / 2;
    for (const char character : label) {
      glyph(character, left, top + (height - kGlyphHeight * dot) / 2, dot);
      left += (kGlyphWidth + 1) * dot;
    }
  }

  Bitmap take() { return std::move(bitmap_); }

 private:
  std::uint32_t& pixel(int x, int y) {
    return bitmap_
        .pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(bitmap_.width) + static_cast<std::size_t>(x)];
  }

  void glyph(char character, int left, int top, int dot) {
    const std::string_view rows = kGlyphs.at(kGlyphNames.find(character));
    for (int y = 0; y < kGlyphHeight; ++y)
      for (int x = 0; x < kGlyphWidth; ++x)
        if (((rows[static_cast<std::size_t>(y)] - '0') >> (kGlyphWidth - 1 - x)) & 1)
          fill(left + x * dot, top + y * dot, left + (x + 1) * dot, top + (y + 1) * dot, kLetters);
  }

  Bitmap bitmap_;
};

}  // namespace

Bitmap fallbackFileIcon(const port::FileType& type, int side) {
  Drawing drawing(side);
  const FileFamily family = fileFamilyOf(type);
  if (family == FileFamily::folder) {
    drawing.folder();
  } else {
    drawing.sheet();
    drawing.band(labelOf(type), colorOf(family));
  }
  return drawing.take();
}

}  // namespace platform
