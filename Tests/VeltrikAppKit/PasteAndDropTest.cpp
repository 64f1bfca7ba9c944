#include "Platform/AppKit/ImageReading.h"
#include "Platform/Foundation/Bundle.h"
#include "Tests/ScratchFolder.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using platform::URL;

/// A Windows bitmap of one pixel.
std::string pixel(char blue, char green, char red) {
  std::string bytes(
      "BM\x3a\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x01\0\0\0\x01\0\0\0\x01\0\x18\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\0\0\0",
      54);
  return bytes + blue + green + red + '\0';
}

std::vector<std::string> pathsOf(const std::vector<URL>& urls) {
  std::vector<std::string> paths;
  for (const URL& url : urls) paths.push_back(url.isFileURL() ? url.path() : url.absoluteString());
  return paths;
}

class PasteAndDropTest : public PluginTest {
 protected:
  static constexpr Point kInside{300, 300};

  std::vector<std::string> paste(std::map<std::string, std::string> contents) {
    desktop.clipboard().setContents(std::move(contents));
    return pathsOf(bound.helper()->readPastedFilePath());
  }
  bool drop(const std::map<std::string, std::string>& contents) { return desktop.user().drop(contents, kInside); }
  /// Where a picture of this moment goes.
  std::filesystem::path imagePath(const std::string& folder) {
    const auto seconds = static_cast<long long>(headless::HeadlessLoop::kWallClockStart + desktop.loop().now());
    return desktop.folders().cache / platform::Bundle::main()->bundleIdentifier() / folder /
           ("Image_" + std::to_string(seconds) + ".png");
  }
  static std::vector<std::uint32_t> pixelsOf(const std::filesystem::path& file) {
    const std::string bytes = readText(file);
    const auto bitmap = platform::bitmapFromImage(platform::bytesOf(bytes));
    return bytes.starts_with("\x89PNG") && bitmap ? bitmap->pixels : std::vector<std::uint32_t>();
  }

  BoundWindow bound = show("main");
};

