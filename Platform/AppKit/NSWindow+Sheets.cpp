#include <algorithm>
#include <cmath>

#include "Platform/AppKit/Attempts.h"
#include "Platform/AppKit/NSAnimation.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

constexpr double kSlideIn = 0.2;  // seconds

}  // namespace

void NSWindow::beginSheet(const std::shared_ptr<NSWindow>& sheet, SheetCompletion completion) {
  requireMainThread("NSWindow::beginSheet");
  const auto alive = self();
  const auto canBegin = [&] {
    return sheet && sheet.get() != this && !closing_ && !sheet->closing_ && !sheet->sheetParent_ &&
           !sheet->isAncestorOf(*this);
  };
  if (canBegin()) sheet->orderOut();
  if (!canBegin()) {
    if (completion) completion(ModalResponse::kAbort);
    return;
  }
  if (sheet->parent_) sheet->parent_->removeChildWindow(*sheet);
  sheets_.push_back({sheet, std::move(completion)});
  sheet->setSheetParent(this);
  if (sheets_.size() == 1) attachFrontSheet();
}

/// A sheet has no title bar; its content keeps its size.
void NSWindow::setSheetParent(NSWindow* parent) {
  const double height = contentRectForFrameRect(frame_).height;
  sheetParent_ = parent;
  const double grown = contentRectForFrameRect(frame_).height - height;
  setFrame({frame_.x, frame_.y, frame_.width, frame_.height - grown}, true);
  updateSurface();
}

void NSWindow::attachFrontSheet() {
  const auto sheet = sheets_.front().window;
  addChildWindow(sheet, WindowOrdering::above);
  hangSheet();
  if (attachedSheet() != sheet) return;
  if (!visible_) {
    sheet->hiddenWithParent_ = true;
    return;
  }
  sheet->slideIn();
  sheet->orderFront();
  NSApplication& application = NSApplication::shared();
  const auto key = application.keyWindow();
  const bool concernsUser = !key || &key->familyRoot() == &familyRoot();
  if (application.isActive() && concernsUser && attachedSheet() == sheet) application.focus(*sheet);
}

void NSWindow::slideIn() {
  applyRevealed(0);
  slide_ = std::make_unique<NSAnimation>(kSlideIn, [this](double progress) { applyRevealed(progress); });
}

void NSWindow::applyRevealed(double part) {
  revealed_ = part;
  updateSurface();
  invalidate({{}, frame_.size()});
}

void NSWindow::endSheet(NSWindow& sheet, int response) {
  requireMainThread("NSWindow::endSheet");
  const auto found =
      std::find_if(sheets_.begin(), sheets_.end(), [&](const Sheet& each) { return each.window.get() == &sheet; });
  if (found == sheets_.end()) return;
  const auto alive = self();
  const auto ended = found->window;
  const SheetCompletion completion = std::move(found->completion);
  const bool wasAttached = found == sheets_.begin();
  const bool hadFocus = sheet.isKeyWindow();
  sheets_.erase(found);
  removeChildWindow(sheet);

  Attempts attempt;
  attempt([&] { sheet.setSheetParent(nullptr); });
  sheet.slide_.reset();
  attempt([&] {
    if (hadFocus && !closing_) NSApplication::shared().focus(*this);
  });
  attempt([&] { sheet.orderOut(); });
  sheet.applyRevealed(1);
  attempt([&] {
    if (wasAttached && !sheets_.empty() && !closing_) attachFrontSheet();
  });
  attempt([&] {
    if (completion) completion(response);
  });
  attempt.finish();
}

/// Those that wait for their turn; the attached one is a child and closes.
void NSWindow::endWaitingSheets(Attempts& attempt) {
  while (!sheets_.empty()) {
    const auto sheet = sheets_.back().window;
    attempt([&] { endSheet(*sheet, ModalResponse::kAbort); });
  }
}

std::shared_ptr<NSWindow> NSWindow::attachedSheet() const {
  return sheets_.empty() ? nullptr : sheets_.front().window;
}

void NSWindow::hangSheet() {
  const auto sheet = attachedSheet();
  if (!sheet) return;
  const Rect content = contentRectForFrameRect(frame_);
  Rect line{0, content.maxY() - frame_.y, frame_.width, 0};
  if (const auto delegate = delegate_.lock()) line = delegate->windowWillPositionSheetUsingRect(*this, *sheet, line);
  if (attachedSheet() != sheet) return;
  const Size size = sheet->frame_.size();
  sheet->setFrameOrigin(frame_.origin() +
                        Point{line.x + std::round((line.width - size.width) / 2), line.y - size.height});
}

bool NSWindow::isInputBlocked() const {
  const NSWindow& target = NSApplication::shared().inputTarget(const_cast<NSWindow&>(*this));
  return &target != this;
}

}  // namespace platform
