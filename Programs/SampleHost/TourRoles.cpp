#include "Programs/SampleHost/CardScene.h"
#include "Programs/SampleHost/FamilyPicture.h"
#include "Programs/SampleHost/PngFile.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

using platform::NSWindow;
using platform::Point;
using platform::Rect;
using platform::Value;

namespace {

Value edges(std::initializer_list<int> numbers) {
  Value::Array array;
  for (const int number : numbers) array.push_back(number);
  return array;
}

}  // namespace

std::shared_ptr<NSWindow> Tour::openCard(const std::string& identifier, const Rect& frame,
                                         const std::shared_ptr<CardScene>& scene) {
  host_.bind(identifier);
  const auto window = host_.layer().makeWindow(identifier, frame);
  host_.layer().hostView(identifier)->setScene(scene);
  host_.helperOf(identifier)->setTitleBarTransparentAndTitleHidden();
  window->makeKeyAndOrderFront(nullptr);
  return window;
}

void Tour::pictureOfFamily(const std::string& name, const std::vector<std::shared_ptr<NSWindow>>& backToFront) {
  if (!pictures_ || machine_.headless) return;
  for (const auto& window : backToFront) window->display();
  std::optional<platform::Bitmap> bitmap;
  if (!wait([&] { return (bitmap = picturedTogether(backToFront)).has_value(); }))
    return transcript_.failed("a picture of the windows", "the machine gave none");
  savePicture(name, *bitmap);
}

void Tour::attachedWindows() {
  Answers& answers = host_.answers();
  const struct {
    const char* name;
    const char* heading;
    Value edges;
    Rect frame;
    std::vector<std::string> lines;
  } cards[] = {{"notes", "메모", edges({2, 1}), {0, 0, 230, 180}, {"회의는 오후 3시", "배포는 금요일"}},
               {"members", "멤버", edges({2, 3}), {0, 0, 230, 240}, {"서연", "도윤", "하준", "지우"}},
               {"files", "파일", edges({0, 1}), {0, 0, 130, 180}, {"디자인.pdf", "일정.txt"}}};
  std::vector<std::shared_ptr<NSWindow>> family{mainWindow()};
  for (const auto& card : cards) {
    const std::string delegate = std::string("window:") + card.name;
    answers.set(delegate, "initialAttachmentsEdge", card.edges);
    answers.set(delegate, "parentWindowHelper", "window:main");
    answers.set(delegate, "showOnlyCloseButton", true);
    family.push_back(openCard(card.name, card.frame, std::make_shared<CardScene>(card.heading, card.lines, 29)));
  }
  const Rect frame = mainWindow()->frame();
  transcript_.expect("4 points to the right, the tops level", Point{frame.maxX() + 4, frame.maxY() - 180},
                     family[1]->frame().origin());
  transcript_.expect("4 points to the right, the bottoms level", Point{frame.maxX() + 4, frame.minY()},
                     family[2]->frame().origin());
  transcript_.expect("they are child windows", std::int64_t{3},
                     static_cast<std::int64_t>(mainWindow()->childWindows().size()));
  pictureOfFamily("children", family);

  mainWindow()->setFrameOrigin(frame.origin() + Point{25, -35});
  for (std::size_t i = 1; i < family.size(); ++i)
    transcript_.expectTrue("a child moved along", wait([&] {
                             return family[i]->frame().y == (i == 2 ? frame.minY() : frame.maxY() - 180) - 35;
                           }));
  main().minimize();
  transcript_.expectTrue("they leave the screen with it", wait([&] { return !family[1]->isVisible(); }));
  main().becomeFirstWindow();
  transcript_.expectTrue("and come back", wait([&] { return family[1]->isVisible(); }));
  mainWindow()->setFrame(frame, true);
  for (const auto& card : cards) host_.helperOf(card.name)->closeWindow();
  transcript_.expect("closed they are children no more", false, main().hasChildWindow());
}

void Tour::popover() {
  host_.answers().set("window:emoji", "popoverWindowDescription",
                      platform::Dictionary{{"targetFrame", Codec<Rect>::encode({40, 330, 220, 170})},
                                           {"parentWindowHelper", "window:main"}});
  const auto window =
      openCard("emoji", {0, 0, 220, 170},
               std::make_shared<CardScene>("이모지", std::vector<std::string>{"웃음", "하트", "박수"}, 0));
  const Rect frame = mainWindow()->frame();
  transcript_.expect("it lies where the host wants it", Rect(frame.x + 40, frame.maxY() - 500, 220, 170),
                     window->frame());
  transcript_.expect("the host hears of it", 1, heard("windowDidConvertedAsPopover", "window:emoji"));
  transcript_.expectTrue("it fades in", wait([&] { return window->alphaValue() == 1; }));
  pictureOfFamily("popover", {mainWindow(), window});
  main().makeMainAndKeyNSWindow();
  transcript_.expectTrue("losing main it closes", wait([&] { return window->isClosed(); }));
}

void Tour::sheet() {
  const auto window = openCard(
      "invite", {0, 0, 320, 150},
      std::make_shared<CardScene>(
          "대화에 초대", std::vector<std::string>{"서연님을 초대할까요?", "초대하면 이전 대화도 보입니다."}, 0));
  const HelperPointer helper = host_.helperOf("invite");
  helper->convertAsSheetWindowWithParentWindowHelper(host_.helperOf("main"));
  const Rect frame = mainWindow()->frame();
  transcript_.expect("it hangs below the title bar",
                     Rect(frame.x + (frame.width - 320) / 2, frame.maxY() - 29 - 150, 320, 150), window->frame());
  transcript_.expect("it is a sheet", true, helper->isSheetWindow());
  transcript_.expect("it has the keyboard", true, helper->isKeyNSWindow());
  transcript_.expect("its parent stays main", true, main().isMainNSWindow());
  transcript_.expectTrue("it slides in", wait([&] { return !window->isSlidingIn(); }));
  pictureOfFamily("sheet", {mainWindow(), window});
  helper->closeSheetWindow();
  transcript_.expect("it closes", true, window->isClosed());
  transcript_.expectTrue("the title bar is the host's own again", mainWindow()->titlebarAppearsTransparent());
  transcript_.expectTrue("and the keyboard the messenger's", wait([&] { return main().isKeyNSWindow(); }));
}

}  // namespace samplehost
