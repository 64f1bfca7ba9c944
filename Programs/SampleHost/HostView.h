#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"
#include "Programs/SampleHost/HostScene.h"

namespace samplehost {

/// The view in which the host's toolkit draws a window: it fills the content view, and is the first responder that the
/// compatibility layer installs. Main thread.
class HostView : public platform::NSView {
 public:
  explicit HostView(const platform::Rect& frame);

  /// Null: the view is empty.
  void setScene(std::shared_ptr<HostScene> scene);
  bool isFlipped() const override { return true; }
  bool acceptsFirstResponder() override { return true; }
  void draw(platform::port::Canvas& canvas) override;
  void scrollWheel(const platform::EventPointer& event) override;

 private:
  std::shared_ptr<HostScene> scene_;
};

}  // namespace samplehost
