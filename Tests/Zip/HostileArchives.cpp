#include "Tests/Zip/HostileArchives.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <random>
#include <stdexcept>

namespace hostile {
namespace {

constexpr std::size_t kLocalHeaderSize = 30;
constexpr std::size_t kCentralHeaderSize = 46;
constexpr std::size_t kEndRecordSize = 22;
constexpr std::uint32_t kLinkMode = 0120777;
constexpr std::uint32_t kDirectoryMode = 0040755;

class Writer {
 public:
  Writer& u16(std::size_t value) { return little(value, 2); }
  Writer& u32(std::size_t value) { return little(value, 4); }
  Writer& text(std::string_view value) {
    const auto* first = reinterpret_cast<const std::byte*>(value.data());
    bytes_.insert(bytes_.end(), first, first + value.size());
    return *this;
  }
  std::size_t size() const { return bytes_.size(); }
  Bytes take() { return std::move(bytes_); }

 private:
  Writer& little(std::size_t value, int width) {
    for (int i = 0; i < width; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i)));
    return *this;
  }
  Bytes bytes_;
};

void writeLocal(Writer& out, const Member& member) {
  out.u32(0x04034b50).u16(member.versionNeeded).u16(member.flags).u16(member.method).u16(0x38e5).u16(0x52a6);
  out.u32(member.crc).u32(member.data.size()).u32(member.uncompressedSize);
  out.u16(member.name.size()).u16(member.localExtra.size());
  out.text(member.name).text(member.localExtra).text(member.data).text(member.descriptor);
}

void writeCentral(Writer& out, const Member& member, std::size_t offset) {
  out.u32(0x02014b50).u16(member.madeBy).u16(member.versionNeeded).u16(member.flags).u16(member.method);
  out.u16(0x38e5).u16(0x52a6).u32(member.crc).u32(member.data.size()).u32(member.uncompressedSize);
  out.u16(member.name.size()).u16(member.centralExtra.size()).u16(member.comment.size()).u16(0).u16(0);
  out.u32(member.externalAttributes).u32(offset);
  out.text(member.name).text(member.centralExtra).text(member.comment);
}

Member withDescriptor(Member member, bool signature) {
  Writer out;
  if (signature) out.u32(0x08074b50);
  const Bytes bytes = out.u32(member.crc).u32(member.data.size()).u32(member.uncompressedSize).take();
  member.descriptor.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  member.flags |= 8;
  return member;
}

// The widths of the records' fixed fields, in order.
constexpr std::string_view kLocalFields = "42222244422", kCentralFields = "42222224442222244", kEndFields = "42222442";
constexpr std::array<std::uint32_t, 10> kExtremes{0,      1,          8,          0x7fff,     0xfffe,
                                                  0xffff, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};

std::size_t localLength(const Member& member) {
  return kLocalHeaderSize + member.name.size() + member.localExtra.size() + member.data.size() +
         member.descriptor.size();
}

void put(Bytes& bytes, std::size_t at, std::size_t width, std::uint32_t value) {
  for (std::size_t i = 0; i < width; ++i) bytes[at + i] = static_cast<std::byte>(value >> (8 * i));
}

void setEach(std::vector<Specimen>& out, const Bytes& sound, std::string_view record, std::size_t recordAt,
             std::string_view widths) {
  std::size_t offset = 0;
  for (const char digit : widths) {
    const auto width = static_cast<std::size_t>(digit - '0');
    for (const std::uint32_t value : kExtremes) {
      if (width == 2 && value > 0xffff) continue;
      Specimen specimen{std::string(record) + "+" + std::to_string(offset) + "=" + std::to_string(value), sound};
      put(specimen.bytes, recordAt + offset, width, value);
      out.push_back(std::move(specimen));
    }
    offset += width;
  }
}

std::string repeated(std::string_view part, int count) {
  std::string whole;
  for (int i = 0; i < count; ++i) whole += part;
  return whole;
}

