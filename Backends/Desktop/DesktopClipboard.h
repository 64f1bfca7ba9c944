#pragma once

#include "Platform/Port/Clipboard.h"

namespace desktop {

/// The CLIPBOARD selection. Text is "text/plain;charset=utf-8", whatever the owner calls it.
class DesktopClipboard final : public platform::port::Clipboard {
 public:
  std::vector<std::string> types() const override;
  std::optional<std::string> read(const std::string& type) const override;
  void write(const std::map<std::string, std::string>& contents) override;
};

}  // namespace desktop
