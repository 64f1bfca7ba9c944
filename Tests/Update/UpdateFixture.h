#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/Process.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/SystemTools.h"
#include "Tests/Foundation/ApplicationFixture.h"
#include "Tests/LogCapture.h"
#include "VeltrikAppKit/AppRestarter.h"

namespace veltrik {

/// An installed application, a download folder with an update for it, and the system tools as they are, but for "open",
/// whose arguments are written down instead. What is started on its own becomes a child of this process, so that it can
/// be waited for, and is when the bench goes.
class UpdateBench {
 public:
  UpdateBench() : open_("/usr/bin/open", root / "tools/open") {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    writeText(root / "tools/open", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.told\"\n");
    std::filesystem::permissions(root / "tools/open", std::filesystem::perms(0755));
    makeInstalled();
  }
  ~UpdateBench() {
    waitForStarted();
    platform::Bundle::setMainForTesting({});
  }
  UpdateBench(const UpdateBench&) = delete;
  UpdateBench& operator=(const UpdateBench&) = delete;

  std::filesystem::path installed() const { return root / "install/Mirelo.app"; }
  std::filesystem::path backup() const { return root / "install/Mirelo.app.backup"; }
  std::filesystem::path downloads() const { return root / "downloads"; }
  std::filesystem::path archive() const { return downloads() / "update.zip"; }

  /// The old version stands in its place, alone.
  void makeInstalled() const {
    std::filesystem::create_directories(root / "install");
    for (const auto& item : std::filesystem::directory_iterator(root / "install"))
      std::filesystem::remove_all(item.path());
    makeVersion(installed(), "1.0");
    platform::Bundle::setMainForTesting(installed());
  }

  /// An application with a few files, a folder and a link.
  static void makeVersion(const std::filesystem::path& bundle, const std::string& version) {
    makeApplication(bundle, "com.example.mirelo", "exit 0", version);
    writeText(bundle / "Contents/Resources/text", "version " + version);
    writeText(bundle / ("Contents/Resources/only in " + version), version);
    for (int i = 0; i < 15; ++i) writeText(bundle / "Contents/Resources/pictures" / std::to_string(i), version);
    std::filesystem::create_symlink("text", bundle / "Contents/Resources/link");
  }

  /// Packs folders made below "packed/" with the system's own tool into an archive in the download folder.
  void pack(const std::filesystem::path& into) const {
    std::filesystem::create_directories(into.parent_path());
    std::filesystem::remove(into);
    platform::Process zip;
    zip.setLaunchPath("/usr/bin/zip");
    zip.setArguments({"-qryX", into, "."});
    zip.setCurrentDirectory(root / "packed");
    zip.launch();
    zip.waitUntilExit();
    ASSERT_EQ(zip.terminationStatus(), 0);
  }

  /// An update to version 2.0 with its relauncher.
  void makeUpdate(const std::filesystem::path& into) const {
    std::filesystem::remove_all(root / "packed");
    makeVersion(root / "packed/Mirelo.app", "2.0");
    makeApplication(root / "packed/MireloRelauncher.app", "com.example.relauncher", "exit 0");
    pack(into);
  }

  /// Waits until every program that was started has ended.
  static void waitForStarted() {
    while (waitpid(-1, nullptr, 0) > 0 || errno == EINTR) {
    }
  }

  /// The arguments that "open" was started with, a line each; nothing when it wasn't.
  std::optional<std::string> openTold() const {
    waitForStarted();
    if (!std::filesystem::exists(root / "tools/open.told")) return std::nullopt;
    return readText(root / "tools/open.told");
  }

 private:
  const ScratchFolder folder_;

 public:
  const std::filesystem::path root = folder_.path();

 private:
  platform::SystemTools::Replacement open_;
};

/// A file system of its own in memory, of so many bytes.
class SmallDisk {
 public:
  /// `limits` as the mount option says them: "size=4m".
  SmallDisk(std::filesystem::path at, const std::string& limits) : at_(std::move(at)) {
    std::filesystem::create_directories(at_);
    mounted_ = mount("tmpfs", at_.c_str(), "tmpfs", 0, limits.c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) umount2(at_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  /// Mounting takes rights that not everybody has.
  bool isMounted() const { return mounted_; }

 private:
  std::filesystem::path at_;
  bool mounted_ = false;
};

/// Every item of a tree: files with mode and content, links with their targets.
inline std::map<std::string, std::string> treeOf(const std::filesystem::path& root) {
  std::map<std::string, std::string> items;
  if (!std::filesystem::exists(root)) return items;
  for (const auto& item : std::filesystem::recursive_directory_iterator(root)) {
    const auto status = item.symlink_status();
    std::string& told = items[item.path().lexically_relative(root)];
    told = std::to_string(static_cast<int>(status.permissions()));
    if (item.is_symlink())
      told += " -> " + std::filesystem::read_symlink(item.path()).native();
    else if (item.is_regular_file())
      told += " " + readText(item.path());
  }
  return items;
}

inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& item : std::filesystem::directory_iterator(folder)) names.push_back(item.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

/// Runs an update in this process to its end, on a headless desktop. The log's lines.
inline std::vector<std::string> runUpdate(const std::string& location, double unzipSilence = 60) {
  LogCapture log;
  headless::HeadlessBackend desktop;
  const platform::Session session(desktop);
  const auto restarter = AppRestarter::make(unzipSilence);
  restarter->restart(location);
  desktop.settle();
  return log.lines;
}

}  // namespace veltrik
