#include "Programs/SampleHost/WindowDelegate.h"

#include <utility>

#include "Programs/SampleHost/HostArguments.h"
#include "Programs/SampleHost/PopoverAnswer.h"

namespace samplehost {

using platform::Bitmap;
using platform::Color;
using platform::Point;
using platform::Rect;
using platform::Size;
using std::optional;

WindowDelegate::WindowDelegate(std::string identifier, const Answers& answers, const HostEvents& events,
                               const HostWindows& windows)
    : identifier_(std::move(identifier)),
      name_("window:" + identifier_),
      answers_(answers),
      events_(events),
      windows_(windows) {}

void WindowDelegate::tell(const char* name, Value::Array arguments) const {
  events_.emit({name, name_, std::move(arguments)});
}

std::string WindowDelegate::uiWindowID() {
  return answer<optional<std::string>>("uiWindowID").value_or(identifier_);
}

Rect WindowDelegate::uiWindowBounds() {
  return answer<optional<Rect>>("uiWindowBounds").value_or(Rect{Point{}, windows_.boundsOf(identifier_)});
}

Size WindowDelegate::initialWindowSize() {
  return answer<Size>("initialWindowSize");
}

optional<std::string> WindowDelegate::frameAutosaveName() {
  return answer<optional<std::string>>("frameAutosaveName");
}

optional<std::vector<int>> WindowDelegate::initialAttachmentsEdge() {
  return answer<optional<std::vector<int>>>("initialAttachmentsEdge");
}

bool WindowDelegate::attachWithoutAppendingAsChild() {
  return answer<bool>("attachWithoutAppendingAsChild");
}

bool WindowDelegate::isOrderedOutWithFirstBecomeMain() {
  return answer<bool>("isOrderedOutWithFirstBecomeMain");
}

optional<veltrik::PopoverWindowDescription> WindowDelegate::popoverWindowDescription() {
  const auto popover = answer<optional<PopoverAnswer>>("popoverWindowDescription");
  if (!popover) return std::nullopt;
  return veltrik::PopoverWindowDescription{
      .targetFrame = popover->targetFrame,
      .parentWindowHelper =
          popover->parentWindowHelper ? windows_.helperOf(popover->parentWindowHelper->identifier) : nullptr,
      .attachments = popover->attachments};
}

HelperPointer WindowDelegate::parentWindowHelper() {
  const auto parent = answer<optional<WindowName>>("parentWindowHelper");
  return parent ? windows_.helperOf(parent->identifier) : nullptr;
}

optional<Bitmap> WindowDelegate::contentImage() {
  return answer<optional<Bitmap>>("contentImage");
}

bool WindowDelegate::showOnlyCloseButton() {
  return answer<bool>("showOnlyCloseButton");
}

bool WindowDelegate::closableByUserInterface() {
  return answer<bool>("closableByUserInterface");
}

optional<Color> WindowDelegate::customTitleBackgroundColor() {
  return answer<optional<Color>>("customTitleBackgroundColor");
}

optional<Bitmap> WindowDelegate::spaceLogoImage() {
  return answer<optional<Bitmap>>("spaceLogoImage");
}

optional<std::string> WindowDelegate::spaceName() {
  return answer<optional<std::string>>("spaceName");
}

bool WindowDelegate::isInputableIosResponder() {
  return answer<bool>("isInputableIosResponder");
}

bool WindowDelegate::mouseDoubleTapped(Point location) {
  tell("mouseDoubleTapped", {Codec<Point>::encode(location)});
  return answer<bool>("mouseDoubleTapped");
}

bool WindowDelegate::mouseRightClick(Point location) {
  tell("mouseRightClick", {Codec<Point>::encode(location)});
  return answer<bool>("mouseRightClick");
}

void WindowDelegate::didSelectedFilePath(const std::vector<platform::URL>& files) {
  tell("didSelectedFilePath", {Codec<std::vector<platform::URL>>::encode(files)});
}

bool WindowDelegate::windowShouldClose() {
  tell("windowShouldClose");
  return answer<bool>("windowShouldClose");
}

void WindowDelegate::windowWillClose() {
  tell("windowWillClose");
}
void WindowDelegate::windowDidBecomeMain() {
  tell("windowDidBecomeMain");
}
void WindowDelegate::windowDidResignMain() {
  tell("windowDidResignMain");
}
void WindowDelegate::windowDidBecomeKey() {
  tell("windowDidBecomeKey");
}
void WindowDelegate::windowDidResignKey() {
  tell("windowDidResignKey");
}
void WindowDelegate::windowDidConvertedAsPopover() {
  tell("windowDidConvertedAsPopover");
}

void WindowDelegate::windowWillResize(Size size) {
  tell("windowWillResize", {Codec<Size>::encode(size)});
}

void WindowDelegate::windowDidResize(Size size) {
  tell("windowDidResize", {Codec<Size>::encode(size)});
  if (resized_) resized_();
}

void WindowDelegate::windowDidResizeByAutoSavedFrame() {
  tell("windowDidResizeByAutoSavedFrame");
}
void WindowDelegate::windowDidMiniaturize() {
  tell("windowDidMiniaturize");
}
void WindowDelegate::windowDidDeminiaturize() {
  tell("windowDidDeminiaturize");
}

}  // namespace samplehost
