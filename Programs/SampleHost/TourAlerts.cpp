#include <memory>
#include <optional>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/RunLoop.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

namespace KeyCode = platform::KeyCode;
using platform::NSApplication;
using platform::URL;

namespace {

/// Time for a modal window to be on the screen, in seconds.
constexpr double kAppears = 0.3;

std::shared_ptr<platform::NSWindow> keyWindow() {
  return NSApplication::shared().keyWindow();
}

}  // namespace

void Tour::alert() {
  bool confirmed = false, presented = false, blocked = false;
  platform::DispatchQueue::main().asyncAfter(kAppears, [&] {
    presented = host_.appKit().isAppKitAlertPresented();
    blocked = mainWindow()->isInputBlocked();
    picture("alert", keyWindow());
    user_->key(KeyCode::kReturn, 0);
  });
  host_.appKit().showAlertWith("새 버전이 있습니다. 지금 설치할까요?",
                               "설치하는 동안 메신저가 잠시 닫힙니다. 보내지 않은 메시지는 그대로 남아 있습니다.\n"
                               "The messenger closes for a moment; drafts are kept.",
                               "설치", "나중에", [&confirmed] { confirmed = true; });
  transcript_.expectTrue("an alert is presented", presented);
  transcript_.expectTrue("the messenger got no input meanwhile", blocked);
  transcript_.expectTrue("Return confirmed", wait([&] { return confirmed; }));
  transcript_.expect("no alert is left", false, host_.appKit().isAppKitAlertPresented());
}

void Tour::sheetAlert() {
  bool confirmed = false;
  host_.appKit().showSheetAlertWith("Leave this chat?",
                                    "대화방을 나가면 대화 내용이 모두 삭제되고 대화 목록에서도 사라집니다. "
                                    "나간 뒤에는 되돌릴 수 없습니다.",
                                    "Leave", "Cancel", "main", [&confirmed] { confirmed = true; });
  const auto sheet = mainWindow()->attachedSheet();
  if (!sheet) return transcript_.failed("it hangs from the messenger", "there is no sheet");
  transcript_.expectTrue("it slides in", wait([&] { return !sheet->isSlidingIn(); }));
  transcript_.expectTrue("it has the keyboard", wait([&] { return sheet->isKeyWindow(); }));
  pictureOfFamily("sheet-alert", {mainWindow(), sheet});
  user_->key(KeyCode::kEscape, 0);
  transcript_.expectTrue("Escape ended it", wait([&] { return sheet->isClosed(); }));
  platform::RunLoop::main().runDue();
  transcript_.expect("and confirmed nothing", false, confirmed);
}

void Tour::savePanel() {
  // Shared: a panel that nobody answers is cancelled when the application ends.
  const auto answer = std::make_shared<std::optional<std::optional<URL>>>();
  host_.appKit().showSavePanel("회의록 2026 \"final\".txt", URL::directoryURL("/tmp"),
                               [answer](const std::optional<URL>& place) { *answer = place; });
  transcript_.expectTrue("the panel doesn't wait", !*answer);
  const auto panel = keyWindow();
  transcript_.expect("it floats at level 8", 8, panel->level());
  picture("save-panel", panel);
  transcript_.expectTrue("it has the keyboard", wait([&] { return panel->isKeyWindow(); }));
  if (machine_.headless)
    machine_.headless->filePanels()->choose({"/tmp/회의록.txt"});
  else
    user_->key(KeyCode::kEscape, 0);
  transcript_.expectTrue("it answered", wait([&] { return answer->has_value(); }));
  if (machine_.headless && *answer && **answer)
    transcript_.expect("with the place", "/tmp/회의록.txt", (**answer)->path());
}

void Tour::openPanel() {
  std::vector<URL> chosen;
  platform::DispatchQueue::main().asyncAfter(kAppears, [&] {
    picture("open-panel", keyWindow());
    if (machine_.headless)
      machine_.headless->filePanels()->choose({"/tmp/b", "/tmp/a"});
    else
      user_->key(KeyCode::kEscape, 0);
  });
  host_.appKit().showOpenPanelWithCompletion([&chosen](const std::vector<URL>& files) { chosen = files; });
  transcript_.expect("as many files as the user chose", machine_.headless ? 2 : 0, static_cast<int>(chosen.size()));
}

}  // namespace samplehost
