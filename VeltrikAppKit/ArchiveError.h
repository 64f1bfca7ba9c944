#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>

namespace veltrik {

/// What the errors of the ZIP library have in common: a case, and as far as they are known the entry and the path the
/// work was about and the cause, all of which stand in `what()`: "invalidCompressionMethod: entry 'a.bin', path
/// '/tmp/x.zip': method 12".
class ZIPError : public std::exception {
 public:
  /// The case's name, such as "cancelledOperation".
  std::string_view name() const { return name_; }
  const std::string& entry() const { return entry_; }
  const std::string& path() const { return path_; }
  const std::string& cause() const { return cause_; }

  /// Adds what the place of the failure did not know. What is known already stays.
  void addContext(std::string_view entry, std::string_view path);

  const char* what() const noexcept override { return what_.c_str(); }

 protected:
  ZIPError(std::string_view name, std::string cause);

 private:
  void compose();

  std::string_view name_;
  std::string entry_;
  std::string path_;
  std::string cause_;
  std::string what_;
};

/// What can be wrong with an archive or with what is asked of it. Equal, and hashed, by case.
class ArchiveError : public ZIPError {
 public:
  enum class Case {
    unreadableArchive,
    unwritableArchive,
    invalidEntryPath,
    invalidCompressionMethod,
    invalidStartOfCentralDirectoryOffset,
    missingEndOfCentralDirectoryRecord,
    cancelledOperation,
  };

  explicit ArchiveError(Case code, std::string cause = {});
  Case code() const { return code_; }
  friend bool operator==(const ArchiveError& a, const ArchiveError& b) { return a.code_ == b.code_; }

 private:
  Case code_;
};

/// The archive's bytes, or those of a file being added or extracted, could not be read or written.
class DataError : public ZIPError {
 public:
  enum class Case { unreadableFile, unwritableFile };

  explicit DataError(Case code, std::string cause = {});
  /// With the system's text for `errorNumber` as the cause.
  DataError(Case code, int errorNumber);
  Case code() const { return code_; }
  friend bool operator==(const DataError& a, const DataError& b) { return a.code_ == b.code_; }

 private:
  Case code_;
};

/// The DEFLATE engine could not be started (`invalidStream`), or what it was fed is no complete DEFLATE stream.
class CompressionError : public ZIPError {
 public:
  enum class Case { invalidStream, corruptedData };

  explicit CompressionError(Case code, std::string cause = {});
  Case code() const { return code_; }
  friend bool operator==(const CompressionError& a, const CompressionError& b) { return a.code_ == b.code_; }

 private:
  Case code_;
};

}  // namespace veltrik

template <>
struct std::hash<veltrik::ArchiveError> {
  std::size_t operator()(const veltrik::ArchiveError& error) const noexcept {
    return std::hash<int>()(static_cast<int>(error.code()));
  }
};
