#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <optional>

#include "Backends/Desktop/PortalFileChooser.h"
#include "Backends/Desktop/ToolkitFileDialog.h"
#include "Backends/Desktop/XServer.h"
#include "Platform/Port/FilePanels.h"

namespace desktop {

class DesktopFilePanels;

/// A file panel as a surface: a dialog of the portal, or of the toolkit where there is no portal that shows one. The
/// portal's dialog belongs to another program: it has neither a level nor a number, and where the focus is when it has
/// it isn't known. The application counts as active then.
class FilePanelSurface final : public platform::port::Surface {
 public:
  FilePanelSurface(DesktopFilePanels& panels, platform::port::SurfaceSink& sink,
                   const platform::port::SurfaceState& state, const platform::port::FilePanelRequest& request,
                   platform::port::FilePanels::Answer answered);
  ~FilePanelSurface() override;
  FilePanelSurface(const FilePanelSurface&) = delete;
  FilePanelSurface& operator=(const FilePanelSurface&) = delete;

  void apply(const platform::port::SurfaceState& state) override;
  void restack(bool above, Surface* sibling) override;
  void setParent(Surface* parent) override;
  void activate() override;
  void setMinimised(bool) override {}
  void setZoomed(bool) override {}
  bool beginMove() override { return false; }
  void invalidate(const platform::Rect&) override {}
  void setCursor(platform::port::Cursor) override {}
  void textInputChanged(bool) override {}
  std::optional<platform::Bitmap> snapshot() override;
  std::uint64_t nativeHandle() const override;

  /// The portal's dialog has gone with the portal: the toolkit's takes its place.
  void portalLeft();

 private:
  void show();
  void hide();
  void showToolkitDialog();
  void attachToParent();
  void answer(const std::optional<std::vector<std::string>>& paths);
  void focusMoved(const QWindow* focused);

  DesktopFilePanels& panels_;
  platform::port::SurfaceSink& sink_;
  platform::port::SurfaceState state_;
  platform::port::FilePanelRequest request_;
  platform::port::FilePanels::Answer answered_;
  xcb_window_t parent_ = 0;
  bool active_ = false;
  std::unique_ptr<PortalFileChooser> portal_;
  QPointer<ToolkitFileDialog> dialog_;
  QTimer later_;  ///< shows the panel when the parent is known
  QObject context_;
};

}  // namespace desktop
