#pragma once

#include <functional>
#include <string>
#include <vector>

namespace samplehost {

struct ChatMessage {
  std::string author;
  std::string text;
  double sentAt = 0;  ///< seconds since 1970-01-01 00:00 UTC
  bool own = false;
};

/// One conversation: who takes part and what was said. Main thread.
class ChatModel {
 public:
  ChatModel(std::string title, std::string subtitle) : title_(std::move(title)), subtitle_(std::move(subtitle)) {}

  const std::string& title() const { return title_; }
  const std::string& subtitle() const { return subtitle_; }
  const std::vector<ChatMessage>& messages() const { return messages_; }
  void append(ChatMessage message);
  /// `changed` runs after each appended message.
  void setChanged(std::function<void()> changed) { changed_ = std::move(changed); }

 private:
  std::string title_;
  std::string subtitle_;
  std::vector<ChatMessage> messages_;
  std::function<void()> changed_;
};

/// The conversation that the sample host opens with; `now` in seconds since 1970.
void fillWithSampleConversation(ChatModel& chat, double now);

}  // namespace samplehost
