#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "Tests/ScratchFolder.h"
#include "Tests/Zip/HostileArchives.h"
#include "VeltrikAppKit/Archive.h"

namespace veltrik {

/// Hands out a text.
inline ByteProvider from(std::string text) {
  return [text = std::move(text)](std::int64_t position, std::span<std::byte> destination) {
    const auto rest = platform::bytesOf(text).subspan(std::min(static_cast<std::size_t>(position), text.size()));
    const std::size_t count = std::min(rest.size(), destination.size());
    std::copy_n(rest.begin(), count, destination.begin());
    return count;
  };
}

/// The name of the error that ends the work; empty when it is done.
template <class Work>
std::string failureOf(const Work& work) {
  try {
    work();
    return "";
  } catch (const ZIPError& error) {
    return std::string(error.name());
  } catch (const platform::CocoaError& error) {
    return std::string(error.name());
  }
}

/// A folder to work in.
class ArchiveFixture : public testing::Test {
 protected:
  platform::URL url(const std::string& name) const { return platform::URL::fileURL((root_ / name).string()); }

  const ScratchFolder folder_;
  const std::filesystem::path root_ = folder_.path();
};

/// An archive open for changing, in memory or in the folder's only file, with a view on its bytes.
class ChangingFixture : public ArchiveFixture, public testing::WithParamInterface<bool> {
 protected:
  void openOn(platform::DataView bytes) {
    const ArchiveOptions options{.accessMode = ArchiveAccessMode::update};
    writeText(root_ / "a.zip", platform::textOf(bytes));
    archive_ = GetParam() ? Archive::open(platform::copyOf(bytes), options) : Archive::open(url("a.zip"), options);
    ASSERT_NE(archive_, nullptr);
  }
  std::string bytes() const {
    return GetParam() ? std::string(platform::textOf(*archive_->data())) : readText(root_ / "a.zip");
  }
  /// The paths that a fresh look at the bytes shows; everything there must be sound, and what the archive holds.
  std::vector<std::string> soundPaths() const {
    std::vector<std::string> paths;
    const auto fresh = Archive::open(platform::copyOf(platform::bytesOf(bytes())));
    if (!fresh) throw std::runtime_error("no archive");
    for (const Entry& entry : *fresh) {
      EXPECT_EQ(fresh->extract(entry, [](platform::DataView) {}), entry.checksum()) << entry.path();
      paths.push_back(entry.path());
    }
    EXPECT_EQ(paths.size(), fresh->endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory);
    EXPECT_EQ(fresh->endOfCentralDirectoryRecord().data(), archive_->endOfCentralDirectoryRecord().data());
    return paths;
  }

  std::unique_ptr<Archive> archive_;
};

inline std::string placeName(const testing::TestParamInfo<bool>& isInMemory) {
  return isInMemory.param ? "InMemory" : "OnDisk";
}

}  // namespace veltrik
