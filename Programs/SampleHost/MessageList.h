#pragma once

#include <vector>

#include "Platform/Port/Canvas.h"
#include "Programs/SampleHost/ChatModel.h"
#include "Programs/SampleHost/TextBlock.h"

namespace samplehost {

/// A conversation's messages as bubbles, newest at the bottom, scrolled by the wheel. Main thread.
class MessageList {
 public:
  explicit MessageList(const ChatModel& chat) : chat_(chat) {}

  /// Lays the bubbles out where the width or the messages changed; keeps the newest in view when it was.
  void fit(platform::Size size);
  /// `rect` in the canvas's coordinates, of the size last given to `fit`.
  void draw(platform::port::Canvas& canvas, const platform::Rect& rect) const;
  /// Positive shows older messages. Stops at both ends.
  void scrollBy(double points);
  void scrollToEnd() { offset_ = maximumOffset(); }
  double offset() const { return offset_; }
  double contentHeight() const { return contentHeight_; }

 private:
  struct Row {
    platform::Rect bubble;
    TextBlock text;
    TextBlock time;
    TextBlock name;
    TextBlock initial;
    platform::Rect avatar;  ///< empty where the message continues the one before
    platform::Color avatarColor;
    bool own = false;
  };
  Row makeRow(const ChatMessage& message, bool startsGroup, double top) const;
  void drawRow(platform::port::Canvas& canvas, const Row& row) const;
  void drawScroller(platform::port::Canvas& canvas) const;
  double maximumOffset() const;

  const ChatModel& chat_;
  std::vector<Row> rows_;
  platform::Size size_;
  double contentHeight_ = 0;
  double offset_ = 0;
};

}  // namespace samplehost
