#include "Platform/AppKit/NSDragging.h"

#include "Platform/AppKit/NSPasteboard.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

const std::map<std::string, std::string> kFiles = {{"text/uri-list", "file:///a"}};

/// Takes what is dragged, and tells.
class Place final : public NSView {
 public:
  Place(std::string name, const Rect& frame, std::vector<std::string>& log)
      : NSView(frame), name_(std::move(name)), log_(log) {
    registerForDraggedTypes({PasteboardType::kURL});
  }
  NSView* hitTest(Point) override { return nullptr; }
  DragOperation draggingEntered(const NSDraggingInfo&) override {
    log_.push_back(name_ + " entered");
    return takes;
  }
  void draggingExited() override { log_.push_back(name_ + " exited"); }
  bool prepareForDragOperation(const NSDraggingInfo&) override { return prepares; }
  bool performDragOperation(const NSDraggingInfo& dragged) override {
    log_.push_back(name_ + " got " + dragged.pasteboard.readURLs().at(0).path());
    return true;
  }
  DragOperation takes = DragOperation::copy;
  bool prepares = true;

 private:
  std::string name_;
  std::vector<std::string>& log_;
};

class DraggingTest : public AppKitTest {
 protected:
  DraggingTest() {
    window = showWindow({100, 100, 400, 300});
    left = std::make_shared<Place>("left", Rect{0, 0, 200, 300}, log);
    right = std::make_shared<Place>("right", Rect{200, 0, 200, 200}, log);
    for (const auto& place : {left, right}) window->contentView()->addSubview(place);
  }
  std::vector<std::string> log;
  std::shared_ptr<NSWindow> window;
  std::shared_ptr<Place> left, right;
};

TEST_F(DraggingTest, EachPlaceHearsOnceThatADragComesAndGoes) {
  EXPECT_TRUE(user().dragOver(kFiles, {150, 150}));
  EXPECT_TRUE(user().dragOver(kFiles, {160, 160}));
  EXPECT_TRUE(user().dragOver(kFiles, {350, 150}));
  EXPECT_FALSE(user().dragOver(kFiles, {350, 350})) << "nobody takes it there";
  user().dragAway();
  EXPECT_THAT(log, ElementsAre("left entered", "left exited", "right entered", "right exited"));
}

TEST_F(DraggingTest, ADropGoesToThePlaceUnderIt) {
  for (const auto& files : {kFiles, {{"x-special/gnome-copied-files", "copy\nfile:///a"}}}) {
    EXPECT_TRUE(user().drop(files, {350, 150}));
    EXPECT_THAT(std::exchange(log, {}), ElementsAre("right entered", "right got /a"));
  }
  EXPECT_FALSE(user().drop(kFiles, {350, 350}));
}

TEST_F(DraggingTest, WhatIsNotOfTheTypesHasNoPlace) {
  EXPECT_FALSE(user().drop({{"text/plain", "file:///a"}}, {150, 150}));
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(DraggingTest, APlaceMayRefuseAtTheFirstOrTheLastMoment) {
  left->takes = DragOperation::none;
  EXPECT_FALSE(user().drop(kFiles, {150, 150}));
  right->prepares = false;
  EXPECT_FALSE(user().drop(kFiles, {350, 150}));
  EXPECT_THAT(log, ElementsAre("left entered", "left exited", "right entered"));
}

TEST_F(DraggingTest, TheFrontMostPlaceHasIt) {
  const auto above = std::make_shared<Place>("above", Rect{0, 0, 400, 300}, log);
  window->contentView()->addSubview(above);
  EXPECT_TRUE(user().drop(kFiles, {150, 150}));
  above->setHidden(true);
  EXPECT_TRUE(user().drop(kFiles, {150, 150}));
  EXPECT_THAT(log, ElementsAre("above entered", "above got /a", "left entered", "left got /a"));
}

}  // namespace
}  // namespace platform
