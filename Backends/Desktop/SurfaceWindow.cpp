#include "Backends/Desktop/SurfaceWindow.h"

#include <private/qguiapplication_p.h>
#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatformbackingstore.h>
#include <qpa/qplatforminputcontext.h>
#include <qpa/qplatformintegration.h>

#include <QDropEvent>
#include <QInputMethodEvent>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <QWindowStateChangeEvent>
#include <cstring>

#include "Backends/Desktop/Clock.h"
#include "Backends/Desktop/Coordinates.h"
#include "Backends/Desktop/DesktopCanvas.h"
#include "Backends/Desktop/DesktopSurface.h"
#include "Backends/Desktop/KeyMap.h"
#include "Backends/Desktop/WindowServices.h"

namespace desktop {

using platform::port::PointerAction;
using platform::port::PointerInput;
using platform::port::TextInputState;

namespace {

constexpr double kPointsPerNotch = 48, kAnglePerNotch = 120;

QPainterPath rounded(const QRectF& rect, double radius) {
  QPainterPath path;
  path.addRoundedRect(rect, radius, radius);
  return path;
}

PointerAction actionOf(Qt::MouseButton button, bool down) {
  if (button == Qt::LeftButton) return down ? PointerAction::leftDown : PointerAction::leftUp;
  if (button == Qt::RightButton) return down ? PointerAction::rightDown : PointerAction::rightUp;
  return down ? PointerAction::otherDown : PointerAction::otherUp;
}

/// The toolkit's module for ibus hands the caret's place on in points, where ibus takes pixels of the root window.
bool tellsPointsAsPixels() {
  const auto* context = QGuiApplicationPrivate::platformIntegration()->inputContext();
  return context && std::strcmp(context->metaObject()->className(), "QIBusPlatformInputContext") == 0;
}

QVariant answerTo(Qt::InputMethodQuery query, const TextInputState& state, const QRectF& caret) {
  const QString text = QString::fromStdU16String(state.surroundingText);
  const auto cursor = static_cast<qsizetype>(std::min(state.cursor, state.surroundingText.size()));
  const auto anchor = static_cast<qsizetype>(std::min(state.anchor, state.surroundingText.size()));
  switch (query) {
    case Qt::ImEnabled:
      return true;
    case Qt::ImCursorRectangle:
    case Qt::ImAnchorRectangle:
      return caret;
    case Qt::ImCursorPosition:
    case Qt::ImAbsolutePosition:
      return static_cast<int>(cursor);
    case Qt::ImAnchorPosition:
      return static_cast<int>(anchor);
    case Qt::ImSurroundingText:
      return text;
    case Qt::ImCurrentSelection:
      return text.mid(std::min(cursor, anchor), std::abs(cursor - anchor));
    case Qt::ImTextBeforeCursor:
      return text.left(cursor);
    case Qt::ImTextAfterCursor:
      return text.mid(cursor);
    case Qt::ImHints:
      return static_cast<int>(Qt::ImhMultiLine);
    default:
      return {};
  }
}

}  // namespace

SurfaceWindow::SurfaceWindow(DesktopSurface& surface, platform::port::SurfaceSink& sink, WindowServices& services)
    : surface_(&surface), sink_(&sink), services_(services), store_(this) {
  setSurfaceType(QSurface::RasterSurface);
  QSurfaceFormat alpha = format();
  alpha.setAlphaBufferSize(8);
  setFormat(alpha);
  setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
  // Showing a window is one thing, giving it the keyboard another: the model says when.
  setProperty("_q_showWithoutActivating", true);
}

void SurfaceWindow::detach() {
  surface_ = nullptr;
  sink_ = nullptr;
  setVisible(false);
  deleteLater();
}

void SurfaceWindow::setLook(bool transparent, double cornerRadius) {
  if (transparent == transparent_ && cornerRadius == cornerRadius_) return;
  transparent_ = transparent;
  cornerRadius_ = cornerRadius;
  updateShape();
  invalidate({{}, size()});
}

void SurfaceWindow::setRevealed(double part) {
  if (std::exchange(revealed_, part) != part) updateShape();
}

void SurfaceWindow::invalidate(const QRect& dirty) {
  dirty_ += dirty & QRect({}, size());
  if (isExposed() && !dirty_.isEmpty()) requestUpdate();
}

void SurfaceWindow::updateShape() {
  const bool cuts = cornerRadius_ > 0 && !services_.x.hasCompositor();
  const QRectF whole({}, QSizeF(size()));
  // An empty region would be no limit at all.
  if (revealed_ < 1) return setMask(QRect(0, 0, width(), std::max(1, qRound(height() * revealed_))));
  setMask(cuts ? QRegion(rounded(whole, cornerRadius_).toFillPolygon().toPolygon()) : QRegion());
}

void SurfaceWindow::paint() {
  if (!isExposed() || !sink_) return;
  if (store_.size() != size()) {
    store_.resize(size());
    dirty_ = QRect({}, size());
  }
  const QRegion region = std::exchange(dirty_, QRegion());
  if (region.isEmpty()) return;
  store_.beginPaint(region);
  {
    QPainter painter(store_.paintDevice());
    painter.setClipRegion(region);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(region.boundingRect(), transparent_ ? Qt::transparent : Qt::white);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const QRect bounds = region.boundingRect();
    DesktopCanvas canvas(painter);
    painter.save();
    sink_->surfacePaint(canvas, {static_cast<double>(bounds.x()), static_cast<double>(bounds.y()),
                                 static_cast<double>(bounds.width()), static_cast<double>(bounds.height())});
    painter.restore();
    cutCorners(painter);
  }
  store_.endPaint();
  store_.flush(region);
}

void SurfaceWindow::cutCorners(QPainter& painter) const {
  if (cornerRadius_ <= 0 || !mask().isEmpty()) return;
  QPainterPath outside;
  const QRectF whole({}, QSizeF(size()));
  outside.addRect(whole);
  painter.setCompositionMode(QPainter::CompositionMode_Clear);
  painter.fillPath(outside - rounded(whole, cornerRadius_), Qt::black);
}

std::optional<platform::Bitmap> SurfaceWindow::snapshot() {
  paint();
  if (!isExposed() || !store_.handle() || store_.size() != size()) return std::nullopt;
  const qreal scale = devicePixelRatio();
  const QSize pixels = QSizeF(QSizeF(size()) * scale).toSize();
  const QImage image =
      store_.handle()->toImage().copy({{}, pixels}).convertToFormat(QImage::Format_ARGB32_Premultiplied);
  platform::Bitmap bitmap{image.width(), image.height(), scale, {}};
  const auto width = static_cast<std::size_t>(image.width());
  bitmap.pixels.resize(width * static_cast<std::size_t>(image.height()));
  for (int y = 0; y < image.height(); ++y)
    std::memcpy(bitmap.pixels.data() + static_cast<std::size_t>(y) * width, image.constScanLine(y), width * 4);
  return bitmap;
}

void SurfaceWindow::exposeEvent(QExposeEvent*) {
  dirty_ = QRect({}, size());
  paint();
}

void SurfaceWindow::resizeEvent(QResizeEvent*) {
  if (cornerRadius_ > 0) updateShape();
  invalidate({{}, size()});
  if (surface_) surface_->geometryChanged();
}

void SurfaceWindow::moveEvent(QMoveEvent*) {
  if (surface_) surface_->geometryChanged();
}

bool SurfaceWindow::event(QEvent* event) {
  if (!sink_) return QWindow::event(event);
  switch (event->type()) {
    case QEvent::UpdateRequest:
      paint();
      return true;
    case QEvent::Close:
      event->ignore();
      sink_->surfaceCloseRequested();
      return true;
    case QEvent::MouseButtonPress:
      reportButton(static_cast<const QMouseEvent&>(*event), true);
      return true;
    case QEvent::MouseButtonRelease:
      reportButton(static_cast<const QMouseEvent&>(*event), false);
      return true;
    case QEvent::MouseMove: {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      reportPointer(PointerAction::moved, mouse.globalPosition(), mouse.modifiers());
      return true;
    }
    case QEvent::Leave:
      reportPointer(PointerAction::exited, QCursor::pos(), Qt::NoModifier);
      return true;
    case QEvent::Wheel:
      reportWheel(static_cast<const QWheelEvent&>(*event));
      return true;
    case QEvent::KeyPress:
      reportKey(static_cast<const QKeyEvent&>(*event));
      return true;
    case QEvent::DragEnter:
      event->ignore();  // so that every step is asked about, not the first one for all
      return true;
    case QEvent::DragMove:
    case QEvent::Drop:
      reportDrag(static_cast<QDropEvent&>(*event));
      return true;
    case QEvent::DragLeave:
      sink_->surfaceDragExited();
      return true;
    case QEvent::InputMethodQuery:
      answer(static_cast<QInputMethodQueryEvent&>(*event));
      return true;
    case QEvent::InputMethod: {
      const QPointer<SurfaceWindow> self(this);
      services_.composition.handle(static_cast<const QInputMethodEvent&>(*event), *sink_,
                                   [self] { return self && self->sink_; });
      return true;
    }
    case QEvent::WindowStateChange:
      surface_->stateChanged();
      return true;
    case QEvent::FocusIn:
    case QEvent::FocusOut:
      // The toolkit would tell readers of the screen, who have nothing to read here, and ask the session bus for them:
      // a bus that hangs would hold the host up.
      return true;
    default:
      return QWindow::event(event);
  }
}

void SurfaceWindow::reportButton(const QMouseEvent& event, bool down) {
  if (event.button() == Qt::LeftButton) {
    // The toolkit takes the button for released when the window manager begins or ends a move; the surface knows
    // better.
    if (!down && (!leftDown_ || surface_->isMoving())) return;
    const QPointer<SurfaceWindow> self(this);
    surface_->endMove();
    if (!self || !sink_) return;
    leftDown_ = down;
  }
  reportPointer(actionOf(event.button(), down), event.globalPosition(), event.modifiers());
}

void SurfaceWindow::reportLeftUp() {
  if (std::exchange(leftDown_, false)) reportPointer(PointerAction::leftUp, QCursor::pos(), Qt::NoModifier);
}

void SurfaceWindow::reportPointer(PointerAction action, const QPointF& globalPosition, Qt::KeyboardModifiers) {
  services_.keys.flushRelease();
  if (!sink_) return;
  PointerInput input;
  input.action = action;
  input.location = toModel(globalPosition);
  input.modifiers = modifierFlags(services_.x.pointerState());
  input.time = now();
  sink_->surfacePointer(input);
}

void SurfaceWindow::reportWheel(const QWheelEvent& event) {
  const QPointF pixels = event.pixelDelta();
  const QPointF delta = pixels.isNull() ? QPointF(event.angleDelta()) * kPointsPerNotch / kAnglePerNotch : pixels;
  sink_->surfaceWheel(
      {toModel(event.globalPosition()), delta.x(), delta.y(), modifierFlags(services_.x.pointerState()), now()});
}

void SurfaceWindow::reportKey(const QKeyEvent& event) {
  WindowServices& services = services_;
  if (auto input = services.keys.afterInputMethod(event)) {
    input->time = now();
    sink_->surfaceKeyAfterInputMethod(*input);
  }
  services.keys.keyReported();
}

void SurfaceWindow::reportDrag(QDropEvent& event) {
  const DragContents contents(*event.mimeData(), services_.selections, services_.dragClock.time());
  const platform::Point location = toModel(mapToGlobal(event.position()));
  const bool taken = event.type() == QEvent::Drop ? sink_->surfaceDropped(contents, location)
                                                  : sink_->surfaceDragMoved(contents, location);
  // A source that only moves would delete what it believes to be moved.
  event.setAccepted(taken && event.possibleActions().testFlag(Qt::CopyAction));
  if (event.isAccepted()) event.setDropAction(Qt::CopyAction);
}

void SurfaceWindow::answer(QInputMethodQueryEvent& event) const {
  const auto state = sink_->surfaceTextInput();
  if (!state) {
    event.setValue(Qt::ImEnabled, false);
    event.accept();
    return;
  }
  // Relative to where the toolkit believes the window to be, since it adds that again.
  const QRect points = toToolkit(state->caret);
  const QRect shown = tellsPointsAsPixels() ? QHighDpi::toNativeWindowGeometry(points, this) : points;
  const QRectF caret = QRectF(shown).translated(-QPointF(geometry().topLeft()));
  for (int bit = 0; bit < 32; ++bit) {
    const auto query = static_cast<Qt::InputMethodQuery>(1U << bit);
    if (!event.queries().testFlag(query)) continue;
    if (const QVariant value = answerTo(query, *state, caret); value.isValid()) event.setValue(query, value);
  }
  event.accept();
}

}  // namespace desktop
