#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform::port {

/// The desktop's clipboard. Types are MIME types ("text/plain;charset=utf-8"); contents are bytes.
class Clipboard {
 public:
  virtual ~Clipboard() = default;
  virtual std::vector<std::string> types() const = 0;
  virtual std::optional<std::string> read(const std::string& type) const = 0;
  virtual void write(const std::map<std::string, std::string>& contents) = 0;
};

}  // namespace platform::port
