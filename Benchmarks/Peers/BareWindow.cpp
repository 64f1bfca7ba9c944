// The least a Qt program needs to show a window: what start-up is measured against. Prints "painted" after its first
// paint.

#include <QApplication>
#include <QPainter>
#include <QRasterWindow>
#include <cstdio>

namespace {

class BareWindow : public QRasterWindow {
 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(0, 0, width(), height(), Qt::white);
    painter.drawText(20, 40, QStringLiteral("안녕하세요"));
    if (painted_) return;
    painted_ = true;
    std::puts("painted");
    std::fflush(stdout);
  }

 private:
  bool painted_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  BareWindow window;
  window.setFlag(Qt::FramelessWindowHint);
  window.setGeometry(100, 100, 900, 640);
  window.show();
  return QApplication::exec();
}
