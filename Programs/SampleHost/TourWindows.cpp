#include "Platform/AppKit/NSTextView.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Programs/SampleHost/ChatLayout.h"
#include "Programs/SampleHost/ChatTheme.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

using platform::NSWindow;
using platform::Point;
using platform::Rect;
using platform::Size;

namespace {
constexpr Rect kMainFrame{140, 90, 460, 640};
}

void Tour::launch() {
  host_.launch();
  transcript_.expect("the full-screen menu item stands everywhere", platform::Value(false),
                     platform::UserDefaults::standard().get("NSFullScreenMenuItemEverywhere"));
  transcript_.expect("windows become tabs by themselves", false, NSWindow::allowsAutomaticWindowTabbing());
  transcript_.expectTrue("the principal object has the host's delegate", host_.appKit().delegate() != nullptr);
  transcript_.expect("the application is in full screen", false, host_.appKit().isFullscreenMode());
}

void Tour::bindWindow() {
  chat_ = std::make_unique<ChatWindow>(host_, "main");
  chat_->open(kMainFrame);
  transcript_.expect("the binding block ran", 1, heard("uiKitBinding", "window:main"));
  transcript_.expect("the window shows no title", "", mainWindow()->title());
  transcript_.expect("its frame is the one it was given", kMainFrame, main().nsWindowFrame());
  transcript_.expectTrue("it becomes key and main",
                         wait([&] { return main().isKeyNSWindow() && main().isMainNSWindow(); }));
  transcript_.expectTrue("the host hears of it", heard("windowDidBecomeMain", "window:main") > 0);
  transcript_.expect("it is restored at the next start", false, main().isWindowRestorable());
}

void Tour::chrome() {
  const auto window = mainWindow();
  transcript_.expect("the content covers the whole frame", window->frame(),
                     window->contentRectForFrameRect(window->frame()));
  transcript_.expectTrue("the title bar is transparent", window->titlebarAppearsTransparent());
  transcript_.expect("a title bar's height", 29.0, main().titleBarHeight());
  main().setCloseButtonHidden(true);
  transcript_.expectTrue("the close button can be hidden",
                         window->standardWindowButton(platform::WindowButton::close)->hidden);
  main().setCloseButtonHidden(false);
  picture("messenger", window);
}

void Tour::dragRegion() {
  const auto window = mainWindow();
  const Rect before = window->frame();
  const Rect region = ChatLayout::of(before.size()).dragRegion;
  const Point start{before.x + region.x + 40, before.maxY() - 40};
  user_->drag(start, start + Point{4, 0});
  transcript_.expect("after 4 points the window stands where it stood", before, window->frame());
  if (!user_->canMoveWindows()) return transcript_.note("moving it needs a real pointer here");
  user_->drag(start, start + Point{60, 30});
  const Rect after = window->frame();
  transcript_.expectTrue("after 60 points it has moved that way", after.x > before.x && after.y > before.y);
  transcript_.expect("with the size it had", before.size(), after.size());
}

void Tour::resize() {
  main().setContentSize({0, 0, 560, 520});
  transcript_.expect("the content has that size", Size{560, 520}, host_.boundsOf("main"));
  const auto text = std::dynamic_pointer_cast<platform::NSTextView>(mainWindow()->firstResponder());
  transcript_.expectTrue("the composer keeps the focus", text != nullptr);
  mainWindow()->layoutIfNeeded();
  if (text) {
    const Rect input = ChatLayout::of({560, 520}).input;
    transcript_.expect("the composer fills its field", input.width, text->frame().width);
  }
  picture("resized", mainWindow());
  main().setContentSize({0, 0, kMainFrame.width, kMainFrame.height});
}

void Tour::levelAndOpacity() {
  main().setAlwaysOnTop(true);
  transcript_.expect("the level above ordinary windows", 3, mainWindow()->level());
  transcript_.expect("read back", true, main().alwaysOnTop());
  main().setAlwaysOnTop(false);
  transcript_.expect("and back", 0, mainWindow()->level());
  main().setAlpha(0.5);
  transcript_.expect("half see-through", 0.5, main().alpha());
  main().setAlpha(1);
}

void Tour::minimiseAndZoom() {
  const Rect before = mainWindow()->frame();
  main().minimize();
  transcript_.expectTrue("minimised", wait([&] { return mainWindow()->isMiniaturized(); }));
  transcript_.expectTrue("the host hears of it",
                         wait([&] { return heard("windowDidMiniaturize", "window:main") == 1; }));
  main().becomeFirstWindow();
  transcript_.expectTrue("made first again it is shown", wait([&] { return !mainWindow()->isMiniaturized(); }));
  main().maximize();
  transcript_.expectTrue("zoomed it is larger", wait([&] { return mainWindow()->frame().width > before.width; }));
  picture("zoomed", mainWindow());
  main().maximize();
  transcript_.expectTrue("zoomed again it has its frame back", wait([&] { return mainWindow()->frame() == before; }));
}

void Tour::secondWindow() {
  Answers& answers = host_.answers();
  answers.set("window:side", "customTitleBackgroundColor", Codec<platform::Color>::encode(theme::kAccent));
  answers.set("window:side", "showOnlyCloseButton", true);
  answers.set("window:side", "initialWindowSize", Codec<Size>::encode({320, 240}));
  host_.bind("side");
  const auto window = host_.layer().makeWindow("side", {640, 300, 500, 400});
  transcript_.expect("its size is the initial one", Size{320, 240}, window->frame().size());
  window->makeKeyAndOrderFront(nullptr);
  transcript_.expectTrue("it is main now", wait([&] { return window->isMainWindow() && !main().isMainNSWindow(); }));
  transcript_.expect("a band of a title bar's height stays above the content", 29.0,
                     window->frame().height - window->contentRectForFrameRect(window->frame()).height);
  transcript_.expectTrue("the zoom button is hidden",
                         window->standardWindowButton(platform::WindowButton::zoom)->hidden);
  picture("second-window", window);
  host_.helperOf("side")->closeWindow();
  transcript_.expectTrue("it closes", wait([&] { return window->isClosed(); }));
  transcript_.expect("the host hears of it", 1, heard("windowWillClose", "window:side"));
  transcript_.expectTrue("the messenger is main again", wait([&] { return main().isMainNSWindow(); }));
}

}  // namespace samplehost
