#include <algorithm>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

namespace {

constexpr WindowButton kButtons[] = {WindowButton::close, WindowButton::miniaturize, WindowButton::zoom};

Color colorOf(WindowButton button) {
  switch (button) {
    case WindowButton::close:
      return palette::kCloseButton;
    case WindowButton::miniaturize:
      return palette::kMiniaturizeButton;
    case WindowButton::zoom:
      return palette::kZoomButton;
  }
  return palette::kInactiveButton;
}

}  // namespace

void NSThemeFrame::drawChrome(port::Canvas& canvas) {
  // A sheet's rim is open to the title bar that it hangs from.
  if (window()->isSheet()) canvas.stroke({0.5, -1, frame().width - 1, frame().height + 0.5}, palette::kSeparator, 1, 0);
  if (!isTitled()) return;
  const double height = titleBarHeight();
  if (!window()->titlebarAppearsTransparent()) {
    canvas.fill({0, 0, frame().width, height}, palette::kTitleBar, 0);
    canvas.line({0, height - 0.5}, {frame().width, height - 0.5}, palette::kSeparator, 1);
    if (!window()->isTitleHidden() && !window()->title().empty()) drawTitle(canvas, height);
  }
  for (const auto button : kButtons)
    if (isShown(button)) drawButton(canvas, button);
}

void NSThemeFrame::drawTitle(port::Canvas& canvas, double height) {
  const std::u16string text = utf16(window()->title());
  const double reserved = buttonFrame(WindowButton::zoom).maxX() + 8;
  const double room = frame().width - 2 * reserved;
  if (room <= 0) return;
  port::TextRun run;
  run.length = text.size();
  run.font = {13, true};
  run.color = window()->isKeyWindow() ? palette::kText : palette::kInactiveText;
  port::TextOptions options;
  options.width = room;
  options.elided = true;
  const auto layout = Session::current().backend().text().layout(text, {&run, 1}, options);
  const Size size = layout->size();
  canvas.text(*layout, {(frame().width - size.width) / 2, (height - size.height) / 2});
}

void NSThemeFrame::drawButton(port::Canvas& canvas, WindowButton button) {
  const Rect place = buttonFrame(button);
  const Rect circle{place.x, frame().height - place.maxY(), place.width, place.height};
  const double radius = circle.width / 2;
  canvas.fill(circle, window()->isKeyWindow() ? colorOf(button) : palette::kInactiveButton, radius);
  canvas.stroke(circle.insetBy(0.5, 0.5), palette::kShade, 1, radius - 0.5);
  if (press_ && press_->button == button && press_->inside) canvas.fill(circle, palette::kShade, radius);
}

}  // namespace platform
