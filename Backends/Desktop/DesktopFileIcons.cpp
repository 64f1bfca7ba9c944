#include "Backends/Desktop/DesktopFileIcons.h"

#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QStringList>

#include "Backends/Desktop/IconTheme.h"
#include "Backends/Desktop/Pictures.h"

namespace desktop {

using platform::Bitmap;
using platform::port::FileType;

namespace {

/// From the type's own icon to the most general one that still tells something.
QIcon iconOf(const QMimeType& type, const QMimeDatabase& database) {
  QStringList names{type.iconName()};
  for (const QString& ancestor : type.allAncestors()) names << database.mimeTypeForName(ancestor).iconName();
  names << type.genericIconName();
  for (const QString& name : names)
    if (QIcon::hasThemeIcon(name)) return QIcon::fromTheme(name);
  return {};
}

/// Themes have some sizes only, so the picture is fitted into the square.
QImage drawn(const QIcon& icon, int side) {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  const QPixmap pixmap = icon.pixmap(QSize(side, side), 1.0);
  if (pixmap.isNull()) return {};
  const QSize fitted = pixmap.size().scaled(side, side, Qt::KeepAspectRatio);
  const QRect place(QPoint((side - fitted.width()) / 2, (side - fitted.height()) / 2), fitted);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawPixmap(place, pixmap);
  return image;
}

}  // namespace

QMimeType DesktopFileIcons::mimeType(const FileType& type) const {
  if (!type.mimeType.empty()) return database_.mimeTypeForName(QString::fromStdString(type.mimeType));
  const QString name = "file." + QString::fromStdString(type.extension);
  return database_.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
}

std::optional<Bitmap> DesktopFileIcons::icon(const FileType& type, int side) {
  ensureIconTheme();
  const QMimeType found = mimeType(type);
  if (!found.isValid() || found.isDefault()) return std::nullopt;
  const QImage image = drawn(iconOf(found, database_), side);
  if (image.isNull()) return std::nullopt;
  return bitmapOf(image);
}

}  // namespace desktop
