#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/Output.h"
#include "Programs/ZipTool/TerminalText.h"
#include "VeltrikAppKit/WorkAhead.h"

namespace ziptool {
namespace {

using veltrik::Entry;

constexpr std::size_t kTypeWidth = 9;
/// Entries that are read and written at a time.
constexpr std::size_t kBatch = 64;

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

/// Dates as "2021-05-06 07:08:10", or with another character in the middle, in UTC. Entries that follow each other are
/// often of one day, which is not computed again then.
class DateText {
 public:
  explicit DateText(char between) { text_[10] = between; }

  /// Valid until the next call.
  std::string_view of(veltrik::Date date) {
    const auto day = std::chrono::floor<std::chrono::days>(date);
    if (day != day_) putDay(day);
    const auto seconds = static_cast<std::uint64_t>(std::chrono::floor<std::chrono::seconds>(date - day).count());
    put(11, 2, seconds / 3600);
    put(14, 2, seconds / 60 % 60);
    put(17, 2, seconds % 60);
    return {text_.data(), text_.size()};
  }

 private:
  void putDay(std::chrono::sys_days day) {
    const std::chrono::year_month_day calendar(day);
    put(0, 4, static_cast<std::uint64_t>(static_cast<int>(calendar.year())));
    put(5, 2, static_cast<unsigned>(calendar.month()));
    put(8, 2, static_cast<unsigned>(calendar.day()));
    day_ = day;
  }

  /// Writes a number's last digits, with zeros in front.
  void put(std::size_t at, std::size_t count, std::uint64_t number) {
    for (; count > 0; number /= 10) text_[at + --count] = static_cast<char>('0' + number % 10);
  }

  std::array<char, 19> text_ = {'1', '9', '7', '0', '-', '0', '1', '-', '0', '1',
                                ' ', '0', '0', ':', '0', '0', ':', '0', '0'};
  std::chrono::sys_days day_{};
};

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
  template <unsigned base = 10>
  void putNumber(std::uint64_t number, std::size_t width) {
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

void appendLine(std::string& out, const Entry& entry, DateText& dates) {
  const auto attributes = entry.fileAttributes();
  const std::string_view date = dates.of(attributes.modificationDate);
  Columns columns;
  columns.putLeft(nameOf(entry.type()), kTypeWidth);
  columns.putNumber<8>(attributes.posixPermissions, 5);
  columns.putRight(methodOf(entry), 8);
  columns.putNumber(static_cast<std::uint64_t>(entry.uncompressedSize()), 11);
  columns.putRight(date, date.size() + 1);
  columns.putLeft({}, 1);
  out.append(columns.text());
  out.append(outputIsTerminal() ? escapedControls(entry.path()) : entry.path());
  out.push_back('\n');
}

void appendJSON(std::string& out, const Entry& entry, DateText& dates) {
  const auto attributes = entry.fileAttributes();
  const nlohmann::ordered_json object{
      {"path", entry.path()},
      {"type", nameOf(entry.type())},
      {"method", methodOf(entry)},
      {"compressedSize", entry.compressedSize()},
      {"uncompressedSize", entry.uncompressedSize()},
      {"crc32", fmt::format(FMT_COMPILE("{:08x}"), entry.checksum())},
      {"permissions", fmt::format(FMT_COMPILE("{:o}"), attributes.posixPermissions)},
      {"modified", std::string(dates.of(attributes.modificationDate)) + "Z"},
  };
  // Control characters are escaped by JSON itself, but for DEL and the C1 set, which a terminal may take for commands.
  out.append(object.dump(-1, ' ', outputIsTerminal()));
}

/// What is said about some entries that follow each other.
struct Batch {
  std::string text;
  std::size_t count = 0;  ///< fewer than `kBatch` where the entries end
};

/// Puts an archive's entries into words, batch by batch, further back each time.
class Lister {
 public:
  Lister(const veltrik::Archive& archive, bool json) : next_(archive.begin()), json_(json), dates_(json ? 'T' : ' ') {}

  Batch batch(std::size_t number) {
    next_.skip(number * kBatch - at_);
    at_ = number * kBatch;
    Batch batch;
    for (; batch.count < kBatch && next_ != std::default_sentinel; ++next_, ++at_, ++batch.count) append(batch.text);
    return batch;
  }

 private:
  void append(std::string& out) {
    if (!json_) return appendLine(out, *next_, dates_);
    out.append(at_ == 0 ? "\n" : ",\n");
    appendJSON(out, *next_, dates_);
  }

  veltrik::Archive::Iterator next_;
  std::size_t at_ = 0;
  bool json_;
  DateText dates_;
};

/// Reads ahead on all processors, each with the archive opened for itself.
std::size_t printEntries(const veltrik::Archive& archive, const ListCommand& command) {
  const std::size_t stated = archive.endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory;
  const std::size_t batches = (stated + kBatch - 1) / kBatch;
  veltrik::WorkAhead<Batch> ahead(batches, [&command] {
    const std::shared_ptr own = openForReading(command.archive);
    const auto lister = std::make_shared<Lister>(*own, command.json);
    return [own, lister](std::size_t number) { return lister->batch(number); };
  });
  Lister lister(archive, command.json);
  std::size_t count = 0;
  for (std::size_t number = 0; number < batches && count == number * kBatch; ++number) {
    auto batch = ahead.take(number);
    if (!batch) batch = lister.batch(number);
    print(batch->text);
    count += batch->count;
  }
  return count;
}

}  // namespace

void run(const ListCommand& command) {
  const auto archive = openForReading(command.archive);
  if (command.json) print("[");
  const std::size_t count = printEntries(*archive, command);
  if (command.json) print("\n]\n");
  flushOutput();
  requireAllEntries(*archive, count);
}

}  // namespace ziptool
