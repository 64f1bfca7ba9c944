#include "Platform/Foundation/URL.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

struct PathCase {
  const char* path;
  const char* text;
  const char* last;
  const char* extension;
};

TEST(URL, KeepsEveryPathOnItsWayToTextAndBack) {
  const PathCase cases[] = {
      {"/a/b.txt", "file:///a/b.txt", "b.txt", "txt"},
      {"/", "file:///", "/", ""},
      {"/a b/c%20d", "file:///a%20b/c%2520d", "c%20d", ""},
      {"/한글.zip", "file:///%ED%95%9C%EA%B8%80.zip", "한글.zip", "zip"},
      {"/\xff\x01#?", "file:///%FF%01%23%3F", "\xff\x01#?", ""},
      {"/.hidden", "file:///.hidden", ".hidden", ""},
      {"/a.tar.gz", "file:///a.tar.gz", "a.tar.gz", "gz"},
      {"/trailing.", "file:///trailing.", "trailing.", ""},
      {"/a:b@c;d", "file:///a:b@c;d", "a:b@c;d", ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.path);
    const URL url = URL::fileURL(row.path);
    EXPECT_EQ(url.absoluteString(), row.text);
    EXPECT_EQ(url.path(), row.path);
    EXPECT_EQ(url.lastPathComponent(), row.last);
    EXPECT_EQ(url.pathExtension(), row.extension);
    EXPECT_EQ(URL::fromString(row.text), url);
  }
}

TEST(URL, DirectoriesEndWithASlashInTheTextOnly) {
  for (const char* path : {"/a/b", "/a/b/", "/a/b//"}) {
    const URL url = URL::directoryURL(path);
    EXPECT_TRUE(url.hasDirectoryPath()) << path;
    EXPECT_EQ(url.path(), "/a/b") << path;
    EXPECT_EQ(url.lastPathComponent(), "b") << path;
  }
}

TEST(URL, RelativePathsAreTakenFromTheWorkingDirectory) {
  const URL here = URL::fileURL("");
  EXPECT_TRUE(here.absoluteString().starts_with("file:///"));
  EXPECT_EQ(URL::fileURL("x/y").absoluteString(), here.absoluteString() + "x/y");
}

TEST(URL, ReadsAnyURLButNoNonsense) {
  for (const auto& [text, want] : {std::pair{"memory:", "memory:"},
                                   {"HTTPS://Example.org/a?b=c#d", "https://Example.org/a?b=c#d"},
                                   {"x-apple+1.2:rest", "x-apple+1.2:rest"},
                                   {"https://example.org/한", "https://example.org/%ED%95%9C"}})
    EXPECT_EQ(URL::fromString(text).value().absoluteString(), want);
  for (const char* text : {"", "no scheme", ":a", "1a:b", "a_b:c", "https://a b", "https://a<b", "https://a\nb"})
    EXPECT_FALSE(URL::fromString(text)) << text;
}

TEST(URL, PathIsThePartBetweenAuthorityAndQuery) {
  const auto url = URL::fromString("https://user@host:80/a%2Fb/c.html?x=/y.z#/f");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), "/a/b/c.html");
  EXPECT_EQ(url->pathExtension(), "html");
  EXPECT_EQ(url->deletingLastPathComponent().absoluteString(), "https://user@host:80/a%2Fb/?x=/y.z#/f");
  EXPECT_EQ(URL::fromString("https://host?q")->path(), "");
  EXPECT_EQ(URL::fromString("bad:%4")->path(), "%4");
  EXPECT_EQ(URL::fromString("bad:%zz%41%5a%5A")->path(), "%zzAZZ");
}

TEST(URL, AppendsAndDeletesComponents) {
  const URL folder = URL::fileURL("/a");
  EXPECT_EQ(folder.appendingPathComponent("b/c d").absoluteString(), "file:///a/b/c%20d");
  EXPECT_EQ(folder.appendingPathComponent("b/").absoluteString(), "file:///a/b/");
  EXPECT_EQ(folder.appendingPathComponent("/etc").absoluteString(), "file:///a/etc");
  EXPECT_EQ(folder.appendingPathComponent("b/").deletingLastPathComponent().absoluteString(), "file:///a/");
  EXPECT_EQ(URL::fileURL("/").deletingLastPathComponent().absoluteString(), "file:///");
  EXPECT_EQ(URL::fromString("memory:")->deletingLastPathComponent().absoluteString(), "memory:");
}

TEST(URL, AppendsAndDeletesExtensions) {
  EXPECT_EQ(URL::fileURL("/a/App.app").appendingPathExtension("backup").path(), "/a/App.app.backup");
  EXPECT_EQ(URL::directoryURL("/a/App.app").appendingPathExtension("backup").absoluteString(),
            "file:///a/App.app.backup/");
  EXPECT_EQ(URL::fileURL("/a.b/c.txt").deletingPathExtension().path(), "/a.b/c");
  EXPECT_EQ(URL::directoryURL("/a.b/c.app").deletingPathExtension().absoluteString(), "file:///a.b/c/");
  EXPECT_EQ(URL::fileURL("/a.b/c").deletingPathExtension().path(), "/a.b/c");
}

TEST(URL, StandardizesByTextAlone) {
  struct Case {
    const char* text;
    const char* want;
  };
  // The first group is RFC 3986's own example, the rest what the file system would do.
  const Case cases[] = {{"file:///a/b/c/./../../g", "file:///a/g"},
                        {"file:///mid/content=5/../6", "file:///mid/6"},
                        {"file:///a/..", "file:///"},
                        {"file:///a/b/.", "file:///a/b/"},
                        {"file:///a/b/", "file:///a/b/"},
                        {"file:///../../x", "file:///x"},
                        {"file:///a//b", "file:///a/b"},
                        {"file:///x//../../y", "file:///y"},
                        {"file:///a/%2E%2E/b", "file:///b"},
                        {"file:///a/...", "file:///a/..."},
                        {"memory:", "memory:"},
                        {"https://h/a/../b?q=/../", "https://h/b?q=/../"}};
  for (const auto& row : cases) EXPECT_EQ(URL::fromString(row.text)->standardized().absoluteString(), row.want);
}

}  // namespace
}  // namespace platform
