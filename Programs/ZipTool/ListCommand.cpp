#include <fmt/compile.h>
#include <fmt/format.h>

#include <chrono>
#include <iterator>
#include <nlohmann/json.hpp>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/Output.h"
#include "Programs/ZipTool/TerminalText.h"

namespace ziptool {
namespace {

using veltrik::Entry;

std::string_view nameOf(Entry::EntryType type) {
  switch (type) {
    case Entry::EntryType::directory:
      return "directory";
    case Entry::EntryType::symlink:
      return "symlink";
    case Entry::EntryType::file:
      break;
  }
  return "file";
}

/// Methods other than the two that can be read go by their number.
std::string methodOf(const Entry& entry) {
  switch (const auto method = entry.localFileHeader().compressionMethod) {
    case 0:
      return "none";
    case 8:
      return "deflate";
    default:
      return std::to_string(method);
  }
}

/// "2021-05-06", `between`, "07:08:10" in UTC.
void appendTime(fmt::memory_buffer& out, veltrik::Date date, char between) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(date - day));
  fmt::format_to(fmt::appender(out), FMT_COMPILE("{:04}-{:02}-{:02}{}{:02}:{:02}:{:02}"),
                 static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
                 static_cast<unsigned>(calendar.day()), between, clock.hours().count(), clock.minutes().count(),
                 clock.seconds().count());
}

void appendLine(fmt::memory_buffer& out, const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  const std::string path = outputIsTerminal() ? escapedControls(entry.path()) : entry.path();
  fmt::format_to(fmt::appender(out), FMT_COMPILE("{:<9} {:>4o} {:>7} {:>10} "), nameOf(entry.type()),
                 attributes.posixPermissions, methodOf(entry), entry.uncompressedSize());
  appendTime(out, attributes.modificationDate, ' ');
  out.push_back(' ');
  out.append(path);
  out.push_back('\n');
}

std::string jsonOf(const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  fmt::memory_buffer modified;
  appendTime(modified, attributes.modificationDate, 'T');
  const nlohmann::ordered_json object{
      {"path", entry.path()},
      {"type", nameOf(entry.type())},
      {"method", methodOf(entry)},
      {"compressedSize", entry.compressedSize()},
      {"uncompressedSize", entry.uncompressedSize()},
      {"crc32", fmt::format(FMT_COMPILE("{:08x}"), entry.checksum())},
      {"permissions", fmt::format(FMT_COMPILE("{:o}"), attributes.posixPermissions)},
      {"modified", fmt::to_string(modified) + "Z"},
  };
  // Control characters are escaped by JSON itself, but for DEL and the C1 set, which a terminal may take for commands.
  return object.dump(-1, ' ', outputIsTerminal());
}

std::size_t printLines(const veltrik::Archive& archive) {
  std::size_t count = 0;
  fmt::memory_buffer line;
  for (const Entry& entry : archive) {
    line.clear();
    appendLine(line, entry);
    print({line.data(), line.size()});
    ++count;
  }
  return count;
}

std::size_t printJSON(const veltrik::Archive& archive) {
  std::size_t count = 0;
  print("[");
  for (const Entry& entry : archive) {
    print(count++ == 0 ? "\n" : ",\n");
    print(jsonOf(entry));
  }
  print("\n]\n");
  return count;
}

}  // namespace

void run(const ListCommand& command) {
  const auto archive = openForReading(command.archive);
  const std::size_t count = command.json ? printJSON(*archive) : printLines(*archive);
  flushOutput();
  requireAllEntries(*archive, count);
}

}  // namespace ziptool