TEST_F(PasteAndDropTest, FilesArePastedAsTheirLocations) {
  struct Row {
    const char* name;
    std::map<std::string, std::string> contents;
    std::vector<std::string> paths;
  };
  const Row rows[] = {
      {"one file", {{"text/uri-list", "file:///a%20b%23%25%EA%B0%80.txt\r\n"}}, {"/a b#%가.txt"}},
      {"a file and a page", {{"text/uri-list", "file:///a\r\nhttps://b/\r\n"}}, {"/a", "https://b/"}},
      {"a file manager's own", {{"x-special/gnome-copied-files", "copy\nfile:///a\nfile:///b"}}, {"/a", "/b"}},
      {"a page alone", {{"text/uri-list", "https://b/"}, {"text/plain", "https://b/"}}, {}},
      {"text", {{"text/plain;charset=utf-8", "file:///home/a"}}, {}},
      {"nothing", {}, {}},
      {"a damaged picture", {{"image/png", "\x89PNG"}}, {}},
      {"files before pictures", {{"text/uri-list", "file:///a.png"}, {"image/bmp", pixel(1, 2, 3)}}, {"/a.png"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(paste(row.contents), row.paths);
  }
}

TEST_F(PasteAndDropTest, APictureIsPastedAsAFileOfTheCacheTheLastOfASecondStays) {
  const auto first = imagePath("ClipBoardImages");
  EXPECT_THAT(paste({{"text/uri-list", "https://b/"}, {"image/bmp", pixel(0x33, 0x66, '\x99')}}),
              ElementsAre(first.string()));
  EXPECT_THAT(pixelsOf(first), ElementsAre(0xFF996633));
  paste({{"image/bmp", pixel(4, 5, 6)}});
  EXPECT_THAT(pixelsOf(first), ElementsAre(0xFF060504));
  desktop.advance(1);
  paste({{"image/bmp", pixel(7, 8, 9)}});
  EXPECT_THAT(pixelsOf(first), ElementsAre(0xFF060504));
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& each : std::filesystem::directory_iterator(first.parent_path())) ++files;
  EXPECT_EQ(files, 2u) << "no file that was written on the way stays behind";
}

TEST_F(PasteAndDropTest, WithoutAPlaceToPutItThereIsNoPicture) {
  writeText(desktop.folders().cache, "a file where the folder should be");
  EXPECT_THAT(paste({{"image/bmp", pixel(1, 2, 3)}}), IsEmpty());
  bound.helper()->setAsFileDropable();
  EXPECT_FALSE(drop({{"image/bmp", pixel(1, 2, 3)}}));
  EXPECT_FALSE(bound.host->was("didSelectedFilePath"));
}

TEST_F(PasteAndDropTest, WhatIsDroppedReachesTheHostThatAskedForIt) {
  EXPECT_FALSE(drop({{"text/uri-list", "file:///a"}})) << "before it has asked";
  bound.helper()->setAsFileDropable();
  EXPECT_TRUE(desktop.user().dragOver({{"text/uri-list", "https://b/"}}, kInside));
  EXPECT_FALSE(drop({{"text/uri-list", "https://b/"}})) << "turns out to hold nothing";
  EXPECT_FALSE(bound.host->was("didSelectedFilePath"));
  EXPECT_TRUE(drop({{"text/uri-list", "file:///a%20b\r\nfile:///%EA%B0%80"}}));
  EXPECT_THAT(pathsOf(bound.host->files), ElementsAre("/a b", "/가"));
}

TEST_F(PasteAndDropTest, APictureIsDroppedAsAFileHoweverItIsOffered) {
  struct Row {
    const char* name;
    std::map<std::string, std::string> contents;
  };
  const Row rows[] = {
      {"with its page", {{"text/uri-list", "https://b/picture"}, {"image/bmp", pixel(1, 2, 3)}}},
      {"alone", {{"image/bmp", pixel(1, 2, 3)}}},
      {"out of Chromium",
       {{"text/x-moz-url", "https://b/picture"},
        {"text/plain", "https://b/picture"},
        {"XdndDirectSave0", ""},
        {"application/octet-stream", pixel(1, 2, 3)},
        {"text/html", "<img src='https://b/picture'>"}}},
  };
  bound.helper()->setAsFileDropable();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    desktop.advance(1);
    EXPECT_TRUE(drop(row.contents));
    EXPECT_THAT(pathsOf(bound.host->files), ElementsAre(imagePath("dropableImages").string()));
    EXPECT_THAT(pixelsOf(imagePath("dropableImages")), ElementsAre(0xFF030201));
  }
  EXPECT_FALSE(drop({{"application/octet-stream", "no picture"}}));
}

TEST_F(PasteAndDropTest, TheDropViewCoversTheContentAndLeavesThePointerAlone) {
  bound.helper()->setAsFileDropable();
  bound.native->setFrame({0, 0, 1000, 700}, true);
  bound.native->layoutIfNeeded();
  ASSERT_EQ(bound.view().subviews().size(), 1u);
  EXPECT_EQ(bound.view().subviews()[0]->frame().size(), bound.view().bounds().size());
  desktop.user().click({500, 300});
  EXPECT_EQ(bound.view().mouseDowns, 1);
  bound.helper()->setAsFileDropable();
  EXPECT_EQ(bound.view().subviews().size(), 2u);
}

TEST_F(PasteAndDropTest, TheHostMayGoOrCloseItsWindowAtADrop) {
  bound.helper()->setAsFileDropable();
  bound.helper()->setDelegate({});
  EXPECT_TRUE(drop({{"text/uri-list", "file:///a"}})) << "taken, though nobody hears of it";
  bound.helper()->setDelegate(bound.host);
  bound.host->reactions["didSelectedFilePath"] = [&] {
    bound.helper()->closeWindow();
    bound.host->helper = nullptr;
  };
  EXPECT_TRUE(drop({{"text/uri-list", "file:///a"}}));
  EXPECT_TRUE(bound.native->isClosed());
}

}  // namespace
}  // namespace veltrik
