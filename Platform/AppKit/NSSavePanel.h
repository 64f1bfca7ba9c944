#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/NSPanel.h"
#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Port/FilePanels.h"

namespace platform {

/// Asks the user where to save, by the desktop's own dialog, which asks again before it lets a file be overwritten. A
/// window of the model all the same: it has a level, is key, and can be modal. Closed when it was answered; for one
/// use. Escape cancels it as long as the desktop's dialog leaves the keyboard to the application. Main thread.
class PLATFORM_EXPORT NSSavePanel : public NSPanel {
 public:
  static std::shared_ptr<NSSavePanel> make();

  /// A file's name in UTF-8 or any other bytes. What isn't a name, "." or one with "/", is made one.
  const std::string& nameFieldStringValue() const { return name_; }
  void setNameFieldStringValue(std::string name) { name_ = std::move(name); }
  /// Where the panel starts; nothing: where the desktop likes. To be set before the panel is shown.
  std::optional<URL> directoryURL() const { return directory_; }
  void setDirectoryURL(std::optional<URL> directory) { directory_ = std::move(directory); }
  /// What was chosen; nothing before, and on cancel.
  std::optional<URL> url() const;

  /// Shows the panel before the main window and returns. `completion` runs once, when the panel has closed, whatever
  /// closed it: `ModalResponse::kOK` when the user chose, else `kCancel`.
  void begin(std::function<void(int response)> completion);
  /// Shows the panel as a modal window and waits; `ModalResponse::kOK` or `kCancel`.
  int runModal();
  void cancel() { close(); }

  void keyDown(const EventPointer& event) override;

 protected:
  NSSavePanel();
  virtual port::FilePanelRequest request() const;
  const std::vector<URL>& chosen() const { return chosen_; }

  std::unique_ptr<port::Surface> makeSurface(port::SurfaceSink& sink, const port::SurfaceState& state) override;
  void didClose() override;

 private:
  void answered(const std::optional<std::vector<std::string>>& paths);

  std::string name_;
  std::optional<URL> directory_;
  std::vector<URL> chosen_;
  std::function<void(int)> completion_;
};

}  // namespace platform
