#include "VeltrikAppKit/TextInputNSView.h"

#include <limits>
#include <utility>

#include "Platform/AppKit/NSWindow.h"

namespace veltrik {
namespace {

constexpr double kConversationFontSize = 13;
constexpr double kCommonFontSize = 14;
constexpr double kUnlimited = std::numeric_limits<double>::max();
constexpr platform::Color kRed{1, 0, 0, 1};

}  // namespace

TextInputNSView::TextInputNSView(InputType inputType)
    : textView_(std::make_shared<InternalTextView>()), inputType_(inputType) {
  configureScrollView();
  configureTextView();
}

void TextInputNSView::configureScrollView() {
  setBorderType(platform::BorderType::none);
  setHasVerticalScroller(true);
  setHasHorizontalScroller(false);
  setDrawsBackground(false);
  verticalScroller()->setScrollerStyle(platform::ScrollerStyle::overlay);
  setDocumentView(textView_);
}

void TextInputNSView::configureTextView() {
  const bool isConversation = inputType_ == InputType::conversation;
  textView_->setCanKeyDownOverriding(isConversation);
  textView_->setVerticallyResizable(true);
  textView_->setHorizontallyResizable(false);
  textView_->setAutoresizingMask(platform::Autoresizing::kWidth);
  textView_->textContainer().widthTracksTextView = true;
  textView_->textContainer().lineBreakMode = platform::LineBreakMode::byCharWrapping;
  textView_->setRichText(false);
  textView_->setAllowsUndo(true);
  textView_->setFont({.size = isConversation ? kConversationFontSize : kCommonFontSize});
  textView_->setBackgroundColor(kRed);
  textView_->setDrawsBackground(false);
}

void TextInputNSView::setDelegate(std::weak_ptr<VeltrikTextInputViewDelegate> delegate) {
  delegate_ = delegate;
  textView_->setTextInputViewDelegate(std::move(delegate));
}

void TextInputNSView::layout() {
  NSScrollView::layout();
  const platform::Size content = contentSize();
  textView_->setMinSize({0, content.height});
  textView_->setMaxSize({kUnlimited, kUnlimited});
  textView_->textContainer().containerSize = {content.width, kUnlimited};
}

void TextInputNSView::viewDidMoveToWindow() {
  if (window() == nullptr) return;
  const auto host = std::static_pointer_cast<platform::NSWindow>(window()->shared_from_this());
  host->makeKeyAndOrderFront(nullptr);
  host->makeFirstResponder(textView_);
}

}  // namespace veltrik
