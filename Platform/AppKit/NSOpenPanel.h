#pragma once

#include <memory>
#include <vector>

#include "Platform/AppKit/NSSavePanel.h"

namespace platform {

/// Lets the user choose files that there are, or folders. Main thread.
class PLATFORM_EXPORT NSOpenPanel : public NSSavePanel {
 public:
  static std::shared_ptr<NSOpenPanel> make();

  void setAllowsMultipleSelection(bool allows) { multiple_ = allows; }
  /// A panel for folders shows no files: desktops know no dialog for both, so files win.
  void setCanChooseDirectories(bool can) { directories_ = can; }
  void setCanChooseFiles(bool can) { files_ = can; }
  /// In the dialog's order; none before an answer, and on cancel.
  const std::vector<URL>& urls() const { return chosen(); }

 protected:
  NSOpenPanel() = default;
  port::FilePanelRequest request() const override;

 private:
  bool multiple_ = false;
  bool directories_ = false;
  bool files_ = true;
};

}  // namespace platform
