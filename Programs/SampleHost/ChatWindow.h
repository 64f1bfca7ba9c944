#pragma once

#include <memory>
#include <string>

#include "Programs/SampleHost/ChatModel.h"
#include "Programs/SampleHost/ChatView.h"
#include "Programs/SampleHost/Host.h"

namespace samplehost {

/// One conversation in a window of its own: what the messenger does with the plug-in. Main thread.
class ChatWindow {
 public:
  /// The host is borrowed and outlives the window.
  ChatWindow(Host& host, std::string identifier);
  ~ChatWindow();
  ChatWindow(const ChatWindow&) = delete;
  ChatWindow& operator=(const ChatWindow&) = delete;

  /// Binds, makes and shows the window; `frame` in screen points.
  void open(const platform::Rect& frame);
  /// A message of the messenger itself.
  void announce(const std::string& text);
  const ChatModel& chat() const { return chat_; }
  /// Takes the composer's text into the conversation; text that is blank stays where it is.
  void send();
  /// The composer's text; empty without one.
  std::string draft() const;

 private:
  void placeDragRegion();
  void composerChanged(const std::string& text);
  void redraw() const;

  Host& host_;
  std::string identifier_;
  ChatModel chat_;
  std::shared_ptr<ChatView> view_;
};

}  // namespace samplehost
