#pragma once

#include <string>

#include "Backends/Headless/Journal.h"
#include "Platform/Port/Applications.h"

namespace headless {

/// Other processes have no windows here; who is to come to the front is written down.
class HeadlessApplications final : public platform::port::Applications {
 public:
  explicit HeadlessApplications(Journal& journal) : journal_(journal) {}
  bool activate(int processIdentifier) override {
    journal_.write("application " + std::to_string(processIdentifier) + ": activate");
    return true;
  }

 private:
  Journal& journal_;
};

}  // namespace headless
