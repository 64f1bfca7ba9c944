#include "Backends/Desktop/DesktopClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <memory>

namespace desktop {

namespace {

constexpr const char* kUtf8Text = "text/plain;charset=utf-8";

bool isText(const std::string& type) {
  return type.starts_with("text/plain");
}

}  // namespace

std::vector<std::string> DesktopClipboard::types() const {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (!data) return {};
  std::vector<std::string> types;
  if (data->hasText()) types.emplace_back(kUtf8Text);
  for (const QString& format : data->formats())
    if (std::string type = format.toStdString(); !isText(type)) types.push_back(std::move(type));
  return types;
}

std::optional<std::string> DesktopClipboard::read(const std::string& type) const {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (!data) return std::nullopt;
  if (isText(type)) return data->hasText() ? std::optional(data->text().toStdString()) : std::nullopt;
  const QString format = QString::fromStdString(type);
  return data->hasFormat(format) ? std::optional(data->data(format).toStdString()) : std::nullopt;
}

void DesktopClipboard::write(const std::map<std::string, std::string>& contents) {
  auto data = std::make_unique<QMimeData>();
  for (const auto& [type, bytes] : contents) {
    if (isText(type))
      data->setText(QString::fromStdString(bytes));
    else
      data->setData(QString::fromStdString(type), QByteArray::fromStdString(bytes));
  }
  QGuiApplication::clipboard()->setMimeData(data.release());
}

}  // namespace desktop
