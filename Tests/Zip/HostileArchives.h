#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hostile {

using Bytes = std::vector<std::byte>;

/// The fields of one member's two headers, each free to lie. Written with no help from the library under test.
struct Member {
  std::string name = "file.txt";
  std::string data = "hello";  ///< as stored, that is already compressed when `method` is 8

  std::uint16_t madeBy = 0x0314;
  std::uint16_t versionNeeded = 20;
  std::uint16_t flags = 0x0800;
  std::uint16_t method = 0;
  std::uint32_t crc = 0x3610a686;
  std::uint32_t uncompressedSize = 5;
  std::uint32_t externalAttributes = 0100644u << 16;

  std::string localExtra;
  std::string centralExtra;
  std::string comment;
  std::string descriptor;  ///< raw bytes that follow the data
};

struct Layout {
  std::vector<Member> members;
  std::string prefix;
  std::string comment;
};

/// What zlib makes of a text: a raw DEFLATE stream, and the CRC-32.
std::string deflated(std::string_view content);
std::uint32_t checksum(std::string_view content);

/// Text that compresses well, and bytes below `alphabet` that look random; the same for the same arguments.
std::string dullText(std::size_t size);
std::string randomText(std::size_t size, unsigned alphabet = 256);

Member fileMember(std::string name, std::string content);
Member deflatedMember(std::string name, std::string_view content);
Member directoryMember(std::string name);
Member linkMember(std::string name, std::string target);

Bytes assembled(const Layout& layout);
Bytes assembled(std::vector<Member> members);

/// An archive with a name that says what is wrong with it.
struct Specimen {
  std::string name;
  Bytes bytes;
};

/// Sound archives of many shapes: what mutations and fuzzing start from.
std::vector<Specimen> soundArchives();

/// Every fixed field of every record set to each of its extreme values.
std::vector<Specimen> archivesWithExtremeFields();

/// A small archive cut off after each of its bytes.
std::vector<Specimen> truncatedArchives();

/// Names, links, overlaps and counts that mean harm; `outside` is an absolute path they try to reach.
std::vector<Specimen> archivesThatMeanHarm(const std::string& outside);

/// `count` entries that share one record and one name.
Bytes archiveOfEqualNames(std::size_t count);

/// The n-th of an endless row of damaged archives; the same n gives the same bytes.
Bytes mutatedArchive(const std::vector<Specimen>& sound, std::uint32_t number);

}  // namespace hostile
