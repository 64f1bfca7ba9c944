#include "Platform/Foundation/ByteCursor.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {

namespace {

using platform::DataView;

/// Reads the fields from `at` on, one after the other; the caller made sure that the bytes are there.
template <class... Fields>
void readFields(const std::byte* at, Fields&... fields) {
  ((fields = platform::loadLittleEndian<Fields>(at), at += sizeof(Fields)), ...);
}

template <class... Fields>
platform::Data written(std::size_t size, DataView variable, Fields... fields) {
  platform::Data data;
  data.reserve(size + variable.size());
  (platform::appendLittleEndian(data, fields), ...);
  platform::append(data, variable);
  return data;
}

constexpr std::size_t kSignatureSize = sizeof(std::uint32_t);

/// False for a wrong size or another signature.
template <class Record>
bool begins(DataView fixed) {
  return fixed.size() == Record::fixedSize &&
         platform::loadLittleEndian<std::uint32_t>(fixed.data()) == Record::signature;
}

template <class Record>
std::optional<Record> parsed(DataView fixed, const RecordProvider& provider) {
  Record record;
  return record.read(fixed, provider) ? std::optional(std::move(record)) : std::nullopt;
}

/// Fetches what follows the fixed part. False when the provider throws or gives another number of bytes.
bool fetch(const RecordProvider& provider, std::size_t count, platform::Data& variable) {
  try {
    const DataView bytes = provider(count);
    if (bytes.size() != count) return false;
    variable.assign(bytes.begin(), bytes.end());
    return true;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    return false;
  }
}

/// A part of the variable data, empty where they are shorter than the lengths say.
DataView part(const platform::Data& variable, std::size_t offset, std::size_t length) {
  const DataView all = variable;
  return offset <= all.size() && length <= all.size() - offset ? all.subspan(offset, length) : DataView();
}

}  // namespace

std::optional<Entry::LocalFileHeader> Entry::LocalFileHeader::parse(DataView fixed, const RecordProvider& provider) {
  return parsed<LocalFileHeader>(fixed, provider);
}

bool Entry::LocalFileHeader::read(DataView fixed, const RecordProvider& provider) {
  if (!begins<LocalFileHeader>(fixed)) return false;
  readFields(fixed.data() + kSignatureSize, versionNeededToExtract, generalPurposeBitFlag, compressionMethod,
             lastModFileTime, lastModFileDate, crc32, compressedSize, uncompressedSize, fileNameLength,
             extraFieldLength);
  return fetch(provider, size() - fixedSize, variableData);
}

platform::Data Entry::LocalFileHeader::data() const {
  return written(fixedSize, variableData, signature, versionNeededToExtract, generalPurposeBitFlag, compressionMethod,
                 lastModFileTime, lastModFileDate, crc32, compressedSize, uncompressedSize, fileNameLength,
                 extraFieldLength);
}

DataView Entry::LocalFileHeader::fileNameData() const {
  return part(variableData, 0, fileNameLength);
}
DataView Entry::LocalFileHeader::extraFieldData() const {
  return part(variableData, fileNameLength, extraFieldLength);
}

std::optional<Entry::DataDescriptor> Entry::DataDescriptor::parse(DataView fixed, const RecordProvider& provider) {
  return parsed<DataDescriptor>(fixed, provider);
}

bool Entry::DataDescriptor::read(DataView fixed, const RecordProvider&) {
  if (fixed.size() != fixedSize) return false;
  hasSignature = platform::loadLittleEndian<std::uint32_t>(fixed.data()) == signature;
  readFields(fixed.data() + (hasSignature ? kSignatureSize : 0), crc32, compressedSize, uncompressedSize);
  return true;
}

std::optional<Entry::CentralDirectoryStructure> Entry::CentralDirectoryStructure::parse(
    DataView fixed, const RecordProvider& provider) {
  return parsed<CentralDirectoryStructure>(fixed, provider);
}

bool Entry::CentralDirectoryStructure::read(DataView fixed, const RecordProvider& provider) {
  return readFixed(fixed) && fetch(provider, size() - fixedSize, variableData);
}

bool Entry::CentralDirectoryStructure::readFixed(DataView fixed) {
  if (!begins<CentralDirectoryStructure>(fixed)) return false;
  readFields(fixed.data() + kSignatureSize, versionMadeBy, versionNeededToExtract, generalPurposeBitFlag,
             compressionMethod, lastModFileTime, lastModFileDate, crc32, compressedSize, uncompressedSize,
             fileNameLength, extraFieldLength, fileCommentLength, diskNumberStart, internalFileAttributes,
             externalFileAttributes, relativeOffsetOfLocalHeader);
  return true;
}

platform::Data Entry::CentralDirectoryStructure::data() const {
  return written(fixedSize, variableData, signature, versionMadeBy, versionNeededToExtract, generalPurposeBitFlag,
                 compressionMethod, lastModFileTime, lastModFileDate, crc32, compressedSize, uncompressedSize,
                 fileNameLength, extraFieldLength, fileCommentLength, diskNumberStart, internalFileAttributes,
                 externalFileAttributes, relativeOffsetOfLocalHeader);
}

DataView Entry::CentralDirectoryStructure::fileNameData() const {
  return part(variableData, 0, fileNameLength);
}
DataView Entry::CentralDirectoryStructure::extraFieldData() const {
  return part(variableData, fileNameLength, extraFieldLength);
}
DataView Entry::CentralDirectoryStructure::fileCommentData() const {
  return part(variableData, std::size_t{fileNameLength} + extraFieldLength, fileCommentLength);
}

std::optional<Archive::EndOfCentralDirectoryRecord> Archive::EndOfCentralDirectoryRecord::parse(
    DataView fixed, const RecordProvider& provider) {
  return parsed<EndOfCentralDirectoryRecord>(fixed, provider);
}

bool Archive::EndOfCentralDirectoryRecord::read(DataView fixed, const RecordProvider& provider) {
  if (!begins<EndOfCentralDirectoryRecord>(fixed)) return false;
  readFields(fixed.data() + kSignatureSize, numberOfDisk, numberOfDiskStart, totalNumberOfEntriesOnDisk,
             totalNumberOfEntriesInCentralDirectory, sizeOfCentralDirectory, offsetToStartOfCentralDirectory,
             zipFileCommentLength);
  return fetch(provider, zipFileCommentLength, zipFileCommentData);
}

platform::Data Archive::EndOfCentralDirectoryRecord::data() const {
  return written(fixedSize, zipFileCommentData, signature, numberOfDisk, numberOfDiskStart, totalNumberOfEntriesOnDisk,
                 totalNumberOfEntriesInCentralDirectory, sizeOfCentralDirectory, offsetToStartOfCentralDirectory,
                 zipFileCommentLength);
}

}  // namespace veltrik
