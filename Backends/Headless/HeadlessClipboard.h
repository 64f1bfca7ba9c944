#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/Clipboard.h"

namespace headless {

/// The clipboard in memory.
class HeadlessClipboard final : public platform::port::Clipboard {
 public:
  HeadlessClipboard(Journal& journal, const Faults& faults) : journal_(journal), faults_(faults) {}

  std::vector<std::string> types() const override;
  std::optional<std::string> read(const std::string& type) const override;
  void write(const std::map<std::string, std::string>& contents) override;

  /// Another application copied something.
  void setContents(std::map<std::string, std::string> contents) { contents_ = std::move(contents); }
  const std::map<std::string, std::string>& contents() const { return contents_; }

 private:
  Journal& journal_;
  const Faults& faults_;
  std::map<std::string, std::string> contents_;
};

}  // namespace headless
