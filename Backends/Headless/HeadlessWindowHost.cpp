#include "Backends/Headless/HeadlessWindowHost.h"

#include <algorithm>

namespace headless {

using platform::Point;
using platform::Rect;
using platform::port::ScreenInfo;
using platform::port::SurfaceSink;

HeadlessWindowHost::HeadlessWindowHost(HeadlessLoop& loop, Journal& journal, const Faults& faults)
    : loop_(loop), journal_(journal), faults_(faults), screens_{{{0, 0, 1440, 900}, {0, 0, 1440, 876}, 1}} {
  loop_.setPainter([this] { return paintDirty(); });
}

std::unique_ptr<platform::port::Surface> HeadlessWindowHost::makeSurface(SurfaceSink& sink,
                                                                         const platform::port::SurfaceState& state) {
  auto surface = std::make_unique<HeadlessSurface>(*this, sink, ++lastHandle_);
  surfaces_.push_back(surface.get());
  surface->note("make");
  surface->apply(state);
  return surface;
}

void HeadlessWindowHost::setScreens(std::vector<ScreenInfo> screens) {
  if (screens_ == screens) return;
  screens_ = std::move(screens);
  loop_.deliver([this] {
    if (screensChanged_) screensChanged_();
  });
}

std::vector<HeadlessSurface*> HeadlessWindowHost::stack() const {
  auto stack = surfaces_;
  std::ranges::stable_sort(stack, {}, [](const HeadlessSurface* each) { return each->effectiveLevel(); });
  return stack;
}

HeadlessSurface* HeadlessWindowHost::surfaceWithHandle(std::uint64_t handle) const {
  const auto found = std::ranges::find(surfaces_, handle, [](const HeadlessSurface* each) { return each->handle_; });
  return found == surfaces_.end() ? nullptr : *found;
}

HeadlessSurface* HeadlessWindowHost::surfaceOf(const SurfaceSink& sink) const {
  const auto found = std::ranges::find(surfaces_, &sink, [](const HeadlessSurface* each) { return &each->sink_; });
  return found == surfaces_.end() ? nullptr : *found;
}

HeadlessSurface* HeadlessWindowHost::surfaceTitled(std::string_view title) const {
  HeadlessSurface* newest = nullptr;
  for (HeadlessSurface* each : surfaces_)
    if (each->isShown() && each->state_.title == title && (!newest || each->handle_ > newest->handle_)) newest = each;
  return newest;
}

HeadlessSurface* HeadlessWindowHost::surfaceAt(Point onScreen) const {
  const auto stack = this->stack();
  const auto found = std::find_if(stack.rbegin(), stack.rend(), [onScreen](const HeadlessSurface* each) {
    return each->isShown() && each->state_.frame.contains(onScreen);
  });
  return found == stack.rend() ? nullptr : *found;
}

void HeadlessWindowHost::userMoves(HeadlessSurface& surface, const Rect& frame) {
  changeFrame(surface, frame);
}

void HeadlessWindowHost::userActivates(HeadlessSurface& surface) {
  restack(surface, true, nullptr);
  moveActivation(&surface);
}

void HeadlessWindowHost::userDeactivatesAll() {
  moveActivation(nullptr);
}

void HeadlessWindowHost::userMinimises(HeadlessSurface& surface, bool minimised) {
  changeMinimised(surface, minimised);
  if (!minimised) userActivates(surface);
}

void HeadlessWindowHost::userZooms(HeadlessSurface& surface, bool zoomed) {
  changeZoomed(surface, zoomed);
}

void HeadlessWindowHost::userKeepsAbove(HeadlessSurface& surface, bool above) {
  surface.state_.level = above ? 3 : 0;
  report(surface, [above](SurfaceSink& sink) { sink.surfaceKeptAbove(above); });
}

void HeadlessWindowHost::userCloses(HeadlessSurface& surface) {
  report(surface, [](SurfaceSink& sink) { sink.surfaceCloseRequested(); });
}

void HeadlessWindowHost::holdReports(bool hold) {
  holding_ = hold;
  if (hold) return;
  for (auto& report : std::exchange(held_, {})) loop_.deliver(std::move(report));
}

void HeadlessWindowHost::report(const HeadlessSurface& surface, Report what) {
  report([weak = std::weak_ptr(surface.self_), what = std::move(what)] {
    if (const auto alive = weak.lock()) what((*alive)->sink_);
  });
}

void HeadlessWindowHost::report(std::function<void()> delivery) {
  if (holding_)
    held_.push_back(std::move(delivery));
  else
    loop_.deliver(std::move(delivery));
}

// One delivery: between losing and getting the focus the application does nothing else.
void HeadlessWindowHost::moveActivation(HeadlessSurface* to) {
  if (active_ == to) return;
  HeadlessSurface* const from = std::exchange(active_, to);
  const auto weak = [](HeadlessSurface* surface) {
    return surface ? std::weak_ptr(surface->self_) : std::weak_ptr<HeadlessSurface*>();
  };
  report([lost = weak(from), got = weak(to)] {
    if (const auto alive = lost.lock()) (*alive)->sink_.surfaceActivated(false);
    if (const auto alive = got.lock()) (*alive)->sink_.surfaceActivated(true);
  });
}

void HeadlessWindowHost::activateByPress(HeadlessSurface& surface) {
  restack(surface, true, nullptr);
  if (holding_) return moveActivation(&surface);
  if (active_ == &surface) return;
  const std::weak_ptr alive = surface.self_;
  HeadlessSurface* const from = std::exchange(active_, &surface);
  if (from) from->sink_.surfaceActivated(false);
  if (!alive.expired()) surface.sink_.surfaceActivated(true);
}

void HeadlessWindowHost::changeFrame(HeadlessSurface& surface, const Rect& frame) {
  if (surface.state_.frame.size() != frame.size()) surface.dirty_ = Rect({}, frame.size());
  surface.state_.frame = frame;
  report(surface, [frame](SurfaceSink& sink) { sink.surfaceFrameChanged(frame); });
}

void HeadlessWindowHost::changeMinimised(HeadlessSurface& surface, bool minimised) {
  if (surface.minimised_ == minimised) return;
  surface.minimised_ = minimised;
  if (minimised)
    leaveScreen(surface);
  else
    surface.dirty_ = Rect({}, surface.state_.frame.size());
  // What it has come to by the time that it is told.
  report(surface, [&surface](SurfaceSink& sink) { sink.surfaceMinimised(surface.minimised_); });
}

void HeadlessWindowHost::changeZoomed(HeadlessSurface& surface, bool zoomed) {
  if (surface.zoomed_ == zoomed) return;
  surface.zoomed_ = zoomed;
  if (zoomed) surface.frameBeforeZoom_ = surface.state_.frame;
  changeFrame(surface, zoomed ? visibleFrameFor(surface.state_.frame) : surface.frameBeforeZoom_);
  report(surface, [zoomed](SurfaceSink& sink) { sink.surfaceZoomed(zoomed); });
}

void HeadlessWindowHost::beginMove(HeadlessSurface& surface) {
  moving_ = &surface;
  moveOffset_ = surface.state_.frame.origin() - pointer_;
}

void HeadlessWindowHost::movePointer(Point location) {
  pointer_ = location;
  if (!moving_) return;
  const Rect frame(location + moveOffset_, moving_->state_.frame.size());
  if (faults_.moveReportedAtEnd)
    moving_->state_.frame = frame;
  else
    changeFrame(*moving_, frame);
}

void HeadlessWindowHost::leaveScreen(HeadlessSurface& surface) {
  if (active_ == &surface) moveActivation(nullptr);
  for (HeadlessSurface** held : {&under_, &grab_, &moving_})
    if (*held == &surface) *held = nullptr;
}

void HeadlessWindowHost::forget(HeadlessSurface& surface) {
  std::erase(surfaces_, &surface);
  for (HeadlessSurface* each : surfaces_)
    if (each->parent_ == &surface) each->parent_ = nullptr;
  leaveScreen(surface);
}

void HeadlessWindowHost::restack(HeadlessSurface& surface, bool above, HeadlessSurface* sibling) {
  // Where every new one is.
  if (above && !sibling && surfaces_.back() == &surface) return;
  // What belongs to the surface goes with it, in its order, above it.
  std::vector<HeadlessSurface*> group{&surface};
  std::ranges::copy_if(surfaces_, std::back_inserter(group),
                       [&surface](const HeadlessSurface* each) { return each->belongsTo(surface); });
  if (sibling == &surface || (sibling && sibling->belongsTo(surface))) return;
  std::erase_if(surfaces_, [&group](HeadlessSurface* each) { return std::ranges::find(group, each) != group.end(); });
  auto place = above ? surfaces_.end() : surfaces_.begin();
  if (sibling) place = std::ranges::find(surfaces_, sibling) + (above ? 1 : 0);
  surfaces_.insert(place, group.begin(), group.end());
}

Rect HeadlessWindowHost::visibleFrameFor(const Rect& frame) const {
  const auto shown = [&frame](const ScreenInfo& screen) {
    const Rect part = screen.frame.intersection(frame);
    return part.width * part.height;
  };
  const auto most = std::ranges::max_element(screens_, {}, shown);
  return most == screens_.end() ? frame : most->visibleFrame;
}

bool HeadlessWindowHost::paintDirty() {
  std::vector<std::weak_ptr<HeadlessSurface*>> dirty;
  for (const HeadlessSurface* each : surfaces_)
    if (each->needsPaint()) dirty.emplace_back(each->self_);
  for (const auto& weak : dirty)
    if (const auto alive = weak.lock(); alive && (*alive)->needsPaint()) (*alive)->paint();
  return !dirty.empty();
}

}  // namespace headless
