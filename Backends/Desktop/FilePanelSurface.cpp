#include "Backends/Desktop/FilePanelSurface.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QWindow>
#include <utility>

#include "Backends/Desktop/DesktopFilePanels.h"
#include "Backends/Desktop/Pictures.h"
#include "Backends/Desktop/ToolkitBus.h"

namespace desktop {

using platform::port::FilePanelRequest;
using platform::port::SurfaceState;

namespace {

constexpr int kAboveLevel = 3;

bool belongsTo(const QWindow* window, const QWindow* dialog) {
  for (; window; window = window->transientParent())
    if (window == dialog) return true;
  return false;
}

}  // namespace

FilePanelSurface::FilePanelSurface(DesktopFilePanels& panels, platform::port::SurfaceSink& sink,
                                   const SurfaceState& state, const FilePanelRequest& request,
                                   platform::port::FilePanels::Answer answered)
    : panels_(panels), sink_(sink), state_(state), request_(request), answered_(std::move(answered)) {
  panels_.add(*this);
  later_.setSingleShot(true);
  QObject::connect(&later_, &QTimer::timeout, &context_, [this] { show(); });
  if (state_.visible) later_.start(0);
}

FilePanelSurface::~FilePanelSurface() {
  panels_.remove(*this);
  hide();
}

void FilePanelSurface::apply(const SurfaceState& state) {
  const bool wasVisible = std::exchange(state_, state).visible;
  if (state.visible == wasVisible) return;
  if (state.visible) return later_.start(0);
  later_.stop();
  hide();
}

void FilePanelSurface::show() {
  if (!panels_.portalMayAnswer()) return showToolkitDialog();
  portal_ = std::make_unique<PortalFileChooser>(
      panels_.bus(), request_, PortalFileChooser::Place{parent_, state_.modal},
      [this](const auto& paths) { answer(paths); },
      [this](bool hangs) {
        if (hangs) panels_.portalHangs();
        portalLeft();
      });
  activate();
}

void FilePanelSurface::portalLeft() {
  if (!std::exchange(portal_, nullptr)) return;
  showToolkitDialog();
}

void FilePanelSurface::showToolkitDialog() {
  keepToolkitFromHangingBus(panels_.bus());
  panels_.loadTranslation();
  dialog_ = new ToolkitFileDialog(request_);
  dialog_->setWindowFlag(Qt::WindowStaysOnTopHint, state_.level >= kAboveLevel);
  QObject::connect(dialog_, &QDialog::finished, &context_, [this] { answer(dialog_->chosen()); });
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &context_,
                   [this](const QWindow* focused) { focusMoved(focused); });
  dialog_->show();
  attachToParent();
  dialog_->activateWindow();
}

/// What it is in the middle of is told to the dialog at once; the rest of it goes when its handlers have returned.
void FilePanelSurface::hide() {
  portal_ = nullptr;
  if (!dialog_) return;
  QObject::disconnect(dialog_, nullptr, &context_, nullptr);
  QObject::disconnect(qGuiApp, nullptr, &context_, nullptr);
  for (QDialog* question : dialog_->findChildren<QDialog*>()) question->close();
  dialog_->hide();
  dialog_->deleteLater();
  dialog_.clear();
}

void FilePanelSurface::answer(const std::optional<std::vector<std::string>>& paths) {
  const auto told = std::exchange(answered_, nullptr);
  if (told) told(paths);
}

void FilePanelSurface::focusMoved(const QWindow* focused) {
  if (focused && focused->type() == Qt::Popup) return;
  const bool active = belongsTo(focused, dialog_->windowHandle());
  if (std::exchange(active_, active) != active) sink_.surfaceActivated(active);
}

void FilePanelSurface::restack(bool above, Surface* /*sibling*/) {
  if (dialog_ && above) dialog_->raise();
}

void FilePanelSurface::setParent(Surface* parent) {
  parent_ = parent ? static_cast<xcb_window_t>(parent->nativeHandle()) : 0;
  if (dialog_) attachToParent();
}

void FilePanelSurface::attachToParent() {
  panels_.x().setTransientFor(static_cast<xcb_window_t>(dialog_->winId()), parent_);
  panels_.x().flush();
}

void FilePanelSurface::activate() {
  if (dialog_) return dialog_->activateWindow();
  if (portal_) QTimer::singleShot(0, &context_, [this] { sink_.surfaceActivated(true); });
}

std::optional<platform::Bitmap> FilePanelSurface::snapshot() {
  if (!dialog_) return std::nullopt;
  return bitmapOf(dialog_->grab().toImage());
}

std::uint64_t FilePanelSurface::nativeHandle() const {
  return dialog_ ? dialog_->winId() : 0;
}

}  // namespace desktop
