#include "Programs/SampleHost/SearchWindow.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Programs/SampleHost/ChatTheme.h"
#include "Programs/SampleHost/PluginBundle.h"
#include "Programs/SampleHost/TextBlock.h"

namespace samplehost {

using platform::Rect;

namespace {

constexpr double kMargin = 16, kFieldHeight = 26, kRow = 34;
/// The title bar covers what lies higher.
constexpr double kFieldTop = 41, kListTop = 79;

}  // namespace

/// The list under the field.
class SearchWindow::People final : public HostScene {
 public:
  void filter(const std::string& text) {
    found.clear();
    std::ranges::copy_if(kNames, std::back_inserter(found),
                         [&](const std::string& name) { return name.find(text) != std::string::npos; });
    chosen = 0;
  }
  void move(bool down) {
    if (down && chosen + 1 < found.size()) ++chosen;
    if (!down && chosen > 0) --chosen;
  }
  void draw(platform::port::Canvas& canvas, platform::Size size) override {
    canvas.fill({{}, size}, theme::kPanel, 0);
    double top = kListTop;
    for (std::size_t at = 0; at < found.size(); ++at, top += kRow) {
      if (at == chosen) canvas.fill({kMargin / 2, top, size.width - kMargin, kRow}, theme::kWindow, 8);
      TextBlock(found[at], theme::kMessageFont, theme::kText).drawLeft(canvas, {kMargin, top, size.width, kRow});
    }
  }

  static inline const std::vector<std::string> kNames = {"김서연", "이도윤", "박하은", "최지우", "Ada Park"};
  std::vector<std::string> found = kNames;
  std::size_t chosen = 0;
};

SearchWindow::SearchWindow(Host& host, std::string identifier)
    : host_(host), identifier_(std::move(identifier)), people_(std::make_shared<People>()) {}

SearchWindow::~SearchWindow() {
  if (field_) field_->removeFromSuperview();
  if (const auto view = host_.layer().hostView(identifier_)) view->setScene(nullptr);
}

void SearchWindow::open(const Rect& frame) {
  host_.bind(identifier_);
  const auto native = host_.layer().makeWindow(identifier_, frame);
  const auto view = host_.layer().hostView(identifier_);
  view->setScene(people_);
  native->makeKeyAndOrderFront(nullptr);

  const auto redraw = [view = std::weak_ptr(view)] {
    if (const auto drawn = view.lock()) drawn->setNeedsDisplay();
  };
  field_ = makeSearchField({.focused = [this](const std::string& text) { tell("focused", {text}); },
                            .arrowKeyDidDown =
                                [this, redraw](bool down) {
                                  people_->move(down);
                                  redraw();
                                  tell("arrowKeyDidDown", {down});
                                },
                            .didEndEditing = [this] { tell("didEndEditing", {}); },
                            .textChanged =
                                [this, redraw](const std::string& text) {
                                  people_->filter(text);
                                  redraw();
                                  tell("textChanged", {text});
                                }});
  const auto content = native->contentView();
  const platform::Size size = content->bounds().size();
  field_->setFrame({kMargin, size.height - kFieldTop - kFieldHeight, size.width - 2 * kMargin, kFieldHeight});
  field_->setAutoresizingMask(platform::Autoresizing::kWidth | platform::Autoresizing::kMinYMargin);
  content->addSubview(field_);
}

std::vector<std::string> SearchWindow::found() const {
  return people_->found;
}

std::size_t SearchWindow::chosen() const {
  return people_->chosen;
}

void SearchWindow::tell(const char* event, platform::Value::Array arguments) const {
  host_.events().emit({event, "search:" + identifier_, std::move(arguments)});
}

}  // namespace samplehost
