#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VeltrikAppKit/Entry.h"

namespace ziptool {

/// The entries whose data don't match what the archive states about them.
class DamagedEntries {
 public:
  /// Notes a file or link whose checksum differs; directories have no data to check.
  void compare(const veltrik::Entry& entry, std::uint32_t checksum);
  void add(const veltrik::Entry& entry);

  /// Prints every name on standard output and throws `corruptedData`; does nothing when all is well.
  void reportAndThrow(const std::string& archive) const;

 private:
  std::vector<std::string> paths_;
};

}  // namespace ziptool
