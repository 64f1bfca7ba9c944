#include <fcntl.h>

#include "VeltrikAppKit/ArchiveBatch.h"

namespace veltrik {

void Archive::addEntry(std::string_view path, const NewEntry& entry, const ByteProvider& provider,
                       const AddOptions& options) {
  withContext(path, url(), [&] {
    ArchiveBatch batch(*this);
    batch.add(path, entry, provider, options);
    batch.commit();
  });
}

void Archive::addEntry(std::string_view path, const platform::URL& base, const AddOptions& options) {
  withContext(path, url(), [&] {
    const std::string item = base.appendingPathComponent(path).path();
    ArchiveBatch batch(*this);
    batch.addItem(path, {AT_FDCWD, item, item}, options);
    batch.commit();
  });
}

}  // namespace veltrik