std::vector<std::string> harmfulNames(const std::string& outside) {
  return {"../escaped",
          "../outnot/escaped",
          "a/../../escaped",
          "./../escaped",
          "..",
          "../",
          ".",
          "./",
          "",
          "/",
          "//",
          outside + "/escaped",
          "/" + outside + "/escaped",
          "C:\\escaped",
          "C:/escaped",
          "..\\escaped",
          "\\\\server\\share\\escaped",
          std::string("cut\0off", 7),
          std::string("\0", 1),
          "line\nbreak",
          "escape\x1b[2Jscreen",
          "\r\r\r",
          "\xff\xfe not text",
          "percent%2e%2e%2fescaped",
          "%2e%2e/escaped",
          "~/escaped",
          "a//b///c",
          std::string(300, 'n'),
          std::string(5000, 'p') + "/file",
          std::string(65535, 'x'),
          repeated("d/", 2000) + "file",
          repeated("../", 2000) + "escaped"};
}

void addHarmfulNames(std::vector<Specimen>& out, const std::string& outside) {
  const auto names = harmfulNames(outside);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string label = "name " + std::to_string(i);
    out.push_back({label + " of a file", assembled({fileMember(names[i], "evil"), fileMember("after", "evil")})});
    out.push_back({label + " of a folder", assembled({directoryMember(names[i] + "/"), fileMember("after", "evil")})});
    out.push_back({label + " of a link", assembled({linkMember(names[i], "../outnot"), fileMember("after", "evil")})});
    out.push_back({label + " as a link's target", assembled({linkMember("link", names[i]), fileMember("link", "evil"),
                                                             fileMember("link/escaped", "evil")})});
  }
}

void addHarmfulLinks(std::vector<Specimen>& out, const std::string& outside) {
  for (const std::string& target : {std::string(".."), std::string("../outnot"), outside, std::string("standing"),
                                    std::string("."), std::string("link")}) {
    out.push_back({"file through a link to " + target,
                   assembled({linkMember("link", target), fileMember("link/escaped", "evil")})});
    out.push_back({"folder over a link to " + target,
                   assembled({directoryMember("link/"), linkMember("link", target), fileMember("link/x", "evil")})});
    out.push_back({"link through a link to " + target,
                   assembled({linkMember("link", target), linkMember("link/escaped", "evil")})});
    out.push_back({"folder through a link to " + target,
                   assembled({linkMember("link", target), directoryMember("link/escaped/")})});
  }
  // The place of extraction holds a link named "standing" that leads outside.
  out.push_back({"file through a standing link", assembled({fileMember("standing/escaped", "evil")})});
  out.push_back({"folder at a standing link", assembled({directoryMember("standing/")})});
  out.push_back({"folder through a standing link", assembled({directoryMember("standing/escaped/")})});
  out.push_back({"link through a standing link", assembled({linkMember("standing/escaped", "x")})});
  out.push_back({"file at a standing link to a file", assembled({fileMember("standing file", "evil")})});
  out.push_back({"file at a dangling link", assembled({fileMember("standing nowhere", "evil")})});
}

/// An archive whose entries all stand for the same record.
Bytes sharing(const Member& member, std::size_t count) {
  Writer body;
  writeLocal(body, member);
  const std::size_t start = body.size();
  for (std::size_t i = 0; i < count; ++i) writeCentral(body, member, 0);
  const std::size_t size = body.size() - start;
  return body.u32(0x06054b50).u16(0).u16(0).u16(count).u16(count).u32(size).u32(start).u16(0).take();
}

void addOverlaps(std::vector<Specimen>& out) {
  const std::string bomb(8u << 20, '\0');
  const Member kernel = deflatedMember("bomb", bomb);
  out.push_back({"500 entries share one bomb", sharing(kernel, 500)});

  Member lying = deflatedMember("lying", bomb);
  lying.uncompressedSize = 0xfffffff0;
  out.push_back({"declared size of nearly 4 GiB", assembled({lying})});
  Member stored = fileMember("stored", "short");
  stored.uncompressedSize = 0xfffffff0;
  out.push_back({"stored size of nearly 4 GiB", assembled({stored})});
  Member link = linkMember("link", "target");
  link.uncompressedSize = 0xfffffff0;
  out.push_back({"link of nearly 4 GiB", assembled({link})});
}

