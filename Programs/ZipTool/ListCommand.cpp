#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <nlohmann/json.hpp>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/Output.h"
#include "Programs/ZipTool/TerminalText.h"

namespace ziptool {
namespace {

using veltrik::Entry;

constexpr std::size_t kTypeWidth = 9;
/// Written at a time.
constexpr std::size_t kBlock = 1 << 15;

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

// Written out by hand: formatting by patterns took as long as everything else that listing does.

void appendRight(std::string& out, std::string_view text, std::size_t width) {
  out.append(width - std::min(width, text.size()), ' ');
  out.append(text);
}

void appendRight(std::string& out, std::int64_t number, std::size_t width, int base = 10) {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
  appendRight(out, {digits.begin(), end}, width);
}

void appendTwoDigits(std::string& out, std::int64_t number) {
  out.push_back(static_cast<char>('0' + number / 10 % 10));
  out.push_back(static_cast<char>('0' + number % 10));
}

/// "2021-05-06", `between`, "07:08:10" in UTC.
void appendTime(std::string& out, veltrik::Date date, char between) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(date - day));
  appendTwoDigits(out, static_cast<int>(calendar.year()) / 100);
  appendTwoDigits(out, static_cast<int>(calendar.year()));
  out.push_back('-');
  appendTwoDigits(out, static_cast<unsigned>(calendar.month()));
  out.push_back('-');
  appendTwoDigits(out, static_cast<unsigned>(calendar.day()));
  out.push_back(between);
  appendTwoDigits(out, clock.hours().count());
  out.push_back(':');
  appendTwoDigits(out, clock.minutes().count());
  out.push_back(':');
  appendTwoDigits(out, clock.seconds().count());
}

void appendLine(std::string& out, const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  const std::string_view type = nameOf(entry.type());
  out.append(type).append(kTypeWidth - type.size(), ' ');
  appendRight(out, attributes.posixPermissions, 5, 8);
  appendRight(out, methodOf(entry), 8);
  appendRight(out, entry.uncompressedSize(), 11);
  out.push_back(' ');
  appendTime(out, attributes.modificationDate, ' ');
  out.push_back(' ');
  out.append(outputIsTerminal() ? escapedControls(entry.path()) : entry.path());
  out.push_back('\n');
}

std::string jsonOf(const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  std::string modified;
  appendTime(modified, attributes.modificationDate, 'T');
  const nlohmann::ordered_json object{
      {"path", entry.path()},
      {"type", nameOf(entry.type())},
      {"method", methodOf(entry)},
      {"compressedSize", entry.compressedSize()},
      {"uncompressedSize", entry.uncompressedSize()},
      {"crc32", fmt::format(FMT_COMPILE("{:08x}"), entry.checksum())},
      {"permissions", fmt::format(FMT_COMPILE("{:o}"), attributes.posixPermissions)},
      {"modified", modified + "Z"},
  };
  // Control characters are escaped by JSON itself, but for DEL and the C1 set, which a terminal may take for commands.
  return object.dump(-1, ' ', outputIsTerminal());
}

std::size_t printLines(const veltrik::Archive& archive) {
  std::size_t count = 0;
  std::string lines;
  for (const Entry& entry : archive) {
    appendLine(lines, entry);
    ++count;
    if (lines.size() < kBlock) continue;
    print(lines);
    lines.clear();
  }
  print(lines);
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
