#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace platform {

/// The key under which a file error carries the path it is about.
inline constexpr std::string_view NSFilePathErrorKey = "NSFilePathErrorKey";

/// A failed operation on the file system: a code with the platform's usual number, the path it is about and the cause.
class PLATFORM_EXPORT CocoaError : public std::exception {
 public:
  enum class Code : int {
    fileNoSuchFile = 4,
    fileReadUnknown = 256,
    fileReadNoPermission = 257,
    fileReadInvalidFileName = 258,
    fileReadNoSuchFile = 260,
    fileReadTooLarge = 263,
    fileWriteUnknown = 512,
    fileWriteNoPermission = 513,
    fileWriteInvalidFileName = 514,
    fileWriteFileExists = 516,
    fileWriteOutOfSpace = 640,
    fileWriteVolumeReadOnly = 642,
  };

  /// `path` may be empty when the error is about no path in particular; `cause` is a short text such as the system's
  /// own.
  explicit CocoaError(Code code, std::string path = {}, std::string cause = {});

  /// The error for a system call on `path` that failed with `errorNumber`; codes of reading or of writing.
  static CocoaError reading(int errorNumber, std::string path);
  static CocoaError writing(int errorNumber, std::string path);

  Code code() const { return code_; }
  /// The case's name, such as "fileWriteFileExists".
  std::string_view name() const;
  /// What stands under `NSFilePathErrorKey`; empty for nothing.
  const std::string& path() const { return path_; }
  const std::string& cause() const { return cause_; }

  /// Says in `what()` which archive entry was being worked on. The first one told stays.
  void setEntry(std::string_view entry);
  const std::string& entry() const { return entry_; }

  /// "fileWriteFileExists: entry 'a.txt', path '/tmp/a.txt': File exists", without the parts that are not known.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  void compose();

  Code code_;
  std::string path_;
  std::string cause_;
  std::string entry_;
  std::string what_;
};

/// One line for a failure: the case's name, then whichever of entry, path and cause are known.
PLATFORM_EXPORT std::string describeFailure(std::string_view name, std::string_view entry, std::string_view path,
                                            std::string_view cause);

}  // namespace platform
