#include "VeltrikAppKit/AppRestarter.h"

#include <unistd.h>

#include <utility>

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Process.h"
#include "Platform/Foundation/Unicode.h"
#include "VeltrikAppKit/BundleInstallation.h"
#include "VeltrikAppKit/DictionaryText.h"
#include "VeltrikAppKit/FileManager+ZIP.h"
#include "VeltrikAppKit/UnpackFolder.h"

namespace veltrik {

using platform::Bundle;
using platform::CocoaError;
using platform::DispatchQueue;
using platform::NSLog;
using platform::Process;
using platform::URL;

namespace {

constexpr const char* kUnzip = "/usr/bin/unzip";
constexpr const char* kOpen = "/usr/bin/open";
/// More than it says about the largest archive that makes sense.
constexpr std::size_t kMostUnzipOutput = std::size_t{64} << 20;

/// Also a path that has characters in it which a URL may not have.
std::optional<URL> locationFrom(const std::string& text) {
  if (text.starts_with('/')) return URL::fileURL(text);
  const auto url = URL::fromString(text);
  return url && url->isFileURL() ? url : std::nullopt;
}

std::string listForm(const std::vector<std::string>& texts) {
  platform::Value::Array values(texts.begin(), texts.end());
  if (values.empty()) values.emplace_back("none");
  return textualListForm(values);
}

bool isUTF8(std::string_view text) {
  return platform::utf8(platform::utf16(text)) == text;
}

/// True when the child was started and ended with status 0.
bool ranToItsEnd(Process& process) {
  try {
    process.launch();
    process.waitUntilExit();
    return process.terminationStatus() == 0;
  } catch (const CocoaError&) {
    return false;
  }
}

void startOnItsOwn(Process& process) {
  try {
    process.launchDetached();
  } catch (const CocoaError& failure) {
    NSLog(std::string("[Mirelo AppRestarter] ") + failure.what());
  }
}

}  // namespace

void AppRestarter::logRestarter(const std::string& message) {
  NSLog("[Mirelo AppRestarter] " + message);
}

void AppRestarter::restart(const std::string& downloadLocation) {
  const auto location = locationFrom(downloadLocation);
  if (!location) return;
  unzipDownloadedFile(*location, [weak = weak_from_this(), downloadLocation](const std::optional<URL>& application) {
    if (weak.expired()) return;
    logRestarter("unzip succeed " + downloadLocation);
    if (application && Bundle::read(application->path())) installAndRestart(*application);
  });
}

void AppRestarter::unzipDownloadedFile(const URL& downloadLocation, Unpacked completion) {
  logRestarter("start unzip " + downloadLocation.absoluteString());
  if (!UnpackFolder(downloadLocation).clearFor(Bundle::main()->url()))
    return DispatchQueue::main().async([completion = std::move(completion)] { completion(std::nullopt); });
  Process process;
  process.setCurrentDirectory(downloadLocation.deletingLastPathComponent().path());
  process.setLaunchPath(kUnzip);
  process.setArguments({UnpackFolder(downloadLocation).archiveArgument()});
  // Nothing of this process's: variables such as UNZIP change what the tool does.
  process.setEnvironment({"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8"});
  process.setSilenceLimit(unzipSilence_);
  runProcess(process, [weak = weak_from_this(), downloadLocation, completion = std::move(completion)](
                          bool success, const std::optional<std::string>&) {
    std::optional<URL> application;
    try {
      if (success && !weak.expired()) application = findApp(downloadLocation);
    } catch (const CocoaError&) {
      // As if there were none.
    }
    completion(application);
  });
}

void AppRestarter::runProcess(Process& process, Ran completion) {
  NSLog("[Mirelo AppRestarter] process start launchPath = " + process.launchPath());
  NSLog("[Mirelo AppRestarter] process start arguments = " + listForm(process.arguments()));
  process.captureStandardOutput(kMostUnzipOutput);
  std::optional<std::string> output;
  if (!ranToItsEnd(process)) {
    NSLog("[Mirelo AppRestarter] The process fail to operate. (terminationStatus != 0)");
  } else if (const auto text = platform::textOf(process.standardOutput()); text.empty() || !isUTF8(text)) {
    NSLog("[mirelo apprestarter] the process fail to operate. (can't get data from pipe)");
  } else {
    output = text;
    NSLog("[mirelo apprestarter] process succeed. result = " + *output);
  }
  DispatchQueue::main().async(
      [output = std::move(output), completion = std::move(completion)] { completion(output.has_value(), output); });
}

std::optional<URL> AppRestarter::findApp(const URL& downloadLocation) {
  const URL folder = downloadLocation.deletingLastPathComponent();
  logRestarter("find app in unziped files " + folder.absoluteString());
  for (const URL& item : platform::FileManager().contentsOfDirectory(folder)) {
    logRestarter("findApp check file " + item.absoluteString());
    if (item.pathExtension() != "app") continue;
    if (item.absoluteString().find("Relauncher") != std::string::npos) continue;
    if (entryType(item) != Entry::EntryType::directory) continue;
    // The tool ends with success even when it left something out.
    if (!UnpackFolder(downloadLocation).isComplete()) continue;
    logRestarter("found app " + item.absoluteString());
    return item;
  }
  logRestarter("findApp failed");
  return std::nullopt;
}

void AppRestarter::installAndRestart(const URL& newBundle) {
  logRestarter("now will install downloaded bundle and restart");
  const URL installed = Bundle::main()->url();
  logRestarter("installAndRestart> installedAppBundle, backupPath = " + installed.absoluteString());
  const auto parsed = URL::fromString(installed.absoluteString());
  // A program outside a bundle has nothing that could be replaced; its "bundle" is the folder that it lies in.
  if (!parsed || Bundle::main()->info().empty()) return logRestarter("installAndRestart> backupPath is not valid");
  const URL backup = parsed->appendingPathExtension("backup");
  const URL relauncherFolder = newBundle.deletingLastPathComponent();
  {
    BundleInstallation installation(installed, backup);
    try {
      installation.makeBackup();
    } catch (const CocoaError&) {
      return logRestarter("installAndRestart> failed to copy backup file");
    }
    try {
      installation.replaceBy(newBundle);
    } catch (const CocoaError&) {
      logRestarter("installAndRestart> failed to remove current bundle or move target bundle to current location");
      return rollback(installation, installed, backup);
    }
    try {
      installation.removeBackup();
    } catch (const CocoaError&) {
      // The new bundle stands; the old one's copy does no harm.
    }
  }
  const std::string bundlePath = Bundle::main()->path();
  logRestarter("installAndRestart> will relaunch copyed bundle, launcherPath = " + relauncherFolder.absoluteString());
  logRestarter("installAndRestart> will relaunch copyed bundle, bundlePath = " + bundlePath);
  relaunch(bundlePath, relauncherFolder.absoluteString());
}

void AppRestarter::relaunch(const std::string& bundlePath, const std::string& relauncherFolder) {
  Process process;
  process.setLaunchPath(kOpen);
  process.setArguments(
      {relauncherFolder + "MireloRelauncher.app", "--args", "-t", bundlePath, "-pid", std::to_string(getpid())});
  logRestarter("relaunch> will open MireloRelauncher.app arguments = " + listForm(process.arguments()));
  startOnItsOwn(process);
}

void AppRestarter::rollback(BundleInstallation& installation, const URL& installed, const URL& backup) {
  logRestarter("rollback started");
  logRestarter("rollback> currentUrl = " + installed.absoluteString());
  logRestarter("rollback> backupUrl = " + backup.absoluteString());
  if (installation.isInstalled()) {
    logRestarter("rollback> restore target file is already exist = " + installed.absoluteString());
    return removeBackup(installation, backup);
  }
  try {
    installation.restoreBackup();
  } catch (const CocoaError&) {
    // The backup is now the only copy there is, so it stays.
    return logRestarter("rollback> restore failed");
  }
  removeBackup(installation, backup);
}

void AppRestarter::removeBackup(BundleInstallation& installation, const URL& backup) {
  logRestarter("rollback> remove backup file = " + backup.absoluteString());
  try {
    installation.removeBackup();
  } catch (const CocoaError&) {
    // It was moved back into its place, or can't be removed; neither matters to the installed bundle.
  }
}

void AppRestarter::appDidTerminated(const platform::Notification&) {
  const std::string executable = Bundle::main()->executablePath();
  if (!platform::FileManager().fileExists(executable)) return;
  Process process;
  process.setLaunchPath(executable);
  startOnItsOwn(process);
}

}  // namespace veltrik