void addDisagreements(std::vector<Specimen>& out) {
  out.push_back({"duplicate names", assembled({fileMember("same", "first"), fileMember("same", "second")})});
  out.push_back({"file and folder of one name", assembled({fileMember("same", "file"), directoryMember("same/")})});
  out.push_back({"file below a file", assembled({fileMember("same", "file"), fileMember("same/below", "file")})});
  Layout commented{{fileMember("file", "text")}, {}, std::string("PK\5\6") + std::string(18, '\0')};
  out.push_back({"an end record inside the comment", assembled(commented)});
  commented.comment = std::string("PK\5\6") + std::string(40, '\xff');
  out.push_back({"a broken end record inside the comment", assembled(commented)});
  Member setId = fileMember("set-id", "text");
  setId.externalAttributes = 0106755u << 16;
  out.push_back({"set-user-id", assembled({setId})});
  for (const std::uint32_t type : {0010644u, 0020644u, 0060644u, 0140644u, 0170644u}) {
    Member odd = fileMember("odd", "text");
    odd.externalAttributes = type << 16;
    out.push_back({"file type " + std::to_string(type), assembled({odd})});
  }
  Bytes differing = assembled({fileMember("central", "text"), fileMember("x", "text")});
  std::memcpy(differing.data() + kLocalHeaderSize, "../esc/", 7);
  out.push_back({"local name differs from the central one", differing});
}

}  // namespace

std::string deflated(std::string_view content) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, content.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  stream.avail_in = static_cast<uInt>(content.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const int status = deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  if (status != Z_STREAM_END) throw std::runtime_error("deflate did not finish");
  return out;
}

