#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Programs/SampleHost/Answers.h"
#include "Programs/SampleHost/HostEvent.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"

namespace samplehost {

using HelperPointer = std::shared_ptr<veltrik::VeltrikAppKitWindowHelperProtocol>;

/// What a window's delegate needs to know of the host. Borrowed; outlives the delegate.
class HostWindows {
 public:
  virtual ~HostWindows() = default;
  /// The helper of the host window with this identifier; null when none was bound.
  virtual HelperPointer helperOf(const std::string& identifier) const = 0;
  /// The size of the host window's content in the host's points.
  virtual platform::Size boundsOf(const std::string& identifier) const = 0;
};

/// A window helper's delegate: tells what it hears, answers from the table. Main thread.
class WindowDelegate : public veltrik::VeltrikAppKitWindowHelperDelegateProtocol {
 public:
  /// The references are borrowed and outlive the delegate.
  WindowDelegate(std::string identifier, const Answers& answers, const HostEvents& events, const HostWindows& windows);

  /// Runs after `windowDidResize` was told.
  void setResized(std::function<void()> resized) { resized_ = std::move(resized); }

  std::string uiWindowID() override;
  platform::Rect uiWindowBounds() override;
  platform::Size initialWindowSize() override;
  std::optional<std::string> frameAutosaveName() override;
  std::optional<std::vector<int>> initialAttachmentsEdge() override;
  bool attachWithoutAppendingAsChild() override;
  bool isOrderedOutWithFirstBecomeMain() override;
  std::optional<veltrik::PopoverWindowDescription> popoverWindowDescription() override;
  HelperPointer parentWindowHelper() override;
  std::optional<platform::Bitmap> contentImage() override;
  bool showOnlyCloseButton() override;
  bool closableByUserInterface() override;
  std::optional<platform::Color> customTitleBackgroundColor() override;
  std::optional<platform::Bitmap> spaceLogoImage() override;
  std::optional<std::string> spaceName() override;
  bool isInputableIosResponder() override;

  bool mouseDoubleTapped(platform::Point location) override;
  bool mouseRightClick(platform::Point location) override;
  void didSelectedFilePath(const std::vector<platform::URL>& files) override;
  bool windowShouldClose() override;
  void windowWillClose() override;
  void windowDidBecomeMain() override;
  void windowDidResignMain() override;
  void windowDidBecomeKey() override;
  void windowDidResignKey() override;
  void windowDidConvertedAsPopover() override;
  void windowWillResize(platform::Size size) override;
  void windowDidResize(platform::Size size) override;
  void windowDidResizeByAutoSavedFrame() override;
  void windowDidMiniaturize() override;
  void windowDidDeminiaturize() override;

 private:
  template <class T>
  T answer(const char* member) const {
    return answers_.get<T>(name_, member);
  }
  void tell(const char* name, Value::Array arguments = {}) const;

  std::string identifier_;
  std::string name_;
  const Answers& answers_;
  const HostEvents& events_;
  const HostWindows& windows_;
  std::function<void()> resized_;
};

}  // namespace samplehost
