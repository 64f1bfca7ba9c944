#include "Backends/Desktop/DesktopClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <algorithm>
#include <array>
#include <memory>

#include "Backends/Desktop/FileTransfer.h"

namespace desktop {

namespace {

constexpr const char* kSelection = "CLIPBOARD";
constexpr const char* kUtf8Text = "text/plain;charset=utf-8";
/// The names of text in UTF-8, the surest first, and then of Latin-1.
constexpr std::array<const char*, 4> kTextTargets = {kUtf8Text, "UTF8_STRING", "text/plain", "STRING"};
constexpr std::string_view kLatin1Target = "STRING";

bool isText(const std::string& type) {
  return type.starts_with("text/plain");
}

bool isTextTarget(const std::string& target) {
  return std::ranges::find(kTextTargets, target) != kTextTargets.end();
}

/// What this process put there itself; null when somebody else owns the clipboard.
const QMimeData* ownContents() {
  const QClipboard* clipboard = QGuiApplication::clipboard();
  return clipboard->ownsClipboard() ? clipboard->mimeData() : nullptr;
}

std::vector<std::string> namesOf(const QMimeData& data) {
  std::vector<std::string> names;
  for (const QString& format : data.formats()) names.push_back(format.toStdString());
  return names;
}

std::optional<std::string> textOf(SelectionReader& reader) {
  const auto offered = reader.targets(kSelection);
  for (const std::string target : kTextTargets) {
    if (std::ranges::find(offered, target) == offered.end()) continue;
    auto text = reader.read(kSelection, target, XCB_CURRENT_TIME);
    if (text && target == kLatin1Target)
      return QString::fromLatin1(text->data(), static_cast<int>(text->size())).toStdString();
    if (text) return text;
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> DesktopClipboard::types() const {
  const QMimeData* own = ownContents();
  std::vector<std::string> types;
  for (std::string& target : own ? namesOf(*own) : reader_.targets(kSelection)) {
    if (!isTextTarget(target) && !isText(target))
      types.push_back(std::move(target));
    else if (types.empty() || types.front() != kUtf8Text)
      types.insert(types.begin(), kUtf8Text);
  }
  return withTransferredList(std::move(types));
}

std::optional<std::string> DesktopClipboard::read(const std::string& type) const {
  const QMimeData* own = ownContents();
  if (!own && isText(type)) return textOf(reader_);
  if (!own)
    return readWithTransfer(type, reader_.targets(kSelection),
                            [this](const auto& each) { return reader_.read(kSelection, each, XCB_CURRENT_TIME); });
  if (isText(type)) return own->hasText() ? std::optional(own->text().toStdString()) : std::nullopt;
  const QString format = QString::fromStdString(type);
  return own->hasFormat(format) ? std::optional(own->data(format).toStdString()) : std::nullopt;
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
