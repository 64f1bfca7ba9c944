#pragma once

#include <string>

#include "Backends/Headless/Journal.h"
#include "Platform/Port/Dock.h"

namespace headless {

/// A dock that a test looks at.
class HeadlessDock final : public platform::port::Dock {
 public:
  explicit HeadlessDock(Journal& journal) : journal_(journal) {}

  void showBadge(const platform::port::DockBadge& badge) override {
    badge_ = badge;
    journal_.write("dock: badge " + (badge.count ? std::to_string(*badge.count) : "none") +
                   (badge.needsAttention ? ", needs attention" : ""));
  }
  const platform::port::DockBadge& badge() const { return badge_; }

 private:
  Journal& journal_;
  platform::port::DockBadge badge_;
};

}  // namespace headless
