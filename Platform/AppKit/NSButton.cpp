#include "Platform/AppKit/NSButton.h"

#include <cmath>
#include <limits>
#include <utility>

#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

namespace {

constexpr double kHighlightedOpacity = 0.6;
constexpr double kRadius = 6;
constexpr double kTitleMargin = 16;  ///< between the body's sides and the title
constexpr double kBodyHeight = 28;
constexpr std::uint64_t kShortcutModifiers = ModifierFlag::kCommand | ModifierFlag::kControl | ModifierFlag::kOption;

}  // namespace

void NSButton::setImage(std::shared_ptr<const NSImage> image) {
  image_ = std::move(image);
  setNeedsDisplay();
}

void NSButton::setTitle(std::string utf8) {
  title_ = std::move(utf8);
  setNeedsDisplay();
}

void NSButton::setBordered(bool bordered) {
  bordered_ = bordered;
  setNeedsDisplay();
}

void NSButton::setKeyEquivalent(std::string key) {
  keyEquivalent_ = std::move(key);
  setNeedsDisplay();
}

void NSButton::setHighlighted(bool highlighted) {
  if (std::exchange(highlighted_, highlighted) != highlighted) setNeedsDisplay();
}

std::shared_ptr<const port::TextLayout> NSButton::titleLayout(double width) const {
  const std::u16string text = utf16(title_);
  const Color color = keyEquivalent_ == "\r" ? palette::kAccentText : palette::kText;
  const port::TextRun run{0, text.size(), {}, color};
  return Session::current().backend().text().layout(text, {&run, 1}, {.width = width, .elided = true});
}

std::optional<Size> NSButton::intrinsicContentSize() const {
  if (!bordered_) return std::nullopt;
  const double title = titleLayout(std::numeric_limits<int>::max())->size().width;
  return Size{std::ceil(title) + 2 * (kTitleMargin + kRing), kBodyHeight + 2 * kRing};
}

bool NSButton::becomeFirstResponder() {
  setNeedsDisplay();
  return true;
}

bool NSButton::resignFirstResponder() {
  setNeedsDisplay();
  return true;
}

void NSButton::draw(port::Canvas& canvas) {
  if (bordered_) return drawBody(canvas);
  if (highlighted_) canvas.fade(kHighlightedOpacity);
  if (image_) drawImageFitting(canvas, *this, *image_);
}

void NSButton::drawBody(port::Canvas& canvas) {
  const Rect body = bounds().insetBy(kRing, kRing);
  const bool isDefault = keyEquivalent_ == "\r";
  canvas.fill(body, isDefault ? palette::kAccent : palette::kControl, kRadius);
  if (!isDefault) canvas.stroke(body.insetBy(0.5, 0.5), palette::kControlRim, 1, kRadius);
  if (highlighted_) canvas.fill(body, palette::kShade, kRadius);
  if (window() && window()->isKeyWindow() && window()->firstResponder().get() == this)
    canvas.stroke(bounds().insetBy(1, 1), palette::kFocusRing, 2, kRadius + 2);
  const auto title = titleLayout(body.width - kTitleMargin);
  const Size size = title->size();
  canvas.text(*title, {body.x + std::round((body.width - size.width) / 2),
                       body.y + std::round((body.height - size.height) / 2)});
}

void NSButton::keyDown(const EventPointer& event) {
  const bool presses = event->keyCode == KeyCode::kSpace || event->keyCode == KeyCode::kReturn ||
                       event->keyCode == KeyCode::kKeypadEnter;
  if (!bordered_ || !presses || (event->modifierFlags & kShortcutModifiers)) return NSControl::keyDown(event);
  // A key that is held would press again in whatever comes to stand in the button's place.
  if (!event->isARepeat) performClick();
}

void NSButton::mouseDown(const EventPointer& /*event*/) {
  if (!window()) return;
  // Whatever happens while the button is down may remove this view or close the window.
  const auto self = shared_from_this();
  const auto host = window()->shared_from_this();
  bool clicked = false;
  setHighlighted(true);
  window()->trackEvents(eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp),
                        std::numeric_limits<double>::max(), [&](const EventPointer& next, bool& stop) {
                          stop = !next || !window() || next->type == EventType::leftMouseUp;
                          const bool inside =
                              next && window() && bounds().contains(convertFrom(next->locationInWindow, nullptr));
                          clicked = inside && stop;
                          setHighlighted(inside && !stop);
                        });
  if (clicked) sendAction();
}

}  // namespace platform
