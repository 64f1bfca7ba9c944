#pragma once

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/URL.h"

namespace veltrik {

/// Puts a new bundle in the place of an installed one, so that whatever ends this process, or the machine, a complete
/// bundle, old or new, stands there, and what is written is on disk before a step relies on it.
///
/// It builds and discards in a hidden folder of its own beside the bundle, ".NAME.update", which is there while it
/// works: one found at the beginning was left by a run that was killed. Any thread, one at a time.
class BundleInstallation {
 public:
  BundleInstallation(platform::URL installed, platform::URL backup);
  /// Removes the hidden folder with all that was discarded.
  ~BundleInstallation();
  BundleInstallation(const BundleInstallation&) = delete;
  BundleInstallation& operator=(const BundleInstallation&) = delete;

  /// Clears away what a killed run left, and makes a complete copy of the installed bundle that then appears at the
  /// backup's place. Throws `CocoaError` with nothing changed; for a backup that is there already too, and while
  /// another process installs beside.
  void makeBackup();
  /// Swaps in one step where the file system can; else there is a moment without a bundle, in which the backup stands.
  /// Throws `CocoaError`; then the old bundle stands in its place, or none (`isInstalled`).
  void replaceBy(const platform::URL& newBundle);
  bool isInstalled() const;
  /// Moves the backup to where no bundle is. Throws `CocoaError`; the backup then stays.
  void restoreBackup();
  /// The backup vanishes in one step. Throws `CocoaError`.
  void removeBackup();

 private:
  void lock();
  void recover();
  bool hasBackup() const;
  platform::URL inside(const char* name) const;
  void moveDurably(const platform::URL& from, const platform::URL& to) const;
  void exchangeBack() const;
  void removeAndMove();

  platform::FileManager files_;
  platform::URL installed_;
  platform::URL backup_;
  platform::URL folder_;
  platform::URL work_;
  platform::FileDescriptor lock_;
};

}  // namespace veltrik
