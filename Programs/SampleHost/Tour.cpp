#include "Programs/SampleHost/Tour.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/RunLoop.h"
#include "Programs/SampleHost/PngFile.h"

namespace samplehost {

namespace {
constexpr double kPatience = 5;
}

Tour::Tour(Host& host, Machine& machine, Transcript& transcript, std::optional<std::filesystem::path> pictures)
    : host_(host),
      machine_(machine),
      transcript_(transcript),
      pictures_(std::move(pictures)),
      user_(makeTourUser(machine)) {
  host_.events().listen([this](const HostEvent& event) { heard_.push_back(event); });
  platform::DistributedNotificationCenter::defaultCenter().setPostObserver(
      [this](const std::string& name, const std::string&, const platform::Dictionary&) { posted_.push_back(name); });
}

Tour::~Tour() {
  platform::DistributedNotificationCenter::defaultCenter().setPostObserver(nullptr);
}

const std::vector<Tour::Scene>& Tour::scenes() {
  static const std::vector<Scene> all = {
      {"The host launches and creates the principal object", &Tour::launch},
      {"A window is bound to its identifier", &Tour::bindWindow},
      {"The host draws its own title bar", &Tour::chrome},
      {"The drag region: under 5 points a click, from 5 on the window moves", &Tour::dragRegion},
      {"Text is typed and sent with Return", &Tour::typeAndSend},
      {"Hangul is composed in place", &Tour::composeHangul},
      {"Control+Return makes a new line", &Tour::newLine},
      {"Steps back and on", &Tour::undoAndRedo},
      {"Double and right clicks", &Tour::clicks},
      {"The focus moves, a key is made", &Tour::focusAndKeys},
      {"A context menu at the pointer", &Tour::contextMenu},
      {"Files and pictures are pasted", &Tour::pasteFiles},
      {"Files are dropped", &Tour::dropFiles},
      {"Another content size", &Tour::resize},
      {"Always on top, and see-through", &Tour::levelAndOpacity},
      {"Minimised and zoomed", &Tour::minimiseAndZoom},
      {"A second window with a coloured title bar and only a close button", &Tour::secondWindow},
      {"Windows before and behind each other", &Tour::order},
      {"Windows attached to the messenger", &Tour::attachedWindows},
      {"A popover", &Tour::popover},
      {"A sheet", &Tour::sheet},
      {"An alert", &Tour::alert},
      {"An alert as a sheet", &Tour::sheetAlert},
      {"A panel to save in", &Tour::savePanel},
      {"A panel to open files", &Tour::openPanel},
      {"People are searched by name", &Tour::search},
      {"The user is there or not, the screens are on or not", &Tour::presence},
      {"Notifications between processes", &Tour::notifications},
      {"The web-view companion is asked for", &Tour::companion},
      {"An update is asked for", &Tour::update},
      {"The dock menu opens the main window", &Tour::dockMenu},
      {"An icon with a menu in the status bar, a badge, icons of file types", &Tour::statusBarItem},
      {"The application is opened again", &Tour::reopen},
      {"The application terminates", &Tour::terminate},
  };
  return all;
}

bool Tour::run() {
  for (const Scene& scene : scenes()) {
    transcript_.scene(scene.title);
    try {
      (this->*scene.play)();
    } catch (const std::exception& problem) {
      transcript_.failed("the scene plays to its end", problem.what());
    }
  }
  return transcript_.finish();
}

veltrik::VeltrikAppKitWindowHelperProtocol& Tour::main() {
  const HelperPointer helper = host_.helperOf("main");
  if (!helper) throw std::runtime_error("the main window was not bound");
  return *helper;
}

std::shared_ptr<platform::NSWindow> Tour::mainWindow() const {
  auto window = host_.layer().window("main");
  if (!window) throw std::runtime_error("there is no main window");
  return window;
}

std::string Tour::lastMessage() const {
  return chat_->chat().messages().back().text;
}

int Tour::heard(const std::string& name, const std::string& from) const {
  return static_cast<int>(
      std::ranges::count_if(heard_, [&](const HostEvent& event) { return event.name == name && event.from == from; }));
}

int Tour::posted(const std::string& name) const {
  return static_cast<int>(std::ranges::count(posted_, name));
}

bool Tour::wait(const std::function<bool()>& condition) {
  auto& loop = platform::RunLoop::main();
  return loop.runUntil(condition, loop.now() + kPatience);
}

void Tour::picture(const std::string& name, const std::shared_ptr<platform::NSWindow>& window) {
  if (!pictures_ || machine_.headless) return;
  window->display();
  std::optional<platform::Bitmap> bitmap;
  if (!wait([&] { return (bitmap = window->snapshot()).has_value(); }))
    return transcript_.failed("a picture of the window", "the machine gave none");
  savePicture(name, *bitmap);
}

void Tour::savePicture(const std::string& name, const platform::Bitmap& bitmap) {
  const std::string file = fmt::format("{:02}-{}.png", ++pictureCount_, name);
  writePng(bitmap, *pictures_ / file);
  transcript_.note("picture " + file);
}

}  // namespace samplehost
