#include "VeltrikAppKit/WebViewRequest.h"

#include <fcntl.h>
#include <sys/file.h>

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Progress.h"
#include "Platform/Foundation/UserDirectories.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {

using platform::Dictionary;
using platform::URL;

namespace {

constexpr const char* kWebViewAppFileName = "MireloWebView_1_1_2.app";
constexpr const char* kUnpacking = ".MireloWebView.unpacking/";

platform::Size windowSize(const std::string& name) {
  if (name == "small") return {360, 660};
  if (name == "medium") return {640, 660};
  if (name == "large") return {900, 660};
  return {420, 680};
}

std::optional<URL> inWebViewDirectory(const std::string& name) {
  const auto directory = webViewDirectoryURL();
  return directory ? std::optional(directory->appendingPathComponent(name)) : std::nullopt;
}

/// Going through an archive ends without a word at an entry that can't be read.
void requireAllEntries(const URL& archiveURL) {
  const auto archive = Archive::open(archiveURL);
  if (!archive) return;
  int read = 0;
  for ([[maybe_unused]] const Entry& entry : *archive) ++read;
  if (read != archive->endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory)
    throw platform::CocoaError(platform::CocoaError::Code::fileReadUnknown, archiveURL.path(),
                               "the archive is damaged");
}

}  // namespace

Dictionary WebViewRequest::launchArgument(const std::string& openerBundleUrl, const std::string& openerBundleID) const {
  return {{"openerBundleUrl", openerBundleUrl},
          {"openerBundleID", openerBundleID},
          {"url", url},
          {"customHeader", customHeader},
          {"customUserAgent", customUserAgent}};
}

Dictionary WebViewRequest::pageParameters() const {
  Dictionary parameters = {{"url", url}, {"customHeader", customHeader}, {"customUserAgent", customUserAgent}};
  for (const auto& [key, value] : options) {
    const auto* const text = value.get<std::string>();
    const bool isSizeName = key == "windowSize" && text;
    parameters.insert_or_assign(key, isSizeName ? platform::Value(NSStringFromSize(windowSize(*text))) : value);
  }
  return parameters;
}

std::optional<URL> webViewDirectoryURL() {
  const std::string identifier = platform::Bundle::main()->bundleIdentifier();
  if (identifier.empty()) return std::nullopt;
  return platform::cachesDirectory()
      .appendingPathComponent(identifier)
      .appendingPathComponent("PlugIns")
      .appendingPathComponent("WebView");
}

std::optional<URL> webViewAppURL() {
  return inWebViewDirectory(kWebViewAppFileName);
}

std::optional<URL> webViewArchiveURL() {
  return inWebViewDirectory(std::string(kWebViewAppFileName) + ".zip");
}

void unpackWebViewArchive(const URL& archive) {
  const platform::FileManager files;
  const URL folder = archive.deletingLastPathComponent();
  const platform::FileDescriptor lock(open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock || flock(lock.get(), LOCK_EX) != 0) throw platform::CocoaError::reading(errno, folder.path());
  const URL unpacking = folder.appendingPathComponent(kUnpacking);
  // A half-unpacked companion under its final name would be taken for a whole one from then on.
  if (files.isReachableItem(unpacking)) files.removeItem(unpacking);
  platform::Progress progress;
  try {
    requireAllEntries(archive);
    unzipItem(archive, unpacking, {.progress = &progress});
    if (files.isReachableItem(unpacking)) {
      files.synchronizeFileSystem(unpacking);
      for (const URL& item : files.contentsOfDirectory(unpacking))
        files.moveItem(item, folder.appendingPathComponent(item.lastPathComponent()));
      files.removeItem(unpacking);
    }
  } catch (...) {
    if (files.isReachableItem(unpacking)) files.removeItem(unpacking);
    throw;
  }
}

}  // namespace veltrik
