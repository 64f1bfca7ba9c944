#include "Platform/AppKit/NSPasteboard.h"

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/URLList.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

std::vector<std::string> pathsOf(const std::vector<URL>& urls) {
  std::vector<std::string> paths;
  for (const URL& url : urls) paths.push_back(url.isFileURL() ? url.path() : url.absoluteString());
  return paths;
}

TEST(URLList, HoldsTheLocationsOfItsLines) {
  struct ListRow {
    const char* name;
    std::string list;
    std::vector<std::string> paths;
  };
  for (const ListRow& row :
       {ListRow{"One", "file:///home/a.txt\r\n", {"/home/a.txt"}},
        ListRow{"LastLineWithoutEnd", "file:///a\nfile:///b", {"/a", "/b"}},
        ListRow{"Comments", "# from a program\r\nfile:///a\r\n#file:///b\r\n", {"/a"}},
        ListRow{"TerminatingZero", std::string("file:///a\r\n\0", 12), {"/a"}},
        ListRow{"FileManagersFirstLine", "copy\nfile:///a\nfile:///b", {"/a", "/b"}},
        ListRow{"Cut", "cut\nfile:///a", {"/a"}},
        ListRow{"Encoded", "file:///a%20b%23%25%ea%b0%80%27%22.txt", {"/a b#%가'\".txt"}},
        ListRow{"EncodedInUpperCase", "file:///%EA%B0%80", {"/가"}},
        ListRow{"NothingEncoded", "file:///a b#1?%가'\".txt", {"/a b#1?%가'\".txt"}},
        ListRow{"StrayPercent", "file:///100%/5%2", {"/100%/5%2"}}, ListRow{"NamedHost", "file://localhost/a", {"/a"}},
        ListRow{"WithoutAuthority", "file:/a", {"/a"}}, ListRow{"Directory", "file:///a/b/", {"/a/b"}},
        ListRow{"Web", "https://example.com/x?y=1#z\r\n", {"https://example.com/x?y=1#z"}},
        ListRow{"NotUTF8", "file:///%ff%fe", {"/\xff\xfe"}}, ListRow{"NoPath", "file:\nfile://\nfile:a", {}},
        ListRow{"NoLocations", "a line\n\n /home/a\n", {}}, ListRow{"Nothing", "", {}}})
    EXPECT_EQ(pathsOf(urlsFromList(row.list)), row.paths) << row.name;
}

class PasteboardTest : public AppKitTest {
 protected:
  void offer(std::map<std::string, std::string> contents) { desktop.clipboard().setContents(std::move(contents)); }
};

TEST_F(PasteboardTest, FilesComeFromTheFirstListThatHoldsAny) {
  offer({{"text/uri-list", "file:///standard"}, {"x-special/gnome-copied-files", "copy\nfile:///own"}});
  EXPECT_THAT(pathsOf(NSPasteboard::general().readURLs()), ElementsAre("/standard"));
  offer({{"text/uri-list", ""}, {"x-special/gnome-copied-files", "cut\nfile:///own"}});
  EXPECT_THAT(pathsOf(NSPasteboard::general().readURLs()), ElementsAre("/own"));
  offer({{"text/plain;charset=utf-8", "x-special/nautilus-clipboard\ncopy\nfile:///in%20text\n"}});
  EXPECT_THAT(pathsOf(NSPasteboard::general().readURLs()), ElementsAre("/in text"));
}

TEST_F(PasteboardTest, AClipboardThatFailsHasNothing) {
  offer({{"text/plain;charset=utf-8", "text"}, {"text/uri-list", "file:///a"}});
  desktop.faults().clipboardFailing = true;
  EXPECT_EQ(NSPasteboard::general().string(), std::nullopt);
  EXPECT_THAT(NSPasteboard::general().readURLs(), IsEmpty());
  EXPECT_FALSE(NSPasteboard::general().offersAny({PasteboardType::kURL}));
}

TEST_F(PasteboardTest, APictureThatCannotBeReadGivesWayToTheNext) {
  // One pixel, 0xFF336699.
  const std::string bitmap(
      "BM\x3a\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x01\0\0\0\x01\0\0\0\x01\0\x18\0\0\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x99\x66\x33\0",
      58);
  offer({{"image/png", "not a picture"}, {"image/bmp", bitmap}});
  const auto image = NSPasteboard::general().readImage();
  ASSERT_NE(image, nullptr);
  EXPECT_THAT(image->representations().at(0).pixels, ElementsAre(0xFF336699));
}

}  // namespace
}  // namespace platform
