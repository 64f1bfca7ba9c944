#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextInputClient.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

/// A click this soon after the machine activated the window is the one that did it.
constexpr double kActivatingClick = 0.05;

EventPointer keyEvent(const port::KeyInput& input, std::int64_t windowNumber) {
  auto event = std::make_shared<NSEvent>();
  event->type = input.down ? EventType::keyDown : EventType::keyUp;
  event->modifierFlags = input.modifiers;
  event->timestamp = input.time;
  event->windowNumber = windowNumber;
  event->keyCode = input.keyCode;
  event->isARepeat = input.repeated;
  event->characters = input.characters;
  event->charactersIgnoringModifiers = input.charactersIgnoringModifiers;
  return event;
}

EventPointer withType(const NSEvent& event, EventType type) {
  auto changed = std::make_shared<NSEvent>(event);
  changed->type = type;
  return changed;
}

}  // namespace

std::shared_ptr<NSView> NSWindow::contentView() const {
  return contentView_ && contentView_->superview() == themeFrame_.get() ? contentView_ : nullptr;
}

void NSWindow::setContentView(std::shared_ptr<NSView> view) {
  const auto alive = self();
  if (view && view == contentView()) return;
  if (const auto old = contentView()) old->removeFromSuperview();
  contentView_ = std::move(view);
  if (!contentView_) return;
  const auto content = contentView_;
  content->setTranslatesAutoresizingMaskIntoConstraints(true);
  content->setAutoresizingMask(0);
  content->setFrame(contentRectForFrameRect(frame_).offsetBy({-frame_.x, -frame_.y}));
  themeFrame_->addSubview(content);
}

void NSWindow::setContentViewController(std::shared_ptr<NSViewController> controller) {
  contentViewController_ = std::move(controller);
  if (contentViewController_) setContentView(contentViewController_->view());
}

std::shared_ptr<NSResponder> NSWindow::firstResponder() {
  if (auto responder = firstResponder_.lock()) return responder;
  return self();
}

bool NSWindow::makeFirstResponder(const std::shared_ptr<NSResponder>& responder) {
  requireMainThread("NSWindow::makeFirstResponder");
  const auto alive = self();
  const auto present = firstResponder_.lock();
  const auto wanted = responder.get() == this ? nullptr : responder;
  if (present == wanted) return true;
  if (present) {
    if (!present->resignFirstResponder()) return false;
    const auto chosen = firstResponder_.lock();
    if (chosen && chosen != present) return chosen == wanted;  // it chose another one itself
    firstResponder_.reset();
  }
  const auto* view = dynamic_cast<const NSView*>(wanted.get());
  const bool belongsHere = !view || view->window() == this;
  const bool taken = !wanted || (belongsHere && wanted->acceptsFirstResponder() && wanted->becomeFirstResponder());
  // One that was asked may have handed the focus on, as a text field does to its editor.
  const bool handedOn = !firstResponder_.expired();
  if (taken && wanted && !handedOn && !(view && view->window() != this)) firstResponder_ = wanted;
  textInputChanged(true);
  return taken;
}

void NSWindow::viewLeaves(const NSView& view) {
  const auto responder = firstResponder_.lock();
  const auto* focused = dynamic_cast<const NSView*>(responder.get());
  if (!focused || !focused->isDescendantOf(view)) return;
  firstResponder_.reset();
  textInputChanged(true);
  // One that is taken out learns of it by that; one that is hidden doesn't, and has no say in it.
  if (view.isHidden()) responder->resignFirstResponder();
}

NSResponder* NSWindow::nextResponder() {
  return nullptr;
}

bool NSWindow::performKeyEquivalent(const EventPointer& event) {
  const auto alive = themeFrame_;
  return alive->performKeyEquivalent(event);
}

std::shared_ptr<NSView> NSWindow::viewAt(Point inWindow) {
  layoutIfNeeded();
  NSView* hit = themeFrame_->hitTest(inWindow);
  return hit ? std::static_pointer_cast<NSView>(hit->shared_from_this()) : nullptr;
}

void NSWindow::sendEvent(const EventPointer& event) {
  const auto alive = self();
  if (closed_) return;
  switch (event->type) {
    case EventType::leftMouseDown:
      return pressed(event);
    case EventType::leftMouseDragged:
      return deliverToGrab(event, &NSResponder::mouseDragged, false);
    case EventType::leftMouseUp:
      return deliverToGrab(event, &NSResponder::mouseUp, true);
    case EventType::rightMouseDown:
      return otherPressed(event, &NSResponder::rightMouseDown);
    case EventType::otherMouseDown:
      return otherPressed(event, &NSResponder::otherMouseDown);
    case EventType::rightMouseUp:
      return deliverToGrab(event, &NSResponder::rightMouseUp, true);
    case EventType::otherMouseUp:
      return otherGrab_.reset();
    case EventType::rightMouseDragged:
    case EventType::otherMouseDragged:
      return;  // no responder has a handler for these
    case EventType::mouseMoved:
      return hovered(event);
    case EventType::mouseEntered:
      return;
    case EventType::mouseExited:
      return hoverLeft(event);
    case EventType::scrollWheel:
      if (const auto view = viewAt(event->locationInWindow)) view->scrollWheel(event);
      return;
    case EventType::keyDown:
      return firstResponder()->keyDown(event);
    case EventType::keyUp:
      return firstResponder()->keyUp(event);
  }
}

bool NSWindow::takeActivatingClick(const EventPointer& event) {
  const auto activated = std::exchange(activatedByMachineAt_, std::nullopt);
  if (activated && event->timestamp - *activated <= kActivatingClick) return true;
  if (isKeyWindow() || !canBecomeKey()) return false;
  orderFront();
  makeKey();
  return true;
}

