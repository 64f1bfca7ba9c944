#include "VeltrikAppKit/ArchiveError.h"

#include <array>
#include <system_error>

#include "Platform/Foundation/CocoaError.h"

namespace veltrik {

namespace {

constexpr std::array<std::string_view, 7> kArchiveErrorNames = {"unreadableArchive",
                                                                "unwritableArchive",
                                                                "invalidEntryPath",
                                                                "invalidCompressionMethod",
                                                                "invalidStartOfCentralDirectoryOffset",
                                                                "missingEndOfCentralDirectoryRecord",
                                                                "cancelledOperation"};
constexpr std::array<std::string_view, 2> kDataErrorNames = {"unreadableFile", "unwritableFile"};
constexpr std::array<std::string_view, 2> kCompressionErrorNames = {"invalidStream", "corruptedData"};

template <class Case, std::size_t count>
std::string_view nameOf(Case code, const std::array<std::string_view, count>& names) {
  return names.at(static_cast<std::size_t>(code));
}

}  // namespace

ZIPError::ZIPError(std::string_view name, std::string cause) : name_(name), cause_(std::move(cause)) {
  compose();
}

void ZIPError::addContext(std::string_view entry, std::string_view path) {
  if (entry_.empty()) entry_ = entry;
  if (path_.empty()) path_ = path;
  compose();
}

void ZIPError::compose() {
  what_ = platform::describeFailure(name_, entry_, path_, cause_);
}

ArchiveError::ArchiveError(Case code, std::string cause)
    : ZIPError(nameOf(code, kArchiveErrorNames), std::move(cause)), code_(code) {}

DataError::DataError(Case code, std::string cause)
    : ZIPError(nameOf(code, kDataErrorNames), std::move(cause)), code_(code) {}

DataError::DataError(Case code, int errorNumber) : DataError(code, std::generic_category().message(errorNumber)) {}

CompressionError::CompressionError(Case code, std::string cause)
    : ZIPError(nameOf(code, kCompressionErrorNames), std::move(cause)), code_(code) {}

}  // namespace veltrik
