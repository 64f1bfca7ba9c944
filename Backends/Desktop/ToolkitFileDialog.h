#pragma once

#include <QFileDialog>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Port/FilePanels.h"

class QLineEdit;

namespace desktop {

/// The toolkit's own file dialog, but with every name that the file system takes: the toolkit reads quotes as marks
/// between names and "~" as a home.
class ToolkitFileDialog final : public QFileDialog {
 public:
  explicit ToolkitFileDialog(const platform::port::FilePanelRequest& request);

  /// What the user has chosen; nothing when the dialog was left.
  std::optional<std::vector<std::string>> chosen() const;

 protected:
  void accept() override;

 private:
  bool takeTypedName();
  bool takeSelectedRows();
  void askToOverwrite(const std::string& path);
  void finish(std::vector<std::string> paths);

  QLineEdit* nameField_;
  std::string proposedName_;
  QString shownName_;  ///< how the proposed name stands in the field
  std::vector<std::string> paths_;
};

}  // namespace desktop
