#include "Platform/AppKit/NSWindow.h"

#include "Platform/AppKit/Attempts.h"
#include "Platform/AppKit/NSAnimation.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/Foundation/Session.h"

namespace platform {

const SetTitleMessage kSetTitle{"setTitle:"};
const OrderFrontMessage kMakeKeyAndOrderFront{"makeKeyAndOrderFront:"};
const RectMessage kContentRectForFrameRect{"contentRectForFrameRect:styleMask:"};
const RectMessage kFrameRectForContentRect{"frameRectForContentRect:styleMask:"};

namespace {

double titleBarOf(const NSWindow& window, unsigned styleMask) {
  return styleMask & StyleMask::kTitled && !window.isSheet() ? NSThemeFrame::titleBarHeight() : 0;
}

}  // namespace

runtime::Class& NSWindow::staticClass() {
  static runtime::Class& made = *[] {
    auto* window = new runtime::Class("NSWindow", nullptr);
    window->addMethod(kSetTitle, [](NSWindow& self, const std::string& title) { self.titleChanged(title); });
    window->addMethod(kMakeKeyAndOrderFront, [](NSWindow& self, const void*) {
      self.orderFront();
      self.makeKey();
    });
    window->addMethod(kContentRectForFrameRect, [](NSWindow& self, const Rect& frame, unsigned mask) {
      return Rect{frame.x, frame.y, frame.width, std::max(0.0, frame.height - titleBarOf(self, mask))};
    });
    window->addMethod(kFrameRectForContentRect, [](NSWindow& self, const Rect& content, unsigned mask) {
      return Rect{content.x, content.y, content.width, content.height + titleBarOf(self, mask)};
    });
    return window;
  }();
  return made;
}

std::shared_ptr<NSWindow> NSWindow::make(const Rect& contentRect, unsigned styleMask) {
  struct Made : NSWindow {
    Made(const Rect& content, unsigned style) : NSWindow(content, style) {}
  };
  auto window = std::make_shared<Made>(contentRect, styleMask);
  introduce(window);
  return window;
}

NSWindow::NSWindow(const Rect& contentRect, unsigned styleMask) : styleMask_(styleMask) {
  requireMainThread("NSWindow::make");
  frame_ = frameRectForContentRect(contentRect);
  themeFrame_ = std::make_shared<NSThemeFrame>(Rect{{}, frame_.size()});
  themeFrame_->window_ = this;
}

void NSWindow::introduce(const std::shared_ptr<NSWindow>& window) {
  window->number_ = NSApplication::shared().addWindow(window);
}

NSWindow::~NSWindow() {
  for (const auto& child : children_) child->parent_ = nullptr;
  for (const auto& sheet : sheets_) sheet.window->sheetParent_ = nullptr;
  themeFrame_->forgetWindow();
}

std::shared_ptr<NSWindow> NSWindow::self() {
  return std::static_pointer_cast<NSWindow>(shared_from_this());
}

void NSWindow::tell(DelegateCall call) {
  if (const auto delegate = delegate_.lock()) (delegate.get()->*call)(*this);
}

void NSWindow::performClose() {
  const auto alive = self();
  if (closed_ || !(styleMask_ & StyleMask::kClosable)) return;
  NSApplication& application = NSApplication::shared();
  if (NSWindow& target = application.inputTarget(*this); &target != this) return application.bringForward(target);
  const auto delegate = delegate_.lock();
  if (!delegate || delegate->windowShouldClose(*this)) close();
}

void NSWindow::close() {
  requireMainThread("NSWindow::close");
  if (closed_ || closing_) return;
  const auto alive = self();
  closing_ = true;
  // Whatever a delegate does or throws, a window that began to close is closed in the end.
  Attempts attempt;
  const auto children = children_;
  for (const auto& child : children) attempt([&] { child->close(); });
  endWaitingSheets(attempt);
  attempt([&] { tell(&NSWindowDelegate::windowWillClose); });
  if (const auto sheetParent = sheetParent_ ? sheetParent_->self() : nullptr)
    attempt([&] { sheetParent->endSheet(*this, ModalResponse::kAbort); });
  attempt([&] { finishClosing(); });
  attempt([&] { didClose(); });
  attempt.finish();
}

void NSWindow::finishClosing() {
  closed_ = true;
  visible_ = false;
  miniaturized_ = false;
  fade_.reset();
  slide_.reset();
  if (parent_) parent_->removeChildWindow(*this);
  NSApplication& application = NSApplication::shared();
  application.forgetWindow(*this);
  surface_ = nullptr;
  application.passFocusOn();
}

std::unique_ptr<port::Surface> NSWindow::makeSurface(port::SurfaceSink& sink, const port::SurfaceState& state) {
  return Session::current().backend().windows().makeSurface(sink, state);
}

void NSWindow::belongToMainWindow() {
  const auto main = NSApplication::shared().mainWindow();
  if (surface_ && !parent_ && main && main.get() != this) surface_->setParent(main->surface_.get());
}

void NSWindow::ensureSurface() {
  if (surface_) return;
  surface_ = makeSurface(*this, surfaceState());
  if (parent_ && parent_->surface_) surface_->setParent(parent_->surface_.get());
  for (const auto& child : children_)
    if (child->surface_) child->surface_->setParent(surface_.get());
  if (zoomed_) surface_->setZoomed(true);
}

void NSWindow::updateSurface() {
  if (surface_) surface_->apply(surfaceState());
}

port::SurfaceState NSWindow::surfaceState() const {
  port::SurfaceState state;
  state.frame = frame_;
  state.visible = visible_ || miniaturized_;
  state.level = effectiveLevel();
  state.alpha = alpha_;
  state.title = title_;
  state.transparent = !opaque_ || (backgroundColor_ && backgroundColor_->alpha < 1);
  state.cornerRadius = cornerRadius();
  state.revealed = revealed_;
  state.resizable = styleMask_ & StyleMask::kResizable;
  state.minimisable = styleMask_ & StyleMask::kMiniaturizable;
  state.skipsTaskbar = parent_ != nullptr;
  state.modal = isSheet() || NSApplication::shared().modalWindow().get() == this;
  return state;
}

std::optional<Bitmap> NSWindow::snapshot() {
  return surface_ ? surface_->snapshot() : std::nullopt;
}

std::uint64_t NSWindow::nativeHandle() const {
  return surface_ ? surface_->nativeHandle() : 0;
}

}  // namespace platform
