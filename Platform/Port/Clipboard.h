#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform::port {

/// What somebody, chiefly another application, offers to be taken. Types are MIME types ("text/plain;charset=utf-8");
/// contents are bytes, not to be trusted.
class Contents {
 public:
  virtual ~Contents() = default;
  virtual std::vector<std::string> types() const = 0;
  /// Nothing when the type isn't offered any more, or its owner doesn't answer in reasonable time.
  virtual std::optional<std::string> read(const std::string& type) const = 0;
};

/// The desktop's clipboard.
class Clipboard : public Contents {
 public:
  virtual void write(const std::map<std::string, std::string>& contents) = 0;
};

}  // namespace platform::port
