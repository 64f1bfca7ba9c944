#pragma once

#include <string>
#include <utility>

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/FileOpener.h"

namespace headless {

/// Opens nothing: what was asked stands in the journal.
class HeadlessFileOpener final : public platform::port::FileOpener {
 public:
  HeadlessFileOpener(HeadlessLoop& loop, Journal& journal, const Faults& faults)
      : loop_(loop), journal_(journal), faults_(faults) {}

  void open(const std::string& path, Completion completion) override { note("open", path, std::move(completion)); }
  void reveal(const std::string& path, Completion completion) override { note("reveal", path, std::move(completion)); }

 private:
  void note(const std::string& what, const std::string& path, Completion completion) {
    journal_.write("files: " + what + " " + path);
    loop_.deliver([completion = std::move(completion), failing = faults_.openingFails] {
      completion(failing ? "nobody opens files here" : "");
    });
  }

  HeadlessLoop& loop_;
  Journal& journal_;
  const Faults& faults_;
};

}  // namespace headless
