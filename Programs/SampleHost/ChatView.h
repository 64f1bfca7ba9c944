#pragma once

#include <string>

#include "Programs/SampleHost/ChatModel.h"
#include "Programs/SampleHost/HostScene.h"
#include "Programs/SampleHost/MessageList.h"

namespace samplehost {

/// A chat window as the host draws it: title bar, messages, composer. The composer's text is the native view above it.
class ChatView : public HostScene {
 public:
  /// The model is borrowed and outlives the view.
  explicit ChatView(const ChatModel& chat) : chat_(chat), list_(chat) {}

  void draw(platform::port::Canvas& canvas, platform::Size size) override;
  bool scroll(double points) override;
  /// A placeholder stands in the composer while it is empty. True when that changed what is seen.
  bool setComposerEmpty(bool empty);
  MessageList& list() { return list_; }

 private:
  void drawTitleBar(platform::port::Canvas& canvas, const platform::Rect& rect) const;
  void drawComposer(platform::port::Canvas& canvas, platform::Size size) const;

  const ChatModel& chat_;
  MessageList list_;
  bool composerEmpty_ = true;
};

}  // namespace samplehost
