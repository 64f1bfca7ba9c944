#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Geometry.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::NSApplication;
using platform::NSView;
using platform::NSWindow;
using platform::Point;
using platform::Rect;
using platform::WindowButton;
using platform::WindowOrdering;

namespace {

constexpr double kAttachmentGap = 4;
constexpr double kPopoverCornerRadius = 4;
constexpr double kPopoverFallbackBottom = 20;
constexpr double kPopoverFadeIn = 0.3;  // seconds

/// Numbers of an edge: left, top, right, bottom.
using Edges = std::vector<int>;
const Edges kCentred{0, 2, 1, 3};

bool isEdge(int number) {
  return number >= 0 && number <= 3;
}

std::shared_ptr<VeltrikAppKitWindowHelper> windowHelper(
    const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& helper) {
  return std::dynamic_pointer_cast<VeltrikAppKitWindowHelper>(helper);
}

/// Beside the parent, in the screen's width if that can be; nothing for edges that name no place.
std::optional<Point> originByEdges(const NSWindow& parent, const Rect& child, const Edges& edges) {
  const Rect beside = parent.frame();
  const auto screen = parent.screen();
  const double screenMinX = screen ? screen->visibleFrame.minX() : 0;
  const double screenMaxX = screen ? screen->visibleFrame.maxX() : std::numeric_limits<double>::max();
  const double left = beside.minX() - child.width - kAttachmentGap, right = beside.maxX() + kAttachmentGap;
  const double fittingLeft = left < screenMinX ? right : left;
  const double fittingRight = screenMaxX < right + child.width ? left : right;
  const double top = beside.maxY() - child.height, bottom = beside.minY();

  if (edges == kCentred)
    return Point{beside.maxX() - beside.width / 2 - child.width / 2,
                 beside.maxY() - beside.height / 2 - child.height / 2};
  if (edges == Edges{2, 1}) return Point{fittingRight, top};
  if (edges == Edges{2, 3}) return Point{fittingRight, bottom};
  if (edges == Edges{0, 3}) return Point{fittingLeft, bottom};
  if (edges == Edges{0, 1}) return Point{fittingLeft, top};
  return std::nullopt;
}

void placeByEdges(const NSWindow& parent, NSWindow& child, const Edges& edges) {
  if (const auto origin = originByEdges(parent, child.frame(), edges)) child.setFrameOrigin(*origin);
}

/// At its place in the parent, or, where that is off the parent's screen, beside the parent or above the screen's
/// bottom.
Rect popoverFrame(const NSWindow& parent, const Rect& wanted) {
  const auto screen = parent.screen();
  const Point least = screen ? screen->visibleFrame.origin() : Point{};
  const double beside = parent.frame().maxX() + kAttachmentGap;
  if (wanted.x < least.x && wanted.y < least.y) return {beside, kPopoverFallbackBottom, wanted.width, wanted.height};
  if (wanted.x < least.x) return {beside, wanted.y, wanted.width, wanted.height};
  if (wanted.y < least.y) return {wanted.x, kPopoverFallbackBottom, wanted.width, wanted.height};
  return wanted;
}

void applyPopoverChrome(NSWindow& window) {
  window.setTitlebarAppearsTransparent(true);
  window.setTitleHidden(true);
  for (const auto button : {WindowButton::miniaturize, WindowButton::zoom, WindowButton::close})
    window.setButtonHidden(button, true);
  window.setStyleMask(window.styleMask() & ~platform::StyleMask::kResizable);
  window.setBackgroundColor({0, 0, 0, 0});
  window.setOpaque(false);
  window.setHasShadow(false);
  window.attached().set(kIsPopover, true);
  window.setMovable(false);
}

void roundCorners(NSView& content, NSView& hostView) {
  content.setWantsLayer(true);
  content.layer()->masksToBounds = false;
  hostView.setWantsLayer(true);
  hostView.layer()->cornerRadius = kPopoverCornerRadius;
  hostView.layer()->masksToBounds = true;
}

/// The frame moved, and where it is wider than the screen narrowed, into the screen's width.
Rect fittedHorizontally(const Rect& frame, const Rect& screen) {
  const Rect local = frame.offsetBy({-screen.minX(), -screen.minY()});
  if (local.minX() >= 0 && local.maxX() <= screen.width) return frame;
  const double whole = std::trunc(screen.width);
  const double overflow = std::trunc(local.width + std::abs(local.minX())) - whole;
  Rect fitted = local;
  if (whole < std::trunc(local.width)) {
    fitted.x = 0;
    fitted.width = whole;
  } else {
    fitted.x = local.minX() < 0 ? 0 : local.minX() - overflow;
  }
  return fitted.offsetBy(screen.origin());
}

}  // namespace

void VeltrikAppKitWindowHelper::applyRole(VeltrikAppKitWindowHelperDelegateProtocol& delegate) {
  const auto description = delegate.popoverWindowDescription();
  const auto parent = description ? windowHelper(description->parentWindowHelper) : nullptr;
  if (parent && description->targetFrame)
    convertToPopover(*description->targetFrame, *parent, description->attachments.value_or(Edges()));
  else
    attachToParent(delegate);
}

