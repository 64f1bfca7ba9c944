// A row of additions and removals in memory, which the input spells out, against a simple model: names with contents.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "VeltrikAppKit/Archive.h"

namespace {

using platform::DataView;
using veltrik::Archive;
using veltrik::CompressionMethod;

struct Member {
  std::string path;
  std::string content;
  friend bool operator==(const Member&, const Member&) = default;
};

class Run {
 public:
  explicit Run(DataView program) : program_(program) {}

  void execute() {
    while (!program_.empty()) step(next());
    compare(*archive_);
    // What stands in the bytes is what the object says.
    compare(*Archive::open(archive_->data().value(), {.accessMode = Archive::AccessMode::read}));
  }

 private:
  unsigned next() {
    if (program_.empty()) return 0;
    const auto value = std::to_integer<unsigned>(program_.front());
    program_ = program_.subspan(1);
    return value;
  }

  void step(unsigned operation) {
    switch (operation % 4) {
      case 0:
        return add(CompressionMethod::none);
      case 1:
        return add(CompressionMethod::deflate);
      case 2:
        return remove();
      default:
        return failToAdd();
    }
  }

  std::string nextContent() {
    // Sizes around the blocks' matter most.
    constexpr std::size_t kSizes[] = {0, 1, 99, 100, 101, 200, 5000};
    std::string content(kSizes[next() % std::size(kSizes)], static_cast<char>(next()));
    for (char& c : content) {
      if (program_.empty()) break;
      c = static_cast<char>(next());
    }
    return content;
  }

  void add(CompressionMethod method) {
    const Member member{"name " + std::to_string(next()), nextContent()};
    archive_->addEntry(member.path, {.uncompressedSize = static_cast<std::uint32_t>(member.content.size())},
                       providing(member.content), {.compressionMethod = method, .bufferSize = 100});
    model_.push_back(member);
  }

  static veltrik::ByteProvider providing(const std::string& content) {
    return [&content](std::int64_t position, std::span<std::byte> destination) {
      const auto rest = platform::bytesOf(content).subspan(static_cast<std::size_t>(position));
      const auto count = std::min(rest.size(), destination.size());
      std::copy_n(rest.begin(), count, destination.begin());
      return count;
    };
  }

  void failToAdd() {
    const auto before = archive_->data();
    platform::Progress progress;
    progress.cancel();
    try {
      archive_->addEntry("cancelled", {.uncompressedSize = 500}, providing(std::string(500, 'x')),
                         {.compressionMethod = CompressionMethod::deflate, .progress = &progress});
      std::abort();
    } catch (const veltrik::ArchiveError&) {
    }
    if (archive_->data() != before) std::abort();
  }

  void remove() {
    if (model_.empty()) return;
    const auto number = next() % model_.size();
    auto entry = archive_->begin();
    for (std::size_t i = 0; i < number; ++i) ++entry;
    archive_->remove(*entry, {.bufferSize = 64});
    model_.erase(model_.begin() + static_cast<std::ptrdiff_t>(number));
  }

  void compare(const Archive& archive) const {
    std::vector<Member> found;
    for (const auto& entry : archive) {
      Member member{entry.path(), {}};
      const auto checksum = archive.extract(entry, [&](DataView block) { member.content += platform::textOf(block); });
      if (checksum != entry.checksum()) std::abort();
      found.push_back(std::move(member));
    }
    if (found != model_) std::abort();
  }

  DataView program_;
  std::unique_ptr<Archive> archive_ = Archive::open(platform::Data(), {.accessMode = Archive::AccessMode::create});
  std::vector<Member> model_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Run({reinterpret_cast<const std::byte*>(bytes), size}).execute();
  return 0;
}