void NSWindow::pressed(const EventPointer& event) {
  grab_.reset();
  const bool activates = takeActivatingClick(event);
  if (closed_) return;
  const auto view = viewAt(event->locationInWindow);
  if (!view || (activates && !view->acceptsFirstMouse(event))) return;
  grab_ = view;
  if (view->acceptsFirstResponder() && firstResponder_.lock() != view) {
    makeFirstResponder(view);
    if (closed_ || view->window() != this) return;
  }
  view->mouseDown(event);
}

void NSWindow::otherPressed(const EventPointer& event, void (NSResponder::*handler)(const EventPointer&)) {
  const auto view = viewAt(event->locationInWindow);
  otherGrab_ = view;
  if (view) (view.get()->*handler)(event);
}

void NSWindow::deliverToGrab(const EventPointer& event, void (NSResponder::*handler)(const EventPointer&), bool ends) {
  const bool left = event->type == EventType::leftMouseDragged || event->type == EventType::leftMouseUp;
  auto& grab = left ? grab_ : otherGrab_;
  const auto view = grab.lock();
  if (ends) grab.reset();
  if (view && view->window() == this) (view.get()->*handler)(event);
}

void NSWindow::hovered(const EventPointer& event) {
  const auto view = viewAt(event->locationInWindow);
  const auto before = hover_.lock();
  hover_ = view;
  if (view) {
    const port::Cursor cursor = view->cursorAt(view->convertFrom(event->locationInWindow, nullptr));
    if (surface_ && std::exchange(cursor_, cursor) != cursor) surface_->setCursor(cursor);
  }
  if (before != view) {
    if (before && before->window() == this) before->mouseExited(withType(*event, EventType::mouseExited));
    if (view && view->window() == this) view->mouseEntered(withType(*event, EventType::mouseEntered));
  }
  if (view && view->window() == this) view->mouseMoved(event);
}

void NSWindow::hoverLeft(const EventPointer& event) {
  const auto before = hover_.lock();
  hover_.reset();
  if (before && before->window() == this) before->mouseExited(event);
}

void NSWindow::surfacePointer(const port::PointerInput& input) {
  NSApplication& application = NSApplication::shared();
  application.postEvent(application.pointer_.event(input, number_, frame_.origin()), false);
}

void NSWindow::surfaceWheel(const port::WheelInput& input) {
  auto event = std::make_shared<NSEvent>();
  event->type = EventType::scrollWheel;
  event->locationInWindow = convertPointFromScreen(input.location);
  event->locationOnScreen = input.location;
  event->modifierFlags = input.modifiers;
  event->timestamp = input.time;
  event->windowNumber = number_;
  event->deltaX = input.deltaX;
  event->deltaY = input.deltaY;
  NSApplication::shared().postEvent(std::move(event), false);
}

port::KeyDisposition NSWindow::surfaceKey(const port::KeyInput& input) {
  const auto alive = self();
  NSApplication& application = NSApplication::shared();
  if (application.trackingDepth_ > 0) {
    application.postEvent(keyEvent(input, number_), false);
    return port::KeyDisposition::handled;
  }
  application.dispatchQueued();
  if (closed_) return port::KeyDisposition::handled;
  const EventPointer event = keyEvent(input, number_);
  struct Live {
    NSApplication& application;
    const NSEvent* key;
    bool offered;
    Live(NSApplication& app, const NSEvent& event)
        : application(app),
          key(std::exchange(app.liveKey_, &event)),
          offered(std::exchange(app.liveKeyOffered_, false)) {}
    ~Live() {
      application.liveKey_ = key;
      application.liveKeyOffered_ = offered;
    }
  } live(application, *event);
  application.sendEvent(event);
  return application.liveKeyOffered_ ? port::KeyDisposition::inputMethod : port::KeyDisposition::handled;
}

bool NSWindow::offerToInputMethod(const EventPointer& event) {
  NSApplication& application = NSApplication::shared();
  // The input method serves the surface that the key came from.
  if (!event || application.liveKey_ != event.get() || event->windowNumber != number_) return false;
  application.liveKeyOffered_ = true;
  return true;
}

void NSWindow::surfaceKeyAfterInputMethod(const port::KeyInput& input) {
  const auto alive = self();
  const auto responder = firstResponder_.lock();
  if (auto* client = dynamic_cast<NSTextInputClient*>(responder.get()))
    client->interpretKeyDirectly(keyEvent(input, number_));
}

void NSWindow::surfaceMarkedText(const std::u16string& text, std::size_t caret) {
  const auto alive = self();
  const auto responder = firstResponder_.lock();
  if (auto* client = dynamic_cast<NSTextInputClient*>(responder.get())) client->setMarkedText(text, caret);
}

void NSWindow::surfaceCommittedText(const std::u16string& text) {
  const auto alive = self();
  const auto responder = firstResponder_.lock();
  if (auto* client = dynamic_cast<NSTextInputClient*>(responder.get())) client->insertText(text);
}

void NSWindow::surfaceDeleteSurrounding(std::ptrdiff_t offset, std::size_t length) {
  const auto alive = self();
  const auto responder = firstResponder_.lock();
  if (auto* client = dynamic_cast<NSTextInputClient*>(responder.get())) client->deleteSurrounding(offset, length);
}

std::optional<port::TextInputState> NSWindow::surfaceTextInput() {
  const auto responder = firstResponder_.lock();
  auto* client = dynamic_cast<NSTextInputClient*>(responder.get());
  return client ? client->textInputState() : std::nullopt;
}

void NSWindow::textInputChanged(bool endComposition) {
  if (surface_) surface_->textInputChanged(endComposition);
}

}  // namespace platform
