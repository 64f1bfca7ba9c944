#include "Platform/AppKit/NSResponder.h"

namespace platform {

namespace {

/// Hands an event to the next responder, which stays alive while it handles it.
void passOn(NSResponder& from, void (NSResponder::*handler)(const EventPointer&), const EventPointer& event) {
  NSResponder* next = from.nextResponder();
  if (!next) return;
  const auto alive = next->weak_from_this().lock();
  (next->*handler)(event);
}

}  // namespace

void NSResponder::mouseDown(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseDown, event);
}
void NSResponder::mouseUp(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseUp, event);
}
void NSResponder::mouseDragged(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseDragged, event);
}
void NSResponder::mouseMoved(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseMoved, event);
}
void NSResponder::mouseEntered(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseEntered, event);
}
void NSResponder::mouseExited(const EventPointer& event) {
  passOn(*this, &NSResponder::mouseExited, event);
}
void NSResponder::rightMouseDown(const EventPointer& event) {
  passOn(*this, &NSResponder::rightMouseDown, event);
}
void NSResponder::rightMouseUp(const EventPointer& event) {
  passOn(*this, &NSResponder::rightMouseUp, event);
}
void NSResponder::otherMouseDown(const EventPointer& event) {
  passOn(*this, &NSResponder::otherMouseDown, event);
}
void NSResponder::scrollWheel(const EventPointer& event) {
  passOn(*this, &NSResponder::scrollWheel, event);
}
void NSResponder::keyDown(const EventPointer& event) {
  passOn(*this, &NSResponder::keyDown, event);
}
void NSResponder::keyUp(const EventPointer& event) {
  passOn(*this, &NSResponder::keyUp, event);
}

bool NSResponder::performKeyEquivalent(const EventPointer& /*event*/) {
  return false;
}

bool NSResponder::doCommand(std::string_view selector) {
  NSResponder* next = nextResponder();
  if (!next) return false;
  const auto alive = next->weak_from_this().lock();
  return next->doCommand(selector);
}

}  // namespace platform
