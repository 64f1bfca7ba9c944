#include "VeltrikAppKit/BundleInstallation.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>

#include <utility>

#include "Platform/Foundation/CocoaError.h"

namespace veltrik {

using platform::CocoaError;
using platform::URL;

namespace {

constexpr const char* kBackup = "backup";        // the backup while it is being made
constexpr const char* kIncoming = "incoming";    // the new bundle; after the swap the old one
constexpr const char* kOutgoing = "outgoing";    // the old bundle, where it can't be swapped
constexpr const char* kDiscarded = "discarded";  // the backup when it isn't needed any more
constexpr const char* kReplacing = "replacing";  // marks that the installed bundle is being taken apart

}  // namespace

BundleInstallation::BundleInstallation(URL installed, URL backup)
    : installed_(std::move(installed)),
      backup_(std::move(backup)),
      folder_(installed_.deletingLastPathComponent()),
      work_(folder_.appendingPathComponent("." + installed_.lastPathComponent() + ".update/")) {}

BundleInstallation::~BundleInstallation() {
  if (!lock_) return;
  try {
    if (files_.isReachableItem(work_)) files_.removeItem(work_);
  } catch (const CocoaError&) {
    // The next run clears it away.
  }
}

void BundleInstallation::lock() {
  platform::FileDescriptor folder(open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder || flock(folder.get(), LOCK_EX | LOCK_NB) != 0) throw CocoaError::reading(errno, folder_.path());
  lock_ = std::move(folder);
}

URL BundleInstallation::inside(const char* name) const {
  return work_.appendingPathComponent(name);
}

bool BundleInstallation::hasBackup() const {
  return files_.isReachableItem(backup_);
}

bool BundleInstallation::isInstalled() const {
  return files_.isReachableItem(installed_);
}

void BundleInstallation::moveDurably(const URL& from, const URL& to) const {
  files_.moveItem(from, to);
  files_.synchronizeDirectory(folder_);
}

void BundleInstallation::recover() {
  const bool killed = files_.isReachableItem(work_);
  if (killed && hasBackup() && files_.isReachableItem(inside(kReplacing)) && isInstalled())
    files_.removeItem(installed_);
  if (hasBackup() && !isInstalled()) restoreBackup();
  if (!killed) return;
  if (hasBackup()) removeBackup();
  files_.removeItem(work_);
}

void BundleInstallation::makeBackup() {
  lock();
  recover();
  if (hasBackup()) throw CocoaError::writing(EEXIST, backup_.path());
  files_.createDirectory(work_, false);
  // Bundles are replaced and never written into, so second names for the files do for a copy.
  files_.linkItem(installed_, inside(kBackup));
  files_.synchronizeFileSystem(work_);
  files_.moveItem(inside(kBackup), backup_);
  try {
    files_.synchronizeDirectory(folder_);
  } catch (...) {
    files_.moveItem(backup_, inside(kDiscarded));
    throw;
  }
}

void BundleInstallation::replaceBy(const URL& newBundle) {
  if (files_.isSameItem(newBundle, installed_)) throw CocoaError::writing(EEXIST, installed_.path());
  files_.moveItem(newBundle, inside(kIncoming));
  files_.synchronizeFileSystem(work_);
  if (!files_.exchangeItems(inside(kIncoming), installed_)) return removeAndMove();
  try {
    files_.synchronizeDirectory(folder_);
  } catch (...) {
    exchangeBack();
    throw;
  }
}

void BundleInstallation::exchangeBack() const {
  try {
    files_.exchangeItems(inside(kIncoming), installed_);
  } catch (const CocoaError&) {
    // Then it is the new bundle that stands there, whole as well.
  }
}

void BundleInstallation::removeAndMove() {
  const URL mark = inside(kReplacing);
  const bool movedAside = rename(installed_.path().c_str(), inside(kOutgoing).path().c_str()) == 0;
  if (!movedAside) {
    // A file system in layers doesn't move the lower one's folders. From here on a killed run leaves a bundle in
    // pieces, which the mark tells the next one.
    if (errno != EXDEV) throw CocoaError::writing(errno, installed_.path());
    files_.createDirectory(mark, false);
    files_.synchronizeFileSystem(work_);
    files_.removeItem(installed_);
  }
  moveDurably(inside(kIncoming), installed_);
  if (!movedAside) files_.removeItem(mark);
}

void BundleInstallation::restoreBackup() {
  moveDurably(backup_, installed_);
}

void BundleInstallation::removeBackup() {
  if (files_.isReachableItem(inside(kDiscarded))) files_.removeItem(inside(kDiscarded));
  files_.moveItem(backup_, inside(kDiscarded));
}

}  // namespace veltrik
