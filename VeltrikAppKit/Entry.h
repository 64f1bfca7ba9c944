#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/StringEncoding.h"

namespace veltrik {

using Date = std::chrono::system_clock::time_point;

enum class CompressionMethod : std::uint16_t { none = 0, deflate = 8 };

inline constexpr std::uint16_t defaultFilePermissions = 0644;
inline constexpr std::uint16_t defaultDirectoryPermissions = 0755;

/// Gives the next `count` bytes after a record's fixed part, fewer when there are no more. Valid until the next call.
using RecordProvider = std::function<platform::DataView(std::size_t count)>;

/// One member of an archive: what its records in the archive (APPNOTE.TXT, 4.3) say about it. A value, independent of
/// the archive it was read from.
class Entry {
 public:
  enum class EntryType { file, directory, symlink };
  enum class OSType { msdos = 0, unix = 3, osx = 19, unused = 20 };

  /// Stands before the entry's data.
  struct LocalFileHeader {
    static constexpr std::uint32_t signature = 0x04034b50;
    static constexpr std::size_t fixedSize = 30;

    std::uint16_t versionNeededToExtract = 0;
    std::uint16_t generalPurposeBitFlag = 0;
    std::uint16_t compressionMethod = 0;
    std::uint16_t lastModFileTime = 0;
    std::uint16_t lastModFileDate = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint16_t fileNameLength = 0;
    std::uint16_t extraFieldLength = 0;
    /// Name and extra field, one after the other.
    platform::Data variableData;

    /// Nothing when `fixed` is not exactly `fixedSize` bytes, has another signature, or the provider throws or gives
    /// too little.
    static std::optional<LocalFileHeader> parse(platform::DataView fixed, const RecordProvider& provider);
    /// Becomes what `parse` would give, in the memory that this record has already; false leaves it of no use.
    bool read(platform::DataView fixed, const RecordProvider& provider);
    platform::Data data() const;
    platform::DataView fileNameData() const;
    platform::DataView extraFieldData() const;
    /// From the start of the header to that of the data.
    std::uint64_t size() const { return fixedSize + fileNameLength + extraFieldLength; }
  };

  /// Stands behind the data of an entry that was written before its size was known. Its signature may be missing.
  struct DataDescriptor {
    static constexpr std::uint32_t signature = 0x08074b50;
    static constexpr std::size_t fixedSize = 16;

    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    bool hasSignature = false;

    /// Nothing when `fixed` is not exactly `fixedSize` bytes.
    static std::optional<DataDescriptor> parse(platform::DataView fixed, const RecordProvider& provider);
    bool read(platform::DataView fixed, const RecordProvider& provider);
  };

  /// The entry's place in the list of contents at the archive's end.
  struct CentralDirectoryStructure {
    static constexpr std::uint32_t signature = 0x02014b50;
    static constexpr std::size_t fixedSize = 46;

    std::uint16_t versionMadeBy = 0;
    std::uint16_t versionNeededToExtract = 0;
    std::uint16_t generalPurposeBitFlag = 0;
    std::uint16_t compressionMethod = 0;
    std::uint16_t lastModFileTime = 0;
    std::uint16_t lastModFileDate = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint16_t fileNameLength = 0;
    std::uint16_t extraFieldLength = 0;
    std::uint16_t fileCommentLength = 0;
    std::uint16_t diskNumberStart = 0;
    std::uint16_t internalFileAttributes = 0;
    std::uint32_t externalFileAttributes = 0;
    std::uint32_t relativeOffsetOfLocalHeader = 0;
    /// Name, extra field and comment, one after the other.
    platform::Data variableData;

    static std::optional<CentralDirectoryStructure> parse(platform::DataView fixed, const RecordProvider& provider);
    bool read(platform::DataView fixed, const RecordProvider& provider);
    /// The same without the variable data.
    bool readFixed(platform::DataView fixed);
    /// The structure of an entry whose local header was just written at `offset`.
    static CentralDirectoryStructure of(const LocalFileHeader& header, std::uint32_t externalAttributes,
                                        std::uint32_t offset);
    platform::Data data() const;
    platform::DataView fileNameData() const;
    platform::DataView extraFieldData() const;
    platform::DataView fileCommentData() const;
    std::uint64_t size() const { return fixedSize + fileNameLength + extraFieldLength + fileCommentLength; }

    bool encryptionBitSet() const { return (generalPurposeBitFlag & 0x0001) != 0; }
    bool dataDescriptorBitSet() const { return (generalPurposeBitFlag & 0x0008) != 0; }
    bool hasUTF8Path() const { return (generalPurposeBitFlag & 0x0800) != 0; }
    bool requiresZIP64() const { return versionNeededToExtract >= 45; }
    /// How many bytes of data stand in the archive, as far as this structure knows.
    std::uint32_t storedSize() const;
  };

  /// Nothing for an entry that is encrypted or needs ZIP64.
  static std::optional<Entry> make(CentralDirectoryStructure structure, LocalFileHeader header,
                                   std::optional<DataDescriptor> descriptor);

  const CentralDirectoryStructure& centralDirectoryStructure() const { return centralDirectoryStructure_; }
  const LocalFileHeader& localFileHeader() const { return localFileHeader_; }
  const std::optional<DataDescriptor>& dataDescriptor() const { return dataDescriptor_; }

  /// The name as UTF-8: decoded from UTF-8 if the entry says so, else from code page 437. Parts are separated by "/".
  std::string path() const;
  /// The name decoded from `encoding`; empty when it is not well formed in it.
  std::string path(platform::StringEncoding encoding) const;
  EntryType type() const;
  /// The CRC-32 the archive states; 0 when it should stand in a descriptor that could not be read.
  std::uint32_t checksum() const;
  /// Bytes in the archive and after decompression, as the descriptor or else the local header states them.
  std::int64_t compressedSize() const;
  std::int64_t uncompressedSize() const;
  /// Permissions (the default ones when the entry has none) and modification date, of two-second steps, in UTC.
  platform::FileAttributes fileAttributes() const;

  /// From the start of the local header to the end of the data, or of the descriptor.
  std::uint64_t localRecordLength() const;
  /// Where the data begin in the archive.
  std::uint64_t dataOffset() const;

  /// Equal path, local checksum and place in the archive.
  friend bool operator==(const Entry& a, const Entry& b);

 private:
  friend class EntryReader;
  Entry() = default;
  bool isSupported() const;

  CentralDirectoryStructure centralDirectoryStructure_;
  LocalFileHeader localFileHeader_;
  std::optional<DataDescriptor> dataDescriptor_;
};

/// `directory` or `symlink` for such a file mode, else `file`.
Entry::EntryType entryType(mode_t fileMode);

// DOS date and time, both read as UTC.
Date date(std::uint16_t dosDate, std::uint16_t dosTime);
/// Years are held between 1980 and 2099.
std::uint16_t dosDate(Date date);
std::uint16_t dosTime(Date date);

/// The mode bits 07777 of a UNIX entry, the default for other systems or none.
std::uint16_t posixPermissions(std::uint32_t externalAttributes, Entry::OSType system, Entry::EntryType type);
std::uint32_t externalAttributes(Entry::EntryType type, std::uint16_t permissions);

}  // namespace veltrik
