#include <cmath>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSTextView.h"
#include "Programs/SampleHost/SearchWindow.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

namespace KeyCode = platform::KeyCode;

void Tour::search() {
  SearchWindow search(host_, "people");
  search.open({620, 240, 300, 300});
  const auto window = host_.layer().window("people");
  transcript_.expectTrue("its window is main", wait([&] { return window->isMainWindow(); }));
  window->layoutIfNeeded();
  picture("search-empty", window);

  const auto text = search.field()->subviews().at(1);
  const auto cancel = search.field()->subviews().at(2);
  transcript_.expectTrue("it takes the focus", window->makeFirstResponder(text));
  picture("search-focused", window);
  user_->compose(u"김");
  transcript_.expect("what is being composed is searched for", "김서연", search.found().front());
  transcript_.expectTrue("the button that clears appears", !cancel->isHidden());
  user_->commit(u"김");
  picture("search-hangul", window);
  user_->key(KeyCode::kBackspace, 0);
  transcript_.expect("deleted, all are listed", 5, static_cast<int>(search.found().size()));
  transcript_.expectTrue("and the button goes", cancel->isHidden());
  user_->key(KeyCode::kDownArrow, 0);
  transcript_.expect("Down Arrow chooses the next", 1, static_cast<int>(search.chosen()));
  user_->key(KeyCode::kUpArrow, 0);
  transcript_.expect("Up Arrow the one before", 0, static_cast<int>(search.chosen()));
  user_->type("Ada");
  picture("search-latin", window);
  user_->key(KeyCode::kEscape, 0);
  transcript_.expect("Escape ends the editing", 1, heard("didEndEditing", "search:people"));
  host_.helperOf("people")->closeWindow();
  transcript_.expectTrue("its window closes", wait([&] { return window->isClosed(); }));
}

void Tour::presence() {
  const auto told = [this] { return heard("notifyUserInteraction", "app"); };
  if (!machine_.headless) return transcript_.note("the user is simulated on the headless desktop only");
  // Until what the user did in earlier scenes has been told; from one turn of the idle timer on.
  const double now = machine_.headless->loop().now();
  machine_.headless->advance(std::ceil(now) - now + 5);
  const int before = told();
  machine_.headless->advance(5);
  transcript_.expect("an idle user is not heard of", before, told());
  for (int second = 0; second < 3; ++second) {
    machine_.headless->advance(0.5);
    machine_.headless->presence()->userActs();
    machine_.headless->advance(0.5);
  }
  transcript_.expect("an active one is, once a second", before + 3, told());
  for (const bool asleep : {true, false}) machine_.headless->presence()->setScreensAsleep(asleep);
  machine_.headless->settle();
  transcript_.expect("screens that sleep and wake are told", 2, heard("notifyWorkspaceEnvironment", "app"));
}

}  // namespace samplehost
