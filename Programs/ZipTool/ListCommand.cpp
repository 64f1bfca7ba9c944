#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>

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

/// Writes a number's last digits into the whole of a place, with zeros in front.
void putDigits(std::span<char> place, std::uint64_t number) {
  for (auto digit = place.rbegin(); digit != place.rend(); ++digit, number /= 10) {
    *digit = static_cast<char>('0' + number % 10);
  }
}

/// "2021-05-06", `between`, "07:08:10" in UTC.
using TimeText = std::array<char, 19>;
TimeText timeText(veltrik::Date date, char between) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(date - day));
  TimeText text = {'Y', 'Y', 'Y', 'Y', '-', 'M', 'M', '-', 'D', 'D', between, 'H', 'H', ':', 'M', 'M', ':', 'S', 'S'};
  const std::span all(text);
  putDigits(all.subspan(0, 4), static_cast<std::uint64_t>(static_cast<int>(calendar.year())));
  putDigits(all.subspan(5, 2), static_cast<unsigned>(calendar.month()));
  putDigits(all.subspan(8, 2), static_cast<unsigned>(calendar.day()));
  putDigits(all.subspan(11, 2), static_cast<std::uint64_t>(clock.hours().count()));
  putDigits(all.subspan(14, 2), static_cast<std::uint64_t>(clock.minutes().count()));
  putDigits(all.subspan(17, 2), static_cast<std::uint64_t>(clock.seconds().count()));
  return text;
}

/// Everything in a line before the name, in columns that are wide enough for the largest values.
class Columns {
 public:
  Columns() { text_.fill(' '); }

  void putLeft(std::string_view text, std::size_t width) {
    std::ranges::copy(text, text_.begin() + static_cast<std::ptrdiff_t>(used_));
    used_ += width;
  }
  void putRight(std::string_view text, std::size_t width) {
    used_ += width;
    std::ranges::copy_backward(text, text_.begin() + static_cast<std::ptrdiff_t>(used_));
  }
  void putNumber(std::uint64_t number, std::size_t width, unsigned base = 10) {
    used_ += width;
    std::size_t at = used_;
    do text_[--at] = static_cast<char>('0' + number % base);
    while ((number /= base) != 0);
  }
  std::string_view text() const { return {text_.data(), used_}; }

 private:
  std::array<char, 64> text_;
  std::size_t used_ = 0;
};

void appendLine(std::string& out, const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  const TimeText time = timeText(attributes.modificationDate, ' ');
  Columns columns;
  columns.putLeft(nameOf(entry.type()), kTypeWidth);
  columns.putNumber(attributes.posixPermissions, 5, 8);
  columns.putRight(methodOf(entry), 8);
  columns.putNumber(static_cast<std::uint64_t>(entry.uncompressedSize()), 11);
  columns.putRight({time.data(), time.size()}, time.size() + 1);
  columns.putLeft({}, 1);
  out.append(columns.text());
  out.append(outputIsTerminal() ? escapedControls(entry.path()) : entry.path());
  out.push_back('\n');
}

std::string jsonOf(const Entry& entry) {
  const auto attributes = entry.fileAttributes();
  const TimeText modified = timeText(attributes.modificationDate, 'T');
  const nlohmann::ordered_json object{
      {"path", entry.path()},
      {"type", nameOf(entry.type())},
      {"method", methodOf(entry)},
      {"compressedSize", entry.compressedSize()},
      {"uncompressedSize", entry.uncompressedSize()},
      {"crc32", fmt::format(FMT_COMPILE("{:08x}"), entry.checksum())},
      {"permissions", fmt::format(FMT_COMPILE("{:o}"), attributes.posixPermissions)},
      {"modified", std::string(modified.begin(), modified.end()) + "Z"},
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
