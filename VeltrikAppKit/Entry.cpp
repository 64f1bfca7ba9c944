#include "VeltrikAppKit/Entry.h"

#include <sys/stat.h>

#include <algorithm>

namespace veltrik {

namespace {

using platform::DataView;

constexpr std::uint16_t kVersionMadeBy = 0x0315;  // UNIX, format version 2.1

Entry::OSType systemOf(const Entry::CentralDirectoryStructure& structure) {
  switch (const auto system = static_cast<Entry::OSType>(structure.versionMadeBy >> 8)) {
    case Entry::OSType::msdos:
    case Entry::OSType::unix:
    case Entry::OSType::osx:
      return system;
    default:
      return Entry::OSType::unused;
  }
}

std::uint16_t defaultPermissions(Entry::EntryType type) {
  return type == Entry::EntryType::directory ? defaultDirectoryPermissions : defaultFilePermissions;
}

mode_t modeOf(std::uint32_t externalAttributes) {
  return externalAttributes >> 16;
}

}  // namespace

std::uint32_t Entry::CentralDirectoryStructure::storedSize() const {
  return compressionMethod == static_cast<std::uint16_t>(CompressionMethod::none) ? uncompressedSize : compressedSize;
}

Entry::CentralDirectoryStructure Entry::CentralDirectoryStructure::of(const LocalFileHeader& header,
                                                                      std::uint32_t externalAttributes,
                                                                      std::uint32_t offset) {
  const DataView name = header.fileNameData();
  return {.versionMadeBy = kVersionMadeBy,
          .versionNeededToExtract = header.versionNeededToExtract,
          .generalPurposeBitFlag = header.generalPurposeBitFlag,
          .compressionMethod = header.compressionMethod,
          .lastModFileTime = header.lastModFileTime,
          .lastModFileDate = header.lastModFileDate,
          .crc32 = header.crc32,
          .compressedSize = header.compressedSize,
          .uncompressedSize = header.uncompressedSize,
          .fileNameLength = header.fileNameLength,
          .externalFileAttributes = externalAttributes,
          .relativeOffsetOfLocalHeader = offset,
          .variableData = platform::copyOf(name)};
}

std::optional<Entry> Entry::make(CentralDirectoryStructure structure, LocalFileHeader header,
                                 std::optional<DataDescriptor> descriptor) {
  Entry entry;
  entry.centralDirectoryStructure_ = std::move(structure);
  entry.localFileHeader_ = std::move(header);
  entry.dataDescriptor_ = descriptor;
  return entry.isSupported() ? std::optional(std::move(entry)) : std::nullopt;
}

bool Entry::isSupported() const {
  return !centralDirectoryStructure_.requiresZIP64() && !centralDirectoryStructure_.encryptionBitSet();
}

std::string Entry::path() const {
  using platform::StringEncoding;
  return path(centralDirectoryStructure_.hasUTF8Path() ? StringEncoding::utf8 : StringEncoding::codePage437);
}

std::string Entry::path(platform::StringEncoding encoding) const {
  return platform::decode(centralDirectoryStructure_.fileNameData(), encoding).value_or(std::string());
}

Entry::EntryType Entry::type() const {
  const std::uint32_t attributes = centralDirectoryStructure_.externalFileAttributes;
  // In every encoding of names the last character is "/" when the last byte is, unless the name can't be decoded at
  // all.
  const bool isNamedDirectory =
      platform::textOf(centralDirectoryStructure_.fileNameData()).ends_with('/') && !path().empty();
  const EntryType byName = isNamedDirectory ? EntryType::directory : EntryType::file;
  switch (systemOf(centralDirectoryStructure_)) {
    case OSType::msdos:
      // The whole value and not the one bit: other attributes beside it leave the decision to the name.
      return (attributes >> 4) == 1 ? EntryType::directory : byName;
    case OSType::unix:
    case OSType::osx: {
      const mode_t kind = modeOf(attributes) & S_IFMT;
      const bool isKnown = kind == S_IFREG || kind == S_IFDIR || kind == S_IFLNK;
      return isKnown ? entryType(kind) : byName;
    }
    default:
      return byName;
  }
}

std::uint32_t Entry::checksum() const {
  if (!centralDirectoryStructure_.dataDescriptorBitSet()) return centralDirectoryStructure_.crc32;
  return dataDescriptor_ ? dataDescriptor_->crc32 : 0;
}

std::int64_t Entry::compressedSize() const {
  return dataDescriptor_ ? dataDescriptor_->compressedSize : localFileHeader_.compressedSize;
}

std::int64_t Entry::uncompressedSize() const {
  return dataDescriptor_ ? dataDescriptor_->uncompressedSize : localFileHeader_.uncompressedSize;
}

platform::FileAttributes Entry::fileAttributes() const {
  const CentralDirectoryStructure& structure = centralDirectoryStructure_;
  return {posixPermissions(structure.externalFileAttributes, systemOf(structure), type()),
          date(structure.lastModFileDate, structure.lastModFileTime)};
}

std::uint64_t Entry::localRecordLength() const {
  const bool isStored =
      centralDirectoryStructure_.compressionMethod == static_cast<std::uint16_t>(CompressionMethod::none);
  const auto dataSize = static_cast<std::uint64_t>(isStored ? uncompressedSize() : compressedSize());
  return localFileHeader_.size() + dataSize + (dataDescriptor_ ? DataDescriptor::fixedSize : 0);
}

std::uint64_t Entry::dataOffset() const {
  return centralDirectoryStructure_.relativeOffsetOfLocalHeader + localFileHeader_.size();
}

bool operator==(const Entry& a, const Entry& b) {
  return a.centralDirectoryStructure_.relativeOffsetOfLocalHeader ==
             b.centralDirectoryStructure_.relativeOffsetOfLocalHeader &&
         a.localFileHeader_.crc32 == b.localFileHeader_.crc32 && a.path() == b.path();
}

Entry::EntryType entryType(mode_t fileMode) {
  switch (fileMode & S_IFMT) {
    case S_IFDIR:
      return Entry::EntryType::directory;
    case S_IFLNK:
      return Entry::EntryType::symlink;
    default:
      return Entry::EntryType::file;
  }
}

std::uint16_t posixPermissions(std::uint32_t externalAttributes, Entry::OSType system, Entry::EntryType type) {
  const bool hasMode = system == Entry::OSType::unix || system == Entry::OSType::osx;
  const auto permissions = static_cast<std::uint16_t>(modeOf(externalAttributes) & 07777);
  return hasMode && permissions != 0 ? permissions : defaultPermissions(type);
}

std::uint32_t externalAttributes(Entry::EntryType type, std::uint16_t permissions) {
  const mode_t kind = type == Entry::EntryType::directory ? S_IFDIR
                      : type == Entry::EntryType::symlink ? S_IFLNK
                                                          : S_IFREG;
  return static_cast<std::uint32_t>(kind | permissions) << 16;
}

}  // namespace veltrik
