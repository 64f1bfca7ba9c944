#include <memory>
#include <utility>

#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "VeltrikAppKit/InternalTextView.h"
#include "VeltrikAppKit/TextInputNSView.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::LayoutAttribute;
using platform::NSLayoutConstraint;
using platform::NSView;
using platform::Rect;

namespace {

/// Content edge = view edge + constant.
std::shared_ptr<NSLayoutConstraint> pin(const std::shared_ptr<NSView>& content, const std::shared_ptr<NSView>& view,
                                        LayoutAttribute edge, double constant) {
  auto constraint = NSLayoutConstraint::make(content, edge, view, edge, 1, constant);
  constraint->setActive(true);
  return constraint;
}

}  // namespace

void VeltrikAppKitWindowHelper::addConversationTextInputViewOn(const Rect& bounds,
                                                               std::weak_ptr<VeltrikTextInputViewDelegate> delegate) {
  addTextInputView(InputType::conversation, bounds, std::move(delegate));
}

void VeltrikAppKitWindowHelper::addCommonTextInputViewOn(const Rect& bounds,
                                                         std::weak_ptr<VeltrikTextInputViewDelegate> delegate) {
  addTextInputView(InputType::common, bounds, std::move(delegate));
}

void VeltrikAppKitWindowHelper::addTextInputView(InputType type, const Rect& bounds,
                                                 std::weak_ptr<VeltrikTextInputViewDelegate> delegate) {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content) return;
  const auto self = shared_from_this();  // the view orders the window front when it gets there
  const auto view = std::make_shared<TextInputNSView>(type);
  view->setDelegate(std::move(delegate));
  content->addSubview(view);
  view->setTranslatesAutoresizingMaskIntoConstraints(false);

  const platform::Size size = content->bounds().size();
  NSLayoutConstraint::make(view, LayoutAttribute::height, nullptr, LayoutAttribute::none, 1, bounds.height)
      ->setActive(true);
  pin(content, view, LayoutAttribute::bottom, size.height - bounds.maxY());
  pin(content, view, LayoutAttribute::trailing, size.width - bounds.maxX());
  inputViewLeadingConstraint_ = pin(content, view, LayoutAttribute::leading, -bounds.minX());
  inputView_ = view;
}

std::shared_ptr<VeltrikTextInputView> VeltrikAppKitWindowHelper::textInputView() const {
  return inputView_ ? inputView_->textView() : nullptr;
}

void VeltrikAppKitWindowHelper::makeTextViewFirstResponder(bool firstResponder) {
  if (inputView_) inputView_->textView()->setCanResignFirstResponder(!firstResponder);
  if (firstResponder) {
    const auto window = nsWindow();
    if (window && inputView_) window->makeFirstResponder(inputView_->textView());
    return;
  }
  platform::DispatchQueue::main().async([weak = weak_from_this()] {
    const auto self = weak.lock();
    const auto window = self ? self->nsWindow() : nullptr;
    if (window && self->catalystFirstResponder_) window->makeFirstResponder(self->catalystFirstResponder_);
  });
}

void VeltrikAppKitWindowHelper::setInputViewLeading(double leading) {
  if (inputViewLeadingConstraint_) inputViewLeadingConstraint_->setConstant(-leading);
}

}  // namespace veltrik
