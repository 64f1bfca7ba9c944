#include "Tests/Zip/FaultWorkbench.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "Tests/Zip/HostileArchives.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace fault {
namespace {

using platform::URL;
using veltrik::Archive;
using veltrik::CompressionMethod;
using veltrik::Entry;
namespace filesystem = std::filesystem;
using Mode = Archive::AccessMode;

std::string longText() {
  return hostile::dullText(40'000);
}

std::string original() {
  auto deflated = hostile::deflatedMember("folder/deflated", longText());
  deflated.externalAttributes = 0100666U << 16;  // More than the usual mask lets it have at first.
  return std::string(platform::textOf(
      hostile::assembled({hostile::fileMember("stored", longText()), hostile::directoryMember("folder/"), deflated,
                          hostile::linkMember("made/link", "deflated")})));
}

/// Opening yields null for a failure, which is one here.
std::unique_ptr<Archive> required(std::unique_ptr<Archive> archive) {
  if (!archive) throw std::runtime_error("can't be opened");
  return archive;
}

std::unique_ptr<Archive> opened(const Workbench& bench, Mode mode) {
  return required(Archive::open(bench.archiveURL(), {.accessMode = mode}));
}

/// Reading ends without an error where an entry can't be read; whoever wants all of them compares the count.
std::vector<Entry> entriesOf(const Archive& archive) {
  std::vector<Entry> entries;
  for (const Entry& entry : archive) entries.push_back(entry);
  if (entries.size() != archive.endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory) {
    throw std::runtime_error("some entries can't be read");
  }
  return entries;
}

std::string listing(const Archive& archive) {
  std::string text;
  for (const Entry& entry : entriesOf(archive)) text += entry.path() + " " + std::to_string(entry.checksum()) + "\n";
  return text;
}

std::string extracted(const Archive& archive) {
  std::string text;
  for (const Entry& entry : entriesOf(archive)) {
    archive.extract(entry, [&](platform::DataView block) { text += platform::textOf(block); });
  }
  return text;
}

Operation::OnFailure asBefore() {
  return Operation::OnFailure::archiveAsBefore;
}

std::vector<Operation> readingOperations() {
  return {
      {"open", asBefore(),
       [](const Workbench& bench) {
         return std::to_string(
             opened(bench, Mode::read)->endOfCentralDirectoryRecord().offsetToStartOfCentralDirectory);
       }},
      {"iterate", asBefore(), [](const Workbench& bench) { return listing(*opened(bench, Mode::read)); }},
      {"look up", asBefore(),
       [](const Workbench& bench) {
         const auto archive = opened(bench, Mode::read);
         std::string found;
         for (const char* path : {"made/link", "stored", "nowhere"}) found += (*archive)[path] ? "yes " : "no ";
         return found;
       }},
      {"extract to a consumer", asBefore(),
       [](const Workbench& bench) { return extracted(*opened(bench, Mode::read)); }},
      {"extract to disk", asBefore(),
       [](const Workbench& bench) {
         const auto archive = opened(bench, Mode::read);
         for (const Entry& entry : entriesOf(*archive)) {
           archive->extract(entry, bench.url("out").appendingPathComponent(entry.path()));
         }
         return std::string();
       }},
      {"unzip", asBefore(),
       [](const Workbench& bench) {
         std::string names;
         veltrik::unzipItem(bench.archiveURL(), bench.url("out"),
                            {.extracted = [&](const Entry& entry, std::uint32_t) { names += entry.path() + "\n"; }});
         if (names != "folder/\nstored\nfolder/deflated\nmade/link\n") throw std::runtime_error("something is missing");
         return names;
       }},
      {"open in memory", asBefore(),
       [](const Workbench& bench) {
         const auto bytes = platform::copyOf(platform::bytesOf(bench.originalArchive()));
         return extracted(*required(Archive::open(bytes, {.accessMode = Mode::read})));
       }},
  };
}

Operation adding(std::string name, CompressionMethod method, std::vector<std::string> paths) {
  return {std::move(name), asBefore(), [method, paths = std::move(paths)](const Workbench& bench) {
            const auto archive = opened(bench, Mode::update);
            for (const auto& path : paths) archive->addEntry(path, bench.url("source"), {.compressionMethod = method});
            return std::string();
          }};
}

std::vector<Operation> changingOperations() {
  return {
      adding("add a stored file", CompressionMethod::none, {"text"}),
      adding("add a deflated file", CompressionMethod::deflate, {"text"}),
      adding("add a folder", CompressionMethod::none, {"inner"}),
      adding("add a link", CompressionMethod::none, {"link"}),
      {"remove", Operation::OnFailure::archiveAsBeforeOrDone,
       [](const Workbench& bench) {
         const auto archive = opened(bench, Mode::update);
         archive->remove((*archive)["folder/deflated"].value());
         return std::string();
       }},
      {"change in memory", asBefore(),
       [](const Workbench& bench) {
         const auto bytes = platform::copyOf(platform::bytesOf(bench.originalArchive()));
         const auto archive = required(Archive::open(bytes, {.accessMode = Mode::update}));
         archive->addEntry("text", bench.url("source"), {.compressionMethod = CompressionMethod::deflate});
         archive->remove((*archive)["stored"].value());
         return std::string(platform::textOf(archive->data().value()));
       }},
      {"zip", asBefore(),
       [](const Workbench& bench) {
         veltrik::zipItem(bench.url("source"), bench.url("new.zip"), {.compressionMethod = CompressionMethod::deflate});
         return std::string();
       }},
  };
}

std::string kindOf(const filesystem::path& path, bool withTime) {
  struct stat status {};
  ::lstat(path.c_str(), &status);
  std::string kind = std::to_string(status.st_mode) + ":";
  if (S_ISREG(status.st_mode)) {
    if (withTime) kind += std::to_string(status.st_mtim.tv_sec) + ":";
    kind += readText(path);
  } else if (S_ISLNK(status.st_mode)) {
    kind += filesystem::read_symlink(path).native();
  }
  return kind;
}

}  // namespace

Workbench::Workbench() : original_(original()) {
  reset();
}

void Workbench::reset() const {
  for (const auto& item : filesystem::directory_iterator(folder_.path())) filesystem::remove_all(item);
  writeText(path("archive.zip"), original_);
  filesystem::create_directories(path("source/inner"));
  writeText(path("source/text"), longText());
  writeText(path("source/inner/short"), "short");
  filesystem::create_symlink("inner/short", path("source/link"));
  const timespec times[] = {{1620284890, 0}, {1620284890, 0}};
  for (const char* name : {"source/text", "source/inner/short", "source/inner", "source/link"}) {
    ::utimensat(AT_FDCWD, path(name).c_str(), times, AT_SYMLINK_NOFOLLOW);
  }
}

platform::URL Workbench::url(std::string_view name) const {
  return URL::fileURL(path(name).native());
}

std::map<std::string, std::string> Workbench::contents() const {
  std::map<std::string, std::string> items;
  for (const auto& item : filesystem::recursive_directory_iterator(folder_.path())) {
    const std::string name = item.path().lexically_relative(folder_.path());
    items[name] = kindOf(item.path(), name.starts_with("out"));
  }
  return items;
}

std::vector<Operation> operations() {
  auto all = readingOperations();
  auto changing = changingOperations();
  std::move(changing.begin(), changing.end(), std::back_inserter(all));
  return all;
}

}  // namespace fault
