#pragma once

#include <string>

#include "Backends/Desktop/ProgramStarter.h"
#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/FileOpener.h"

namespace desktop {

/// Opens files by the desktop's own opener and shows them by its file manager, each with the desktop portal to fall
/// back on.
class DesktopFileOpener final : public platform::port::FileOpener {
 public:
  /// Borrowed; outlives this.
  explicit DesktopFileOpener(SessionBus& bus) : bus_(bus) {}

  void open(const std::string& path, Completion completion) override;
  void reveal(const std::string& path, Completion completion) override;

 private:
  void askPortal(const char* member, const std::string& path, SessionBus::Completion completion);

  SessionBus& bus_;
  ProgramStarter programs_;
};

}  // namespace desktop