void VeltrikAppKitWindowHelper::convertToPopover(const Rect& targetFrame, VeltrikAppKitWindowHelper& parentHelper,
                                                 const std::vector<int>& attachments) {
  const Scale scale = hostToNativeScale();
  const auto window = nsWindow(), parent = parentHelper.nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!parent || !content || content->subviews().empty()) return;
  const auto hostView = content->subviews().front();

  const Rect native{targetFrame.x * scale.x, targetFrame.y * scale.y, targetFrame.width * scale.x,
                    targetFrame.height * scale.y};
  const Rect wanted{parent->frame().minX() + native.minX(), parent->frame().maxY() - native.maxY(), native.width,
                    native.height};
  // Edges that are none count as no edges at all.
  const bool hasEdges = !attachments.empty() && std::all_of(attachments.begin(), attachments.end(), isEdge);
  window->setFrame(hasEdges ? wanted : popoverFrame(*parent, wanted), true);
  if (hasEdges) placeByEdges(*parent, *window, attachments);
  applyPopoverChrome(*window);
  roundCorners(*content, *hostView);
  setIsWindowHidden(false);
  setAlwaysOnTop(true);
  parent->addChildWindow(window, WindowOrdering::above);
  if (const auto delegate = delegate_.lock()) delegate->windowDidConvertedAsPopover();
  if (window->isClosed()) return;
  window->setAlphaValue(0);
  window->orderFront();
  window->animateAlphaValue(1, kPopoverFadeIn);
}

void VeltrikAppKitWindowHelper::attachToParent(VeltrikAppKitWindowHelperDelegateProtocol& delegate) {
  auto edges = delegate.initialAttachmentsEdge();
  if (!edges) return;
  std::erase_if(*edges, [](int number) { return !isEdge(number); });
  const auto parentHelper = windowHelper(delegate.parentWindowHelper());
  if (!parentHelper) return;
  const bool becomesChild = *edges != kCentred && !delegate.attachWithoutAppendingAsChild();
  const auto window = nsWindow(), parent = parentHelper->nsWindow();
  if (!window || !parent) return;
  if (becomesChild) parent->addChildWindow(window, WindowOrdering::above);
  placeByEdges(*parent, *window, *edges);
}

void VeltrikAppKitWindowHelper::addChildWindowToParentWindowWith(const std::string& uiWindowID) {
  const auto window = nsWindow();
  // Windows that aren't the host's have no identifier.
  if (!window || uiWindowID.empty()) return;
  const auto windows = NSApplication::shared().windows();
  const auto parent = std::find_if(windows.begin(), windows.end(),
                                   [&](const auto& each) { return each->attached().get(kHostWindowID) == uiWindowID; });
  if (parent != windows.end()) (*parent)->addChildWindow(window, WindowOrdering::above);
}

void VeltrikAppKitWindowHelper::convertAsSheetWindowWithParentWindowHelper(
    const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& parentHelper) {
  const auto parent = windowHelper(parentHelper);
  const auto window = nsWindow();
  if (!parent || !window) return;
  window->orderOut();
  const auto parentWindow = parent->nsWindow();
  if (!parentWindow) return;
  parentWindow->setTitlebarAppearsTransparent(false);
  parentWindow->setTitleHidden(false);
  parentWindow->beginSheet(window, [weak = std::weak_ptr(parent)](int) {
    if (const auto alive = weak.lock()) alive->setTitleBarTransparentAndTitleHidden();
  });
}

Rect VeltrikAppKitWindowHelper::windowWillPositionSheetUsingRect(NSWindow& window, NSWindow& /*sheet*/, Rect rect) {
  if (window.attached().get(kIsPopover)) return rect;
  const double margin = sheetWindowTopMargin_ > 0 ? sheetWindowTopMargin_ : standardTitleBarHeight();
  return {rect.x, window.frame().height - margin, rect.width, rect.height};
}

void VeltrikAppKitWindowHelper::updateFrameIfNeeded() {
  const auto window = nsWindow();
  const auto screen = window ? window->screen() : std::nullopt;
  if (!screen) return;
  const Rect frame = window->frame();
  Rect fitted = fittedHorizontally(frame, screen->frame);
  if (frame.minY() < screen->frame.minY() || frame.maxY() > screen->frame.maxY()) fitted.y = 0;
  window->setFrame(fitted, true);
}

VeltrikAppKitWindowHelper::Scale VeltrikAppKitWindowHelper::hostToNativeScale() const {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  const auto delegate = delegate_.lock();
  if (!content || !delegate) return {};
  const platform::Size host = delegate->uiWindowBounds().size();
  const platform::Size native = content->bounds().size();
  // A host window without an extent has no scale.
  return {host.width > 0 ? native.width / host.width : 1, host.height > 0 ? native.height / host.height : 1};
}

void VeltrikAppKitWindowHelper::publishFrame(const ParentFrameChangeInfo& change) {
  const auto delegate = delegate_.lock();
  const std::string uiWindowID = delegate ? delegate->uiWindowID() : "";
  if (uiWindowID.empty()) return;
  post({{"parentID", uiWindowID},
        {"parentFrame", platform::NSStringFromRect(change.parentFrame)},
        {"isResized", change.isResized ? "true" : "false"}},
       MireloDistributedNotification::parentWindowFrame);
}

}  // namespace veltrik
