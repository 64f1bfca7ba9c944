#pragma once

#include <functional>
#include <memory>
#include <utility>

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
  /// Called once, in the turn of the main loop after the view was drawn for the first time.
  void setFirstDrawn(std::function<void()> drawn) { firstDrawn_ = std::move(drawn); }
  bool isFlipped() const override { return true; }
  bool acceptsFirstResponder() override { return true; }
  void draw(platform::port::Canvas& canvas) override;
  void scrollWheel(const platform::EventPointer& event) override;

 private:
  std::shared_ptr<HostScene> scene_;
  std::function<void()> firstDrawn_;
};

}  // namespace samplehost
