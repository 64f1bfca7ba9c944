#include "Programs/SampleHost/Update.h"

#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Process.h"

namespace samplehost {

using platform::FileManager;
using platform::URL;

namespace {

/// The bundle's Info.plist with another version in it.
void setVersion(const URL& bundle, const std::string& version) {
  if (version.empty() || version.find_first_not_of("0123456789.") != std::string::npos)
    throw std::runtime_error(fmt::format("\"{}\" is not a version", version));
  const FileManager files;
  const URL list = bundle.appendingPathComponent("Contents/Info.plist");
  const platform::Data bytes = files.contents(list);
  std::string text(platform::textOf(bytes));
  const auto key = text.find("<key>CFBundleVersion</key>");
  const auto start = text.find("<string>", key);
  const auto end = text.find("</string>", start);
  if (end == std::string::npos) throw std::runtime_error("the application's Info.plist has no version");
  text.replace(start + 8, end - start - 8, version);
  files.writeAtomically(platform::bytesOf(text), list);
}

void pack(const URL& folder, const std::filesystem::path& archive) {
  platform::Process zip;
  zip.setLaunchPath(platform::Bundle::programPath().replace_filename("veltrik-zip"));
  zip.setArguments({"create", archive, folder.path()});
  zip.launch();
  zip.waitUntilExit();
  if (zip.terminationStatus() != 0) throw std::runtime_error(fmt::format("{} can't be made", archive.string()));
}

}  // namespace

std::string versionOf(const platform::Bundle& bundle) {
  const auto found = bundle.info().find("CFBundleVersion");
  const auto* const text = found == bundle.info().end() ? nullptr : found->second.get<std::string>();
  return text ? *text : std::string();
}

void makeUpdate(const std::string& version, const std::filesystem::path& archive) {
  const auto application = platform::Bundle::main();
  const auto relauncher = platform::Bundle::read(application->path() / "Contents/Resources/MireloRelauncher.app");
  if (!relauncher) throw std::runtime_error("only an application bundle can make an update of itself");
  const FileManager files;
  const URL folder = files.itemReplacementDirectory(URL::fileURL(std::filesystem::absolute(archive).native()));
  try {
    const URL copy = folder.appendingPathComponent(application->url().lastPathComponent() + "/");
    files.copyItem(application->url(), copy);
    files.copyItem(relauncher->url(), folder.appendingPathComponent("MireloRelauncher.app"));
    setVersion(copy, version);
    pack(folder, std::filesystem::absolute(archive));
  } catch (...) {
    files.removeItem(folder);
    throw;
  }
  files.removeItem(folder);
}

void installUpdate(Host& host, const std::string& archive) {
  platform::setLogSink([&host](const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
    if (line.find("relaunch> will open") == std::string::npos) return;
    platform::DispatchQueue::main().async([&host] { host.appKit().terminate(); });
  });
  platform::DispatchQueue::main().async(
      [&host, path = std::filesystem::absolute(archive)] { host.appKit().restartWithDownloadedUpdateFilePath(path); });
}

}  // namespace samplehost