std::uint32_t checksum(std::string_view content) {
  return static_cast<std::uint32_t>(
      ::crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
}

std::string dullText(std::size_t size) {
  std::string text;
  for (int line = 0; text.size() < size; ++line) text += "line " + std::to_string(line % 37) + " of dull text\n";
  text.resize(size);
  return text;
}

std::string randomText(std::size_t size, unsigned alphabet) {
  std::mt19937 random(static_cast<unsigned>(size) * 31 + alphabet);
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>(random() % alphabet);
  return text;
}

Member fileMember(std::string name, std::string content) {
  Member member;
  member.name = std::move(name);
  member.crc = checksum(content);
  member.uncompressedSize = static_cast<std::uint32_t>(content.size());
  member.data = std::move(content);
  return member;
}

Member deflatedMember(std::string name, std::string_view content) {
  Member member = fileMember(std::move(name), std::string(content));
  member.method = 8;
  member.data = deflated(content);
  return member;
}

Member directoryMember(std::string name) {
  Member member = fileMember(std::move(name), {});
  member.externalAttributes = kDirectoryMode << 16;
  return member;
}

Member linkMember(std::string name, std::string target) {
  Member member = fileMember(std::move(name), std::move(target));
  member.externalAttributes = kLinkMode << 16;
  return member;
}

Bytes assembled(const Layout& layout) {
  Writer body;
  Writer directory;
  body.text(layout.prefix);
  for (const Member& member : layout.members) {
    writeCentral(directory, member, body.size());
    writeLocal(body, member);
  }
  const std::size_t start = body.size();
  const std::size_t size = directory.size();
  const Bytes central = directory.take();
  body.text({reinterpret_cast<const char*>(central.data()), central.size()});
  body.u32(0x06054b50).u16(0).u16(0).u16(layout.members.size()).u16(layout.members.size());
  body.u32(size).u32(start).u16(layout.comment.size()).text(layout.comment);
  return body.take();
}

Bytes assembled(std::vector<Member> members) {
  return assembled(Layout{std::move(members), {}, {}});
}

std::vector<Specimen> soundArchives() {
  const std::string text = dullText(40'000);
  const Member file = fileMember("file.txt", "hello");
  const Member deflatedFile = deflatedMember("text.txt", text);
  Member commented = deflatedFile;
  commented.comment = "a remark";
  commented.localExtra = std::string("UT\5\0\3\1\2\3\4", 9);
  commented.centralExtra = commented.localExtra;
  Member dos = fileMember("DOS.TXT", "dos\r\n");
  dos.madeBy = 20;
  dos.externalAttributes = 0x20;
  dos.flags = 0;
  return {{"empty", assembled(Layout{})},
          {"one stored", assembled({file})},
          {"one deflated", assembled({deflatedFile})},
          {"folder, files, link", assembled({directoryMember("a/"), fileMember("a/b", text),
                                             deflatedMember("a/c", text), linkMember("a/l", "b")})},
          {"signed descriptors", assembled({withDescriptor(file, true), withDescriptor(deflatedFile, true)})},
          {"bare descriptors", assembled({withDescriptor(file, false), withDescriptor(deflatedFile, false)})},
          {"comments and extra fields", assembled(Layout{{commented, file, commented}, {}, "of the archive"})},
          {"prefixed", assembled(Layout{{file, deflatedFile}, std::string(777, '#'), {}})},
          {"made by DOS", assembled({dos, deflatedMember("B.TXT", "b")})},
          {"empty members", assembled({fileMember("e", ""), deflatedMember("d", ""), directoryMember("f/")})}};
}

std::vector<Specimen> archivesWithExtremeFields() {
  std::vector<Specimen> out;
  const std::vector<std::vector<Member>> pairs{
      {fileMember("a", "first"), deflatedMember("b/c", dullText(5000))},
      {linkMember("l", "target"), withDescriptor(deflatedMember("described", dullText(700)), true)}};
  for (const auto& members : pairs) {
    const Bytes sound = assembled(members);
    const std::size_t second = localLength(members[0]);
    const std::size_t directory = second + localLength(members[1]);
    const std::string pair = members[0].name + " and " + members[1].name + ": ";
    setEach(out, sound, pair + "first local", 0, kLocalFields);
    setEach(out, sound, pair + "second local", second, kLocalFields);
    setEach(out, sound, pair + "first central", directory, kCentralFields);
    setEach(out, sound, pair + "second central", directory + kCentralHeaderSize + members[0].name.size(),
            kCentralFields);
    setEach(out, sound, pair + "end", sound.size() - kEndRecordSize, kEndFields);
  }
  return out;
}

std::vector<Specimen> truncatedArchives() {
  std::vector<Specimen> out;
  const Bytes sound = assembled({withDescriptor(deflatedMember("text", dullText(300)), true), linkMember("l", "text")});
  for (std::size_t size = 0; size < sound.size(); ++size) {
    out.push_back({"cut to " + std::to_string(size), Bytes(sound.begin(), sound.begin() + static_cast<long>(size))});
  }
  return out;
}

std::vector<Specimen> archivesThatMeanHarm(const std::string& outside) {
  std::vector<Specimen> out;
  addHarmfulNames(out, outside);
  addHarmfulLinks(out, outside);
  addOverlaps(out);
  addDisagreements(out);
  return out;
}

Bytes archiveOfEqualNames(std::size_t count) {
  return sharing(fileMember("same", "content"), count);
}

Bytes mutatedArchive(const std::vector<Specimen>& sound, std::uint32_t number) {
  std::mt19937 random(number);
  const auto below = [&random](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
  Bytes bytes = sound[below(sound.size())].bytes;
  for (auto changes = 1 + below(4); changes > 0; --changes) {
    const std::size_t at = below(bytes.size());
    switch (below(6)) {
      case 0:
        bytes[at] = static_cast<std::byte>(random());
        break;
      case 1:
        bytes[at] = bytes[at] ^ static_cast<std::byte>(1u << below(8));
        break;
      case 2:
        if (at + 4 <= bytes.size()) put(bytes, at, 4, kExtremes[below(kExtremes.size())]);
        break;
      case 3: {
        // Most of the meaning stands at the end: the directory and the end record.
        const std::size_t tail = std::min<std::size_t>(bytes.size(), 160);
        bytes[bytes.size() - tail + below(tail)] = static_cast<std::byte>(random());
        break;
      }
      case 4:
        bytes.erase(bytes.begin() + static_cast<long>(at),
                    bytes.begin() + static_cast<long>(std::min(bytes.size(), at + 1 + below(40))));
        break;
      default:
        bytes.insert(bytes.begin() + static_cast<long>(at), 1 + below(40), static_cast<std::byte>(random()));
        break;
    }
    if (bytes.empty()) break;
  }
  return bytes;
}

}  // namespace hostile
