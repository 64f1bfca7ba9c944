#include "Programs/SampleHost/ChatModel.h"

#include <utility>

namespace samplehost {

void ChatModel::append(ChatMessage message) {
  messages_.push_back(std::move(message));
  if (changed_) changed_();
}

void fillWithSampleConversation(ChatModel& chat, double now) {
  struct Line {
    const char* author;
    double minutesAgo;
    const char* text;
  };
  static constexpr Line kLines[] = {
      {"서연", 42, "안녕하세요! 오늘 오후 회의 자료 정리했어요."},
      {"서연", 41, "3층 회의실에서 두 시에 만나요 :)"},
      {"", 38, "네, 확인했습니다. 화면 시안도 같이 가져갈게요."},
      {"도윤", 17, "새 데스크톱 빌드가 올라왔습니다. 창 옮기기와 한글 입력을 한 번씩 봐 주세요."},
      {"", 12, "지금 보고 있어요. Looks good so far — the composer feels native."},
      {"서연", 3, "좋아요! 그럼 이따 봬요."},
  };
  for (const Line& line : kLines)
    chat.append(
        {.author = line.author, .text = line.text, .sentAt = now - line.minutesAgo * 60, .own = *line.author == '\0'});
}

}  // namespace samplehost
