#pragma once

#include "Backends/Desktop/SelectionReader.h"
#include "Platform/Port/Clipboard.h"

namespace desktop {

/// The CLIPBOARD selection. Text is "text/plain;charset=utf-8", whatever the owner calls it.
class DesktopClipboard final : public platform::port::Clipboard {
 public:
  explicit DesktopClipboard(SelectionReader& reader) : reader_(reader) {}

  std::vector<std::string> types() const override;
  std::optional<std::string> read(const std::string& type) const override;
  void write(const std::map<std::string, std::string>& contents) override;

 private:
  SelectionReader& reader_;
};

}  // namespace desktop
