#include "Programs/ZipTool/OpenArchive.h"

#include <fmt/format.h>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"

namespace ziptool {
namespace {

using platform::CocoaError;
using veltrik::Archive;
using veltrik::ArchiveError;

std::unique_ptr<Archive> openOrThrow(const std::string& path, Archive::AccessMode mode, ArchiveError::Case failure) {
  const auto url = platform::URL::fileURL(path);
  if (!platform::FileManager().isReachableItem(url)) {
    throw CocoaError(CocoaError::Code::fileReadNoSuchFile, path);
  }
  auto archive = Archive::open(url, {.accessMode = mode});
  if (!archive) {
    ArchiveError error(failure, "no archive, or no right to use it");
    error.addContext({}, path);
    throw error;
  }
  return archive;
}

}  // namespace

std::unique_ptr<Archive> openForReading(const std::string& path) {
  return openOrThrow(path, Archive::AccessMode::read, ArchiveError::Case::unreadableArchive);
}

std::unique_ptr<Archive> openForChanging(const std::string& path) {
  return openOrThrow(path, Archive::AccessMode::update, ArchiveError::Case::unwritableArchive);
}

veltrik::Entry requireEntry(const Archive& archive, const std::string& path) {
  auto entry = archive[path];
  if (entry) return *std::move(entry);
  CocoaError error(CocoaError::Code::fileReadNoSuchFile, archive.url().path(), "the archive has no such entry");
  error.setEntry(path);
  throw error;
}

void requireAllEntries(const Archive& archive, std::size_t entriesRead) {
  const std::size_t stated = archive.endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory;
  if (entriesRead >= stated) return;
  ArchiveError error(ArchiveError::Case::unreadableArchive,
                     fmt::format("only {} of {} entries can be read; the next is encrypted, needs ZIP64 or is damaged",
                                 entriesRead, stated));
  error.addContext({}, archive.url().path());
  throw error;
}

}  // namespace ziptool
