#pragma once

#include <string>

#include "Platform/AppKit/NSView.h"
#include "Programs/Companion/Page.h"

namespace companion {

/// Stands for the page: shows where it is and how it would be asked for. Main thread.
class PageView final : public platform::NSView {
 public:
  using NSView::NSView;
  void setPage(Page page);
  void draw(platform::port::Canvas& canvas) override;

 private:
  Page page_;
};

}  // namespace companion
