#include <algorithm>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Programs/SampleHost/CardScene.h"
#include "Programs/SampleHost/Tour.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputView.h"

namespace samplehost {

using platform::Point;
using platform::Rect;

void Tour::clicks() {
  const Rect frame = mainWindow()->frame();
  const Point place{frame.x + 77, frame.maxY() - 154};
  const auto told = [&](const char* member) {
    user_->click(place, member == std::string("mouseDoubleTapped") ? 2 : 1, member == std::string("mouseRightClick"));
    const auto last = std::find_if(heard_.rbegin(), heard_.rend(), [&](const HostEvent& event) {
      return event.name == member && event.from == "window:main";
    });
    return last == heard_.rend() ? Point{} : Codec<Point>::decode(last->arguments.at(0));
  };
  transcript_.expect("a double click is told in the host's points", Point{100, 200}, told("mouseDoubleTapped"));
  transcript_.expect("a right click, too", Point{100, 200}, told("mouseRightClick"));
}

void Tour::focusAndKeys() {
  const auto input = main().textInputView();
  if (!input) return transcript_.failed("the helper hands the input out", "there is none");
  user_->type("ab");
  input->setSelectedRange({0, 0});
  main().generateRightArrowKey();
  transcript_.expect("a right arrow that the host makes moves the caret", std::int64_t{1},
                     static_cast<std::int64_t>(input->selectedRange().location));
  const auto isComposer = [&] {
    return std::dynamic_pointer_cast<platform::NSTextView>(mainWindow()->firstResponder()) != nullptr;
  };
  main().makeTextViewFirstResponder(false);
  transcript_.expectTrue("the focus goes back to the host's own view", wait([&] { return !isComposer(); }));
  user_->type("c");
  transcript_.expect("where a plain key is swallowed", "ab", chat_->draft());
  main().makeTextViewFirstResponder(true);
  transcript_.expectTrue("and comes again to the composer", isComposer());
  input->reset();
}

void Tour::order() {
  Answers& answers = host_.answers();
  answers.set("window:card", "showOnlyCloseButton", true);
  const auto card = openCard("card", {420, 160, 260, 200},
                             std::make_shared<CardScene>("공지", std::vector<std::string>{"점검 안내"}, 29));
  auto& helper = *host_.helperOf("card");
  transcript_.expectTrue("the window opened last is main", wait([&] { return helper.isMainNSWindow(); }));
  main().orderFrontNSWindow();
  transcript_.expectTrue("ordered front the messenger is", wait([&] { return main().isMainNSWindow(); }));
  helper.becomeFirstWindow();
  transcript_.expectTrue("and then the other one", wait([&] { return helper.isMainNSWindow(); }));
  helper.orderFrontBehideCurrentWindows();
  transcript_.expectTrue("it goes behind the messenger", card->orderedIndex() > mainWindow()->orderedIndex());
  helper.setIsWindowHidden(true);
  transcript_.expectTrue("hidden it is off the screen, and the messenger main",
                         helper.isWindowHidden() && wait([&] { return main().isMainNSWindow(); }));
  helper.addChildWindowToParentWindowWith("main");
  helper.setIsWindowHidden(false);
  transcript_.expectTrue("as the messenger's child it stays before it",
                         main().hasChildWindow() && card->orderedIndex() < mainWindow()->orderedIndex());
  card->setFrameOrigin({-100, 160});
  helper.updateFrameIfNeeded();
  transcript_.expect("over the screen's edge it comes back", Point{0, 160}, card->frame().origin());
  helper.closePopoverWindow();
  transcript_.expect("it is no popover to close", false, card->isClosed());
  helper.closeWindow();
  transcript_.expectTrue("closed it is told", heard("windowWillClose", "window:card") == 1);
}

}  // namespace samplehost
