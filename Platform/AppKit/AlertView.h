#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/AppKit/AlertText.h"
#include "Platform/AppKit/NSButton.h"

namespace platform {

/// The content of an alert: icon and texts from the top, buttons from the bottom right corner, or one below the other
/// where they are too wide for a row. A view that is lower than it needs to be lets the texts run into the buttons; no
/// text makes it need more than the limit. Main thread.
class AlertView final : public NSView {
 public:
  static constexpr double kWidth = 420;

  /// `icon` is drawn in the top left corner. `answered` gets the number of a button that was pressed.
  AlertView(std::shared_ptr<NSView> icon, std::function<void(std::size_t)> answered);

  AlertText& message() { return *message_; }
  AlertText& informative() { return *informative_; }
  const std::vector<std::shared_ptr<NSButton>>& buttons() const { return buttons_; }
  /// The first one is for Return, the second one for Escape.
  std::shared_ptr<NSButton> addButton(const std::string& title);
  void focusDefaultButton();

  /// The largest height that texts may ask for.
  void setHeightLimit(double limit);
  /// Without the texts.
  double leastHeight() const;
  double neededHeight();

  void layout() override;
  void keyDown(const EventPointer& event) override;
  bool doCommand(std::string_view selector) override;

 private:
  struct TextHeights {
    double message;
    double informative;
    double all() const { return message + informative; }
  };
  bool isRow() const;
  double buttonsHeight() const;
  TextHeights textHeights();
  void placeButtons();
  void moveFocus(int step);
  void scroll(double distance);
  bool press(std::size_t button);

  std::shared_ptr<NSView> icon_;
  std::shared_ptr<AlertText> message_ = std::make_shared<AlertText>(Font{13, true});
  std::shared_ptr<AlertText> informative_ = std::make_shared<AlertText>(Font{12, false});
  std::vector<std::shared_ptr<NSButton>> buttons_;
  std::function<void(std::size_t)> answered_;
  double heightLimit_ = 1e6;
};

}  // namespace platform
