#include "Backends/Headless/HeadlessSurface.h"

#include <fmt/format.h>

#include "Backends/Headless/HeadlessWindowHost.h"
#include "Platform/Foundation/Geometry.h"

namespace headless {

using platform::NSStringFromRect;
using platform::Rect;
using platform::port::SurfaceState;

namespace {

Rect united(const Rect& a, const Rect& b) {
  const double left = std::min(a.x, b.x), low = std::min(a.y, b.y);
  return {left, low, std::max(a.maxX(), b.maxX()) - left, std::max(a.maxY(), b.maxY()) - low};
}

/// What of the state changed, as the journal tells it.
std::vector<std::string> changes(const SurfaceState& from, const SurfaceState& to) {
  std::vector<std::string> lines;
  const auto note = [&lines](bool changed, std::string line) {
    if (changed) lines.push_back(std::move(line));
  };
  note(from.frame != to.frame, "frame " + NSStringFromRect(to.frame));
  note(from.level != to.level, fmt::format("level {}", to.level));
  note(from.alpha != to.alpha, fmt::format("alpha {}", to.alpha));
  note(from.title != to.title, "title " + to.title);
  note(from.transparent != to.transparent, fmt::format("transparent {}", to.transparent));
  note(from.cornerRadius != to.cornerRadius, fmt::format("corner radius {}", to.cornerRadius));
  note(from.revealed != to.revealed, fmt::format("revealed {:.2f}", to.revealed));
  note(from.resizable != to.resizable, fmt::format("resizable {}", to.resizable));
  note(from.minimisable != to.minimisable, fmt::format("minimisable {}", to.minimisable));
  note(from.skipsTaskbar != to.skipsTaskbar, fmt::format("skips taskbar {}", to.skipsTaskbar));
  note(from.modal != to.modal, fmt::format("modal {}", to.modal));
  note(from.visible != to.visible, to.visible ? "show" : "hide");
  return lines;
}

}  // namespace

HeadlessSurface::HeadlessSurface(HeadlessWindowHost& host, platform::port::SurfaceSink& sink, std::uint64_t handle)
    : host_(host), sink_(sink), handle_(handle), self_(std::make_shared<HeadlessSurface*>(this)) {}

HeadlessSurface::~HeadlessSurface() {
  note("destroy");
  host_.forget(*this);
}

void HeadlessSurface::note(const std::string& what) {
  host_.journal_.write(fmt::format("surface {}: {}", handle_, what));
}

void HeadlessSurface::apply(const SurfaceState& state) {
  for (const std::string& change : changes(state_, state)) note(change);
  const bool exposed = state.visible && (!state_.visible || state.frame.size() != state_.frame.size());
  state_ = state;
  if (exposed) dirty_ = Rect({}, state.frame.size());
  if (!isShown()) host_.leaveScreen(*this);
}

void HeadlessSurface::restack(bool above, Surface* sibling) {
  auto* other = static_cast<HeadlessSurface*>(sibling);
  const std::string place = above ? "above " : "below ";
  note("restack " + place + (other ? std::to_string(other->handle_) : "all"));
  host_.restack(*this, above, other);
}

void HeadlessSurface::setParent(Surface* parent) {
  parent_ = static_cast<HeadlessSurface*>(parent);
  note(parent_ ? fmt::format("parent {}", parent_->handle_) : "parent none");
  if (parent_) host_.restack(*this, true, parent_);
}

void HeadlessSurface::activate() {
  note("activate");
  if (!host_.faults_.activationRefused && isShown()) host_.moveActivation(this);
}

void HeadlessSurface::setMinimised(bool minimised) {
  note(minimised ? "minimise" : "deminimise");
  if (!host_.faults_.minimiseUnsupported) host_.changeMinimised(*this, minimised);
}

void HeadlessSurface::setZoomed(bool zoomed) {
  note(zoomed ? "zoom" : "unzoom");
  if (!host_.faults_.zoomUnsupported) host_.changeZoomed(*this, zoomed);
}

bool HeadlessSurface::beginMove() {
  note("begin move");
  if (host_.faults_.moveUnsupported || !host_.leftButtonDown_) return false;
  host_.beginMove(*this);
  return true;
}

void HeadlessSurface::invalidate(const Rect& fromTopLeft) {
  if (!fromTopLeft.isEmpty()) dirty_ = dirty_ ? united(*dirty_, fromTopLeft) : fromTopLeft;
}

void HeadlessSurface::setCursor(platform::port::Cursor cursor) {
  cursor_ = cursor;
}

void HeadlessSurface::textInputChanged(bool endComposition) {
  if (endComposition) note("end composition");
  if (host_.textInputChanged_) host_.textInputChanged_(*this, endComposition);
}

bool HeadlessSurface::isActive() const {
  return host_.active_ == this;
}

int HeadlessSurface::effectiveLevel() const {
  return parent_ ? std::max(state_.level, parent_->effectiveLevel()) : state_.level;
}

bool HeadlessSurface::belongsTo(const HeadlessSurface& ancestor) const {
  return parent_ && (parent_ == &ancestor || parent_->belongsTo(ancestor));
}

const RecordingCanvas& HeadlessSurface::repaint() {
  dirty_ = Rect({}, state_.frame.size());
  paint();
  return painted_;
}

void HeadlessSurface::paint() {
  const Rect area = dirty_->intersection(Rect({}, state_.frame.size()));
  dirty_.reset();
  const std::weak_ptr alive = self_;
  RecordingCanvas canvas;
  sink_.surfacePaint(canvas, area);
  if (alive.expired()) return;
  painted_ = std::move(canvas);
  ++paintCount_;
}

}  // namespace headless
