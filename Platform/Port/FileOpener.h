#pragma once

#include <functional>
#include <string>

namespace platform::port {

/// Hands files to other programs. Returns at once; each completion runs at most once, in a later turn of the loop, with
/// the reason when it didn't work and an empty text when it did. Main thread.
class FileOpener {
 public:
  using Completion = std::function<void(const std::string& failure)>;
  virtual ~FileOpener() = default;
  /// Opens a file with the application that is the user's default for its type. Absolute path, any bytes but NUL.
  virtual void open(const std::string& path, Completion completion) = 0;
  /// Shows a file, selected, in the file manager; where none can do that, the folder that holds it.
  virtual void reveal(const std::string& path, Completion completion) = 0;
};

}  // namespace platform::port
