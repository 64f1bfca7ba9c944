#pragma once

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/AppKit/NSLayoutManager.h"
#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSTextField.h"

namespace platform {

/// A text of an alert: wrapped, from the top of the field, scrolled where the field is lower than the text. Texts of
/// more than some thousand characters are cut: nobody reads them in an alert. Main thread.
class AlertText final : public NSTextField {
 public:
  explicit AlertText(const Font& font);

  void show(const std::string& utf8);
  /// Points of the field's lower end that stay free of text.
  void setBottomMargin(double margin);
  /// What the whole text needs, without the margin; 0 for no text.
  double heightFor(double width);
  bool isScrollable() const { return scroll_->hasVerticalScroller(); }
  void scrollBy(double distance);

  void layout() override;
  void draw(port::Canvas& /*canvas*/) override {}

 private:
  class Page;

  NSLayoutManager::Look look_;
  NSAttributedString shown_;
  NSLayoutManager lines_;
  double bottomMargin_ = 0;
  std::shared_ptr<Page> page_;
  std::shared_ptr<NSScrollView> scroll_ = std::make_shared<NSScrollView>();
};

}  // namespace platform
