#include "Backends/Desktop/ToolkitFileDialog.h"

#include <QAbstractItemView>
#include <QFile>
#include <QFileSystemModel>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMessageBox>
#include <filesystem>
#include <system_error>
#include <utility>

namespace desktop {

using platform::port::FilePanelRequest;

namespace {

namespace fs = std::filesystem;

constexpr QSize kSize{720, 480};

std::string bytesOf(const QString& path) {
  return QFile::encodeName(path).toStdString();
}

/// What stands before the last ".", which is what the user most likely changes.
int stemLength(const QString& name) {
  const auto dot = name.lastIndexOf(QLatin1Char('.'));
  return static_cast<int>(dot > 0 ? dot : name.size());
}

}  // namespace

ToolkitFileDialog::ToolkitFileDialog(const FilePanelRequest& request) : proposedName_(request.name) {
  setOption(DontUseNativeDialog);
  if (!request.directory.empty()) setDirectory(QFile::decodeName(QByteArray::fromStdString(request.directory)));
  switch (request.kind) {
    case FilePanelRequest::Kind::save:
      setAcceptMode(AcceptSave);
      setFileMode(AnyFile);
      break;
    case FilePanelRequest::Kind::open:
      setFileMode(request.multiple ? ExistingFiles : ExistingFile);
      break;
    case FilePanelRequest::Kind::openFolder:
      setFileMode(Directory);
      setOption(ShowDirsOnly);
      break;
  }
  resize(kSize);
  nameField_ = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  if (request.kind != FilePanelRequest::Kind::save) return;
  nameField_->setText(QFile::decodeName(QByteArray::fromStdString(request.name)));
  shownName_ = nameField_->text();
  nameField_->setSelection(0, stemLength(shownName_));
}

std::optional<std::vector<std::string>> ToolkitFileDialog::chosen() const {
  if (result() != Accepted) return std::nullopt;
  if (!paths_.empty()) return paths_;
  std::vector<std::string> paths;
  for (const QString& path : selectedFiles()) paths.push_back(bytesOf(path));
  return paths.empty() ? std::nullopt : std::optional(std::move(paths));
}

void ToolkitFileDialog::accept() {
  const bool taken = acceptMode() == AcceptSave ? takeTypedName() : takeSelectedRows();
  if (!taken) QFileDialog::accept();
}

/// False for what isn't a name: a path, or a folder to go into.
bool ToolkitFileDialog::takeTypedName() {
  const QString typed = nameField_->text();
  const std::string name = typed == shownName_ ? proposedName_ : bytesOf(typed);
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) return false;
  const fs::path path = fs::path(bytesOf(directory().absolutePath())) / name;
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return false;
  if (fs::exists(fs::symlink_status(path, ignored)))
    askToOverwrite(path.native());
  else
    finish({path.native()});
  return true;
}

void ToolkitFileDialog::askToOverwrite(const std::string& path) {
  const QString name = QFile::decodeName(QByteArray::fromStdString(fs::path(path).filename().native()));
  auto* const question = new QMessageBox(QMessageBox::Warning, windowTitle(),
                                         QFileDialog::tr("%1 already exists.\nDo you want to replace it?").arg(name),
                                         QMessageBox::Yes | QMessageBox::No, this);
  question->setTextFormat(Qt::PlainText);
  question->setDefaultButton(QMessageBox::No);
  question->setAttribute(Qt::WA_DeleteOnClose);
  connect(question, &QDialog::finished, this, [this, path](int answer) {
    if (answer == QMessageBox::Yes) finish({path});
  });
  question->open();
}

/// Files that are marked in the list and stand in the name field as they are there.
bool ToolkitFileDialog::takeSelectedRows() {
  const auto* list = findChild<QAbstractItemView*>(QStringLiteral("listView"));
  std::vector<std::string> paths;
  QStringList names;
  for (const QModelIndex& row : list->selectionModel()->selectedRows()) {
    const QString path = row.data(QFileSystemModel::FilePathRole).toString();
    names.append(row.data().toString());
    paths.push_back(bytesOf(path));
    std::error_code ignored;
    if (fs::is_directory(paths.back(), ignored)) return false;
  }
  const QString one = names.value(0),
                several = QLatin1Char('"') + names.join(QStringLiteral("\" \"")) + QLatin1Char('"');
  if (paths.empty() || nameField_->text() != (names.size() == 1 ? one : several)) return false;
  finish(std::move(paths));
  return true;
}

void ToolkitFileDialog::finish(std::vector<std::string> paths) {
  paths_ = std::move(paths);
  done(Accepted);
}

}  // namespace desktop
