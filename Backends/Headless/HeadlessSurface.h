#pragma once

#include <memory>
#include <optional>

#include "Backends/Headless/RecordingCanvas.h"
#include "Platform/Port/WindowHost.h"

namespace headless {

class HeadlessWindowHost;

/// One window in memory. The window host moves, stacks and focuses it; what it shows can be read from it.
class HeadlessSurface final : public platform::port::Surface {
 public:
  HeadlessSurface(HeadlessWindowHost& host, platform::port::SurfaceSink& sink, std::uint64_t handle);
  ~HeadlessSurface() override;
  HeadlessSurface(const HeadlessSurface&) = delete;
  HeadlessSurface& operator=(const HeadlessSurface&) = delete;

  void apply(const platform::port::SurfaceState& state) override;
  void restack(bool above, Surface* sibling) override;
  void setParent(Surface* parent) override;
  void activate() override;
  void setMinimised(bool minimised) override;
  void setZoomed(bool zoomed) override;
  bool beginMove() override;
  void invalidate(const platform::Rect& fromTopLeft) override;
  void setCursor(platform::port::Cursor cursor) override;
  void textInputChanged(bool endComposition) override;
  std::optional<platform::Bitmap> snapshot() override { return std::nullopt; }
  std::uint64_t nativeHandle() const override { return handle_; }

  // What the surface shows, for tests.
  const platform::port::SurfaceState& state() const { return state_; }
  platform::port::SurfaceSink& sink() const { return sink_; }
  HeadlessSurface* parent() const { return parent_; }
  bool isMinimised() const { return minimised_; }
  bool isZoomed() const { return zoomed_; }
  /// On the screen: visible and not minimised.
  bool isShown() const { return state_.visible && !minimised_; }
  bool isActive() const;
  platform::port::Cursor cursor() const { return cursor_; }
  /// The stack position's level: the surface's own or its parent's, whichever is higher.
  int effectiveLevel() const;
  bool belongsTo(const HeadlessSurface& ancestor) const;
  /// What the last paint drew; empty before the first.
  const RecordingCanvas& painted() const { return painted_; }
  int paintCount() const { return paintCount_; }
  bool needsPaint() const { return dirty_.has_value() && isShown(); }
  /// Paints everything now, as the machine does after an exposure, and returns what was drawn.
  const RecordingCanvas& repaint();

 private:
  friend class HeadlessWindowHost;
  void note(const std::string& what);
  void paint();

  HeadlessWindowHost& host_;
  platform::port::SurfaceSink& sink_;
  std::uint64_t handle_;
  std::shared_ptr<HeadlessSurface*> self_;  ///< what late reports hold weakly
  platform::port::SurfaceState state_;
  HeadlessSurface* parent_ = nullptr;
  bool minimised_ = false;
  bool zoomed_ = false;
  platform::Rect frameBeforeZoom_;
  platform::port::Cursor cursor_ = platform::port::Cursor::arrow;
  std::optional<platform::Rect> dirty_;
  RecordingCanvas painted_;
  int paintCount_ = 0;
};

}  // namespace headless
