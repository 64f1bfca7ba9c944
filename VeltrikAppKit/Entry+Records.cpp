#include "Platform/Foundation/ByteCursor.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {

namespace {

using platform::ByteCursor;
using platform::DataView;

void read(ByteCursor& cursor, std::uint16_t& field) {
  field = *cursor.u16le();
}
void read(ByteCursor& cursor, std::uint32_t& field) {
  field = *cursor.u32le();
}

/// Reads the fields in order; the caller made sure that they fit.
template <class... Fields>
void readFields(ByteCursor& cursor, Fields&... fields) {
  (read(cursor, fields), ...);
}

template <class... Fields>
platform::Data written(std::size_t size, DataView variable, Fields... fields) {
  platform::Data data;
  data.reserve(size + variable.size());
  (platform::appendLittleEndian(data, fields), ...);
  platform::append(data, variable);
  return data;
}

/// The cursor behind the signature; nothing for a wrong size or another signature.
template <class Record>
std::optional<ByteCursor> begin(DataView fixed) {
  ByteCursor cursor(fixed);
  if (fixed.size() != Record::fixedSize || *cursor.u32le() != Record::signature) return std::nullopt;
  return cursor;
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
  auto cursor = begin<LocalFileHeader>(fixed);
  if (!cursor) return std::nullopt;
  LocalFileHeader header;
  readFields(*cursor, header.versionNeededToExtract, header.generalPurposeBitFlag, header.compressionMethod,
             header.lastModFileTime, header.lastModFileDate, header.crc32, header.compressedSize,
             header.uncompressedSize, header.fileNameLength, header.extraFieldLength);
  if (!fetch(provider, header.size() - fixedSize, header.variableData)) return std::nullopt;
  return header;
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

std::optional<Entry::DataDescriptor> Entry::DataDescriptor::parse(DataView fixed, const RecordProvider&) {
  if (fixed.size() != fixedSize) return std::nullopt;
  DataDescriptor descriptor;
  ByteCursor cursor(fixed);
  descriptor.hasSignature = *cursor.u32le() == signature;
  if (!descriptor.hasSignature) cursor = ByteCursor(fixed);
  readFields(cursor, descriptor.crc32, descriptor.compressedSize, descriptor.uncompressedSize);
  return descriptor;
}

std::optional<Entry::CentralDirectoryStructure> Entry::CentralDirectoryStructure::parse(
    DataView fixed, const RecordProvider& provider) {
  auto cursor = begin<CentralDirectoryStructure>(fixed);
  if (!cursor) return std::nullopt;
  CentralDirectoryStructure structure;
  readFields(*cursor, structure.versionMadeBy, structure.versionNeededToExtract, structure.generalPurposeBitFlag,
             structure.compressionMethod, structure.lastModFileTime, structure.lastModFileDate, structure.crc32,
             structure.compressedSize, structure.uncompressedSize, structure.fileNameLength, structure.extraFieldLength,
             structure.fileCommentLength, structure.diskNumberStart, structure.internalFileAttributes,
             structure.externalFileAttributes, structure.relativeOffsetOfLocalHeader);
  if (!fetch(provider, structure.size() - fixedSize, structure.variableData)) return std::nullopt;
  return structure;
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
  auto cursor = veltrik::begin<EndOfCentralDirectoryRecord>(fixed);
  if (!cursor) return std::nullopt;
  EndOfCentralDirectoryRecord record;
  readFields(*cursor, record.numberOfDisk, record.numberOfDiskStart, record.totalNumberOfEntriesOnDisk,
             record.totalNumberOfEntriesInCentralDirectory, record.sizeOfCentralDirectory,
             record.offsetToStartOfCentralDirectory, record.zipFileCommentLength);
  if (!fetch(provider, record.zipFileCommentLength, record.zipFileCommentData)) return std::nullopt;
  return record;
}

platform::Data Archive::EndOfCentralDirectoryRecord::data() const {
  return written(fixedSize, zipFileCommentData, signature, numberOfDisk, numberOfDiskStart, totalNumberOfEntriesOnDisk,
                 totalNumberOfEntriesInCentralDirectory, sizeOfCentralDirectory, offsetToStartOfCentralDirectory,
                 zipFileCommentLength);
}

}  // namespace veltrik
