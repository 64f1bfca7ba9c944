#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/WorkMonitor.h"
#include "VeltrikAppKit/ArchiveError.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace ziptool {
namespace {

/// The archive could not even be begun, so what stands there isn't ours.
bool isAboutTheArchiveItself(const veltrik::ArchiveError& error) {
  return error.code() == veltrik::ArchiveError::Case::unwritableArchive && error.entry().empty();
}

/// Removes what a failed packing left; what stood there before is not touched.
class Unfinished {
 public:
  explicit Unfinished(platform::URL archive) : archive_(std::move(archive)) {
    keep_ = files_.isReachableItem(archive_);
  }
  ~Unfinished() {
    if (keep_ || !files_.isReachableItem(archive_)) return;
    try {
      files_.removeItem(archive_);
    } catch (const std::exception&) {
      // The failure that led here is the one to report.
    }
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

  void keep() { keep_ = true; }

 private:
  platform::URL archive_;
  platform::FileManager files_;
  bool keep_;
};

}  // namespace

void run(const CreateCommand& command) {
  const auto archive = platform::URL::fileURL(command.archive);
  platform::Progress progress;
  const WorkMonitor monitor(progress, "packing");
  Unfinished unfinished(archive);
  try {
    veltrik::zipItem(platform::URL::fileURL(command.source), archive,
                     {.shouldKeepParent = command.keepParent,
                      .compressionMethod = command.method == Method::deflate ? veltrik::CompressionMethod::deflate
                                                                             : veltrik::CompressionMethod::none,
                      .progress = &progress});
  } catch (const veltrik::ArchiveError& error) {
    if (isAboutTheArchiveItself(error)) unfinished.keep();
    throw;
  }
  unfinished.keep();
}

}  // namespace ziptool
