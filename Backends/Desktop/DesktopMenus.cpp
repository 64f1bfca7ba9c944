#include "Backends/Desktop/DesktopMenus.h"

#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QImage>
#include <QMenu>
#include <QMouseEvent>
#include <QPixmap>
#include <algorithm>

#include "Backends/Desktop/Coordinates.h"
#include "Backends/Desktop/Pictures.h"
#include "Backends/Desktop/ToolkitBus.h"

namespace desktop {

using platform::Bitmap;
using platform::port::MenuEntry;
using platform::port::MenuMark;

namespace {

/// A hand that presses a button isn't still; the toolkit takes some such moves for the wish to choose.
constexpr int kTremblingPixels = 10;

/// Swallows the release of the press that opened the menu, unless the pointer was dragged to an item on purpose.
class OpeningRelease final : public QObject {
 public:
  OpeningRelease() : pressedAt_(QCursor::pos()), pending_(QApplication::mouseButtons() != Qt::NoButton) {}

  bool eventFilter(QObject*, QEvent* event) override {
    if (!pending_) return false;
    if (event->type() == QEvent::MouseButtonPress) pending_ = false;
    if (event->type() != QEvent::MouseButtonRelease) return false;
    pending_ = false;
    const QPoint moved = static_cast<const QMouseEvent*>(event)->globalPosition().toPoint() - pressedAt_;
    return moved.manhattanLength() <= std::max(kTremblingPixels, QApplication::startDragDistance());
  }

 private:
  QPoint pressedAt_;
  bool pending_;
};

QString shortcutText(const MenuEntry& entry) {
  if (entry.keyEquivalent.empty()) return {};
  constexpr std::pair<std::uint64_t, const char*> kNames[] = {
      {0x40000, "Ctrl+"}, {0x80000, "Alt+"}, {0x20000, "Shift+"}, {0x100000, "Super+"}};
  QString text;
  for (const auto& [flag, name] : kNames)
    if (entry.modifiers & flag) text += QLatin1String(name);
  return text + QString::fromStdString(entry.keyEquivalent).toUpper();
}

/// The title as it is: the toolkit would take "&" for a mark of its own, and a tab for the start of the shortcut.
QString textOf(const MenuEntry& entry) {
  QString text = QString::fromStdString(entry.title);
  for (QChar& unit : text)
    if (unit == QLatin1Char('\t') || unit == QLatin1Char('\n') || unit == QLatin1Char('\r')) unit = QLatin1Char(' ');
  text.replace(QLatin1Char('&'), QLatin1String("&&"));
  if (entry.mark == MenuMark::dash) text.prepend(QStringLiteral("\u2013 "));
  const QString shortcut = shortcutText(entry);
  return shortcut.isEmpty() ? text : text + QLatin1Char('\t') + shortcut;
}

QIcon iconOf(const Bitmap& bitmap) {
  QImage image(reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.width, bitmap.height,
               QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(bitmap.scale);
  return QIcon(QPixmap::fromImage(image));
}

void fill(QMenu& menu, const std::vector<MenuEntry>& entries) {
  for (const MenuEntry& entry : entries) {
    if (entry.separator) {
      menu.addSeparator();
      continue;
    }
    QAction* action = nullptr;
    if (entry.children.empty()) {
      action = menu.addAction(textOf(entry));
      action->setData(QVariant::fromValue<qulonglong>(entry.number));
    } else {
      QMenu* below = menu.addMenu(textOf(entry));
      fill(*below, entry.children);
      action = below->menuAction();
    }
    action->setEnabled(entry.enabled);
    action->setCheckable(entry.mark == MenuMark::check);
    action->setChecked(entry.mark == MenuMark::check);
    if (entry.image && entry.image->width > 0 && entry.image->height > 0) action->setIcon(iconOf(*entry.image));
  }
}

}  // namespace

std::optional<std::size_t> DesktopMenus::popUp(const std::vector<MenuEntry>& entries,
                                               const std::function<platform::Point(platform::Size)>& place) {
  keepToolkitFromHangingBus(bus_);
  QMenu menu;
  fill(menu, entries);
  const QSize size = menu.sizeHint();
  const platform::Point topLeft = place({static_cast<double>(size.width()), static_cast<double>(size.height())});
  const QPoint at = toToolkit({topLeft.x, topLeft.y, 0, 0}).topLeft();
  OpeningRelease release;
  menu.installEventFilter(&release);

  struct Stack {
    std::vector<QMenu*>& stack;
    Stack(std::vector<QMenu*>& all, QMenu* newest) : stack(all) { stack.push_back(newest); }
    ~Stack() { stack.pop_back(); }
  } stack(open_, &menu);
  const QAction* chosen = menu.exec(at);
  return chosen ? std::optional<std::size_t>(chosen->data().toULongLong()) : std::nullopt;
}

void DesktopMenus::closeMenus() {
  for (QMenu* menu : std::vector(open_)) menu->close();
}

std::optional<Bitmap> DesktopMenus::snapshot() {
  if (open_.empty() || !open_.back()->isVisible()) return std::nullopt;
  return bitmapOf(open_.back()->grab().toImage());
}

}  // namespace desktop
