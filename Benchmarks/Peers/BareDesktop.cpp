#include "Benchmarks/Peers/BareDesktop.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMouseEvent>
#include <QPainter>
#include <QRasterWindow>
#include <QVariantMap>
#include <utility>

namespace bare {

class Window::Impl : public QRasterWindow {
 public:
  std::function<void(int)> moved_;
  Happened painted_;

 protected:
  void mouseMoveEvent(QMouseEvent* event) override {
    if (moved_) moved_(event->globalPosition().toPoint().x());
  }
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(0, 0, width(), height(), Qt::white);
    painter.end();
    if (painted_) painted_();
  }
};

void movePointer(int x, int y) {
  QCursor::setPos(x, y);
}

void publish(int width, int height) {
  QDBusMessage signal = QDBusMessage::createSignal("/bare", "bare.Window", "frame");
  const QString frame = QString("{{100, 100}, {%1, %2}}").arg(width).arg(height);
  signal << QVariantMap{{"parentID", "main"}, {"parentFrame", frame}, {"isResized", "true"}};
  QDBusConnection::sessionBus().send(signal);
}

Window::Window(int x, int y, int width, int height, const Window* above) : impl_(std::make_unique<Impl>()) {
  impl_->setFlag(Qt::FramelessWindowHint);
  if (above) impl_->setTransientParent(above->impl_.get());
  impl_->setGeometry(x, y, width, height);
}

Window::~Window() = default;

void Window::onMoved(std::function<void(int x)> moved) {
  impl_->moved_ = std::move(moved);
}

void Window::onPainted(Happened painted) {
  impl_->painted_ = std::move(painted);
}

void Window::show() {
  impl_->show();
}

void Window::resize(int width, int height) {
  impl_->resize(width, height);
}

}  // namespace bare
