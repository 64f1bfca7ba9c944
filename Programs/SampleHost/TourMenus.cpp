#include <algorithm>

#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/FileManager.h"
#include "Programs/SampleHost/HostArguments.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

namespace {

/// Time for a menu to be on the screen, in seconds.
constexpr double kMenuAppears = 0.3;

}  // namespace

void Tour::contextMenu() {
  const std::vector<MenuItemAnswer> answers = {{"답장", "", false},
                                               {"Forward", "", false},
                                               {"", "", true},
                                               {"Notify me", "on", false},
                                               {"Delete", "off", false}};
  std::vector<std::shared_ptr<veltrik::VeltrikPopoverMenuItemProtocol>> items;
  items.reserve(answers.size());
  for (const auto& answer : answers)
    items.push_back(std::make_shared<PopoverMenuItem>(answer, "window:main", host_.events()));
  const auto content = mainWindow()->contentView();
  const std::size_t views = content->subviews().size();
  const int before = heard("popoverMenuItemHandler", "window:main");
  bool covered = false;
  platform::DispatchQueue::main().asyncAfter(kMenuAppears, [&] {
    covered = content->subviews().size() == views + 1;
    menuPicture("context-menu");
    user_->chooseMenuItem("답장");
  });
  main().showPopoverMenuWithItems(items);
  transcript_.expectTrue("the menu lay over the content while the main queue went on", covered);
  transcript_.expect("and left nothing behind", static_cast<std::int64_t>(views),
                     static_cast<std::int64_t>(content->subviews().size()));
  const bool chose = user_->canChooseFromMenus();
  transcript_.expect(chose ? "the chosen item's handler ran" : "closed without a choice it ran no handler",
                     static_cast<std::int64_t>(before + (chose ? 1 : 0)),
                     static_cast<std::int64_t>(heard("popoverMenuItemHandler", "window:main")));
}

void Tour::menuPicture(const std::string& name) {
  if (!pictures_ || machine_.headless) return;
  const auto bitmap = machine_.backend->menus()->snapshot();
  if (!bitmap) return transcript_.failed("a picture of the menu", "the machine gave none");
  savePicture(name, *bitmap);
}

void Tour::pasteFiles() {
  auto& clipboard = machine_.backend->clipboard();
  const auto kept = platform::NSPasteboard::general().string();
  clipboard.write({{"text/uri-list", "file:///tmp/a%20b%23%25%EA%B0%80.txt\r\n"}});
  const auto files = main().readPastedFilePath();
  transcript_.expect("a copied file is pasted by its own name", "/tmp/a b#%가.txt",
                     files.size() == 1 ? files.front().path() : "nothing");
  platform::NSPasteboard::general().setString("text");
  transcript_.expectTrue("text is no file", main().readPastedFilePath().empty());
  if (kept) platform::NSPasteboard::general().setString(*kept);
}

void Tour::dropFiles() {
  main().setAsFileDropable();
  const int before = heard("didSelectedFilePath", "window:main");
  const auto frame = mainWindow()->frame();
  const bool taken =
      user_->dropFiles("file:///tmp/a\r\nfile:///tmp/b\r\n", {frame.x + frame.width / 2, frame.y + frame.height / 2});
  if (!taken) return transcript_.note("only the real pointer drops here");
  transcript_.expect("the host heard of them", static_cast<std::int64_t>(before + 1),
                     static_cast<std::int64_t>(heard("didSelectedFilePath", "window:main")));
}

}  // namespace samplehost
