#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "VeltrikAppKit/Archive.h"

namespace ziptool {

/// Opens an archive or throws: `fileReadNoSuchFile` for none, `unreadableArchive` or, for a change, `unwritableArchive`
/// for what is no archive or forbidden.
std::unique_ptr<veltrik::Archive> openForReading(const std::string& path);
std::unique_ptr<veltrik::Archive> openForChanging(const std::string& path);

/// The entry with this path; throws `fileReadNoSuchFile` with both paths for none.
veltrik::Entry requireEntry(const veltrik::Archive& archive, const std::string& path);

/// Reading ends at the first entry that is encrypted, needs ZIP64 or is damaged; throws `unreadableArchive` when that
/// left entries out, so that nobody takes a part for the whole.
void requireAllEntries(const veltrik::Archive& archive, std::size_t entriesRead);

}  // namespace ziptool
