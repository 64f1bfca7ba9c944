#include "Platform/Foundation/CocoaError.h"

#include <cerrno>
#include <system_error>

namespace platform {

namespace {

using Code = CocoaError::Code;

std::string systemText(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

Code readingCode(int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
      return Code::fileReadNoSuchFile;
    case EACCES:
    case EPERM:
      return Code::fileReadNoPermission;
    case ENAMETOOLONG:
      return Code::fileReadInvalidFileName;
    case EFBIG:
    case EOVERFLOW:
      return Code::fileReadTooLarge;
    default:
      return Code::fileReadUnknown;
  }
}

Code writingCode(int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
      return Code::fileNoSuchFile;
    case EEXIST:
    case ENOTEMPTY:
      return Code::fileWriteFileExists;
    case EACCES:
    case EPERM:
      return Code::fileWriteNoPermission;
    case ENOSPC:
    case EDQUOT:
      return Code::fileWriteOutOfSpace;
    case EROFS:
      return Code::fileWriteVolumeReadOnly;
    case ENAMETOOLONG:
      return Code::fileWriteInvalidFileName;
    default:
      return Code::fileWriteUnknown;
  }
}

}  // namespace

std::string describeFailure(std::string_view name, std::string_view entry, std::string_view path,
                            std::string_view cause) {
  std::string text(name);
  std::string_view separator = ": ";
  if (!entry.empty()) {
    text.append(separator).append("entry '").append(entry).append("'");
    separator = ", ";
  }
  if (!path.empty()) text.append(separator).append("path '").append(path).append("'");
  if (!cause.empty()) text.append(": ").append(cause);
  return text;
}

CocoaError::CocoaError(Code code, std::string path, std::string cause)
    : code_(code), path_(std::move(path)), cause_(std::move(cause)) {
  compose();
}

CocoaError CocoaError::reading(int errorNumber, std::string path) {
  return CocoaError(readingCode(errorNumber), std::move(path), systemText(errorNumber));
}

CocoaError CocoaError::writing(int errorNumber, std::string path) {
  return CocoaError(writingCode(errorNumber), std::move(path), systemText(errorNumber));
}

std::string_view CocoaError::name() const {
  switch (code_) {
    case Code::fileNoSuchFile:
      return "fileNoSuchFile";
    case Code::fileReadUnknown:
      return "fileReadUnknown";
    case Code::fileReadNoPermission:
      return "fileReadNoPermission";
    case Code::fileReadInvalidFileName:
      return "fileReadInvalidFileName";
    case Code::fileReadNoSuchFile:
      return "fileReadNoSuchFile";
    case Code::fileReadTooLarge:
      return "fileReadTooLarge";
    case Code::fileWriteUnknown:
      return "fileWriteUnknown";
    case Code::fileWriteNoPermission:
      return "fileWriteNoPermission";
    case Code::fileWriteInvalidFileName:
      return "fileWriteInvalidFileName";
    case Code::fileWriteFileExists:
      return "fileWriteFileExists";
    case Code::fileWriteOutOfSpace:
      return "fileWriteOutOfSpace";
    case Code::fileWriteVolumeReadOnly:
      return "fileWriteVolumeReadOnly";
  }
  return "unknown";
}

void CocoaError::setEntry(std::string_view entry) {
  if (!entry_.empty()) return;
  entry_ = entry;
  compose();
}

void CocoaError::compose() {
  what_ = describeFailure(name(), entry_, path_, cause_);
}

}  // namespace platform
