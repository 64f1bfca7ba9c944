#include "Platform/AppKit/NSAlert.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/AlertView.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

/// The part of a screen's height that an alert takes at most.
constexpr double kScreenPart = 0.85;

/// It has no title bar while it is a sheet to be, and takes the keyboard all the same.
class AlertPanel : public NSPanel {
 public:
  static std::shared_ptr<AlertPanel> make() {
    struct Made : AlertPanel {};
    auto panel = std::make_shared<Made>();
    introduce(panel);
    return panel;
  }
  bool canBecomeKey() const override { return !isClosed(); }

 protected:
  AlertPanel() : NSPanel({0, 0, AlertView::kWidth, 0}, StyleMask::kBorderless) {}
};

Rect workAreaFor(const NSWindow& window) {
  const auto screens = NSScreen::screens();
  if (const auto screen = window.screen()) return screen->visibleFrame;
  return screens.empty() ? Rect{0, 0, 1024, 768} : screens.front().visibleFrame;
}

}  // namespace

/// A disc in the colour of the style, with an "i" or an exclamation mark.
class NSAlert::Icon final : public NSView {
 public:
  AlertStyle style = AlertStyle::warning;

  void draw(port::Canvas& canvas) override {
    const double side = bounds().width, stroke = side / 8;
    canvas.fill(bounds(), color(), style == AlertStyle::warning ? side / 4 : side / 2);
    const double left = (side - stroke) / 2;
    const bool dotOnTop = style == AlertStyle::informational;
    const double dot = dotOnTop ? side * 0.22 : side * 0.78 - stroke;
    const double bar = dotOnTop ? side * 0.42 : side * 0.22;
    canvas.fill({left, dot, stroke, stroke}, palette::kAccentText, stroke / 2);
    canvas.fill({left, bar, stroke, side * 0.36}, palette::kAccentText, stroke / 2);
  }

 private:
  Color color() const {
    switch (style) {
      case AlertStyle::warning:
        return palette::kWarning;
      case AlertStyle::informational:
        return palette::kAccent;
      case AlertStyle::critical:
        break;
    }
    return palette::kCritical;
  }
};

/// Whatever way a session is left, the alert is off the screen afterwards.
class NSAlert::Ending {
 public:
  explicit Ending(NSAlert& alert) : alert_(alert) { alert.shown_ = true; }
  ~Ending() { alert_.closeWindow(); }
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;

 private:
  NSAlert& alert_;
};

std::shared_ptr<NSAlert> NSAlert::make() {
  requireMainThread("NSAlert::make");
  std::shared_ptr<NSAlert> alert(new NSAlert);
  alert->buildView();
  return alert;
}

NSAlert::~NSAlert() {
  closeWindow();
}

void NSAlert::buildView() {
  icon_ = std::make_shared<Icon>();
  view_ = std::make_shared<AlertView>(icon_, [alert = weak_from_this()](std::size_t button) {
    if (const auto alive = alert.lock()) alive->answered(button);
  });
}

void NSAlert::setAlertStyle(AlertStyle style) {
  style_ = style;
  icon_->style = style;
  icon_->setNeedsDisplay();
}

void NSAlert::setMessageText(std::string utf8) {
  message_ = std::move(utf8);
  view_->message().show(message_);
  contentChanged();
}

void NSAlert::setInformativeText(std::string utf8) {
  informative_ = std::move(utf8);
  view_->informative().show(informative_);
  contentChanged();
}

std::shared_ptr<NSButton> NSAlert::addButton(const std::string& title) {
  auto button = view_->addButton(title);
  contentChanged();
  return button;
}

const std::vector<std::shared_ptr<NSButton>>& NSAlert::buttons() const {
  return view_->buttons();
}

std::shared_ptr<NSWindow> NSAlert::window() {
  if (!window_ || window_->isClosed()) {
    window_ = AlertPanel::make();
    window_->setContentView(view_);
    fit(std::floor(workAreaFor(*window_).height * kScreenPart));
    contentChanged();
  }
  window_->layoutIfNeeded();
  return window_;
}

/// A window that is shown follows what is in it.
void NSAlert::contentChanged() {
  view_->setNeedsLayout();
  if (window_) window_->setContentSize({AlertView::kWidth, shown_ ? view_->neededHeight() : view_->leastHeight()});
}

void NSAlert::fit(double limit) {
  view_->setHeightLimit(limit);
  window_->setContentSize({AlertView::kWidth, view_->neededHeight()});
  window_->layoutIfNeeded();
}

int NSAlert::runModal() {
  requireMainThread("NSAlert::runModal");
  if (shown_) return ModalResponse::kAbort;
  const auto alive = shared_from_this();
  const auto panel = window();
  const Ending ending(*this);
  // It comes up on the screen on which the user is at work.
  if (const auto main = NSApplication::shared().mainWindow()) panel->setFrameOrigin(main->frame().origin());
  panel->setStyleMask(StyleMask::kTitled);
  fit(std::floor(workAreaFor(*panel).height * kScreenPart) - NSThemeFrame::titleBarHeight());
  panel->center();
  view_->focusDefaultButton();
  return NSApplication::shared().runModal(panel);
}

void NSAlert::beginSheetModal(const std::shared_ptr<NSWindow>& parent, std::function<void(int response)> completion) {
  requireMainThread("NSAlert::beginSheetModal");
  if (shown_ || !parent) {
    if (completion) completion(ModalResponse::kAbort);
    return;
  }
  const auto panel = window();
  shown_ = true;
  const Rect area = workAreaFor(*parent);
  const double roomBelow = parent->contentRectForFrameRect(parent->frame()).maxY() - area.y;
  fit(std::floor(std::min(area.height * kScreenPart, std::max(roomBelow, view_->leastHeight()))));
  view_->focusDefaultButton();
  parent->beginSheet(panel, [alert = shared_from_this(), completion = std::move(completion)](int response) {
    alert->closeWindow();
    if (completion) completion(response);
  });
}

void NSAlert::answered(std::size_t button) {
  const int response = AlertResponse::kFirstButton + static_cast<int>(button);
  NSApplication& application = NSApplication::shared();
  if (!window_) return;
  if (NSWindow* parent = window_->sheetParent()) return parent->endSheet(*window_, response);
  if (application.modalWindow() == window_) application.stopModal(response);
}

void NSAlert::closeWindow() {
  shown_ = false;
  if (const auto closing = std::exchange(window_, nullptr)) closing->close();
}

}  // namespace platform
