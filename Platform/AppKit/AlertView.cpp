#include "Platform/AppKit/AlertView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/NSWindow.h"

namespace platform {

namespace {

constexpr double kMargin = 20;
constexpr double kIconSize = 40;
constexpr double kIconGap = 16;
constexpr double kTextLeft = kMargin + kIconSize + kIconGap;
constexpr double kTextWidth = AlertView::kWidth - kTextLeft - kMargin;
constexpr double kTextGap = 6;     ///< between the two texts
constexpr double kButtonGap = 16;  ///< between texts and buttons
constexpr double kBetweenButtons = 4;
constexpr double kLeastButtonWidth = 86;
constexpr double kLine = 16, kPage = 120;  ///< what the keys scroll by
constexpr double kLeastTextHeight = 40;

Size sizeOf(const NSButton& button) {
  const Size wanted = button.intrinsicContentSize().value_or(Size{});
  return {std::max(wanted.width, kLeastButtonWidth), wanted.height};
}

}  // namespace

AlertView::AlertView(std::shared_ptr<NSView> icon, std::function<void(std::size_t)> answered)
    : icon_(std::move(icon)), answered_(std::move(answered)) {
  addSubview(icon_);
  addSubview(message_);
  addSubview(informative_);
}

std::shared_ptr<NSButton> AlertView::addButton(const std::string& title) {
  auto button = std::make_shared<NSButton>();
  button->setBordered(true);
  button->setTitle(title);
  button->setAction("answer" + std::to_string(buttons_.size()) + ":");
  if (buttons_.size() < 2) button->setKeyEquivalent(buttons_.empty() ? "\r" : "\033");
  buttons_.push_back(button);
  addSubview(button);
  setNeedsLayout();
  return button;
}

void AlertView::focusDefaultButton() {
  if (window() && !buttons_.empty()) window()->makeFirstResponder(buttons_.front());
}

void AlertView::setHeightLimit(double limit) {
  heightLimit_ = limit;
  setNeedsLayout();
}

bool AlertView::isRow() const {
  double width = 0;
  for (const auto& button : buttons_) width += sizeOf(*button).width + (width > 0 ? kBetweenButtons : 0);
  return width <= kTextWidth + 2 * NSButton::kRing;
}

double AlertView::buttonsHeight() const {
  double row = 0, column = 0;
  for (const auto& button : buttons_) {
    const double height = sizeOf(*button).height;
    row = std::max(row, height);
    column += height + (column > 0 ? kBetweenButtons : 0);
  }
  return isRow() ? row : column;
}

double AlertView::leastHeight() const {
  return kMargin + kIconSize + kButtonGap + buttonsHeight() + kMargin - NSButton::kRing;
}

/// Each with the space below it. The message leaves most of the room to what explains it.
AlertView::TextHeights AlertView::textHeights() {
  const double room =
      std::max(kLeastTextHeight, heightLimit_ - (kMargin + buttonsHeight() + kMargin - NSButton::kRing));
  const auto withGap = [](double height, double gap) { return height > 0 ? height + gap : 0; };
  const double informative = withGap(informative_->heightFor(kTextWidth), kButtonGap);
  const double message = withGap(message_->heightFor(kTextWidth), informative > 0 ? kTextGap : kButtonGap);
  const double shownMessage =
      std::min(message, informative > 0 ? std::max(std::floor(room / 3), room - informative) : room);
  return {shownMessage, std::min(informative, room - shownMessage)};
}

double AlertView::neededHeight() {
  return std::max(leastHeight(), kMargin + textHeights().all() + buttonsHeight() + kMargin - NSButton::kRing);
}

void AlertView::layout() {
  const double top = bounds().height - kMargin;
  const TextHeights heights = textHeights();
  icon_->setFrame({kMargin, top - kIconSize, kIconSize, kIconSize});
  message_->setBottomMargin(heights.informative > 0 ? kTextGap : kButtonGap);
  informative_->setBottomMargin(kButtonGap);
  message_->setFrame({kTextLeft, top - heights.message, kTextWidth, heights.message});
  informative_->setFrame({kTextLeft, top - heights.all(), kTextWidth, heights.informative});
  placeButtons();
}

void AlertView::placeButtons() {
  const bool row = isRow();
  double right = bounds().width - kMargin + NSButton::kRing;
  double top = kMargin - NSButton::kRing + buttonsHeight();
  for (const auto& button : buttons_) {
    const Size size = sizeOf(*button);
    const double width = row ? size.width : kTextWidth + 2 * NSButton::kRing;
    button->setFrame({right - width, top - size.height, width, size.height});
    (row ? right : top) -= (row ? width : size.height) + kBetweenButtons;
  }
}

void AlertView::keyDown(const EventPointer& event) {
  constexpr std::uint64_t kShortcuts = ModifierFlag::kCommand | ModifierFlag::kControl | ModifierFlag::kOption;
  if (event->modifierFlags & kShortcuts) return NSView::keyDown(event);
  switch (event->keyCode) {
    case KeyCode::kReturn:
    case KeyCode::kKeypadEnter:
      if (!event->isARepeat) press(0);
      return;
    case KeyCode::kEscape:
      if (!event->isARepeat) press(1);
      return;
    case KeyCode::kTab:
      return moveFocus(event->modifierFlags & ModifierFlag::kShift ? -1 : 1);
    case KeyCode::kLeftArrow:
    case KeyCode::kRightArrow:
      return moveFocus(event->keyCode == KeyCode::kLeftArrow ? 1 : -1);
    case KeyCode::kUpArrow:
    case KeyCode::kDownArrow:
      return scroll(event->keyCode == KeyCode::kUpArrow ? -kLine : kLine);
    case KeyCode::kPageUp:
    case KeyCode::kPageDown:
      return scroll(event->keyCode == KeyCode::kPageUp ? -kPage : kPage);
    default:
      NSView::keyDown(event);
  }
}

void AlertView::moveFocus(int step) {
  const auto focused = std::find(buttons_.begin(), buttons_.end(), window()->firstResponder());
  if (focused == buttons_.end()) return focusDefaultButton();
  const auto count = static_cast<int>(buttons_.size());
  const auto next = (static_cast<int>(focused - buttons_.begin()) + step + count) % count;
  window()->makeFirstResponder(buttons_[static_cast<std::size_t>(next)]);
}

void AlertView::scroll(double distance) {
  (informative_->isScrollable() ? informative_ : message_)->scrollBy(distance);
}

bool AlertView::press(std::size_t button) {
  if (button >= buttons_.size()) return false;
  const auto pressed = buttons_[button];
  pressed->performClick();
  return true;
}

bool AlertView::doCommand(std::string_view selector) {
  const auto found =
      std::find_if(buttons_.begin(), buttons_.end(), [&](const auto& button) { return button->action() == selector; });
  if (found == buttons_.end()) return NSView::doCommand(selector);
  const auto answered = answered_;  // the alert may be gone with this view afterwards
  answered(static_cast<std::size_t>(found - buttons_.begin()));
  return true;
}

}  // namespace platform
