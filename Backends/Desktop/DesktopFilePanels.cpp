#include "Backends/Desktop/DesktopFilePanels.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <algorithm>
#include <utility>

#include "Backends/Desktop/FilePanelSurface.h"

namespace desktop {

using platform::port::FilePanelRequest;
using platform::port::Surface;
using platform::port::SurfaceSink;
using platform::port::SurfaceState;

std::unique_ptr<Surface> DesktopFilePanels::makePanel(SurfaceSink& sink, const SurfaceState& state,
                                                      const FilePanelRequest& request, Answer answered) {
  if (!std::exchange(watches_, true)) watchPortal();
  return std::make_unique<FilePanelSurface>(*this, sink, state, request, std::move(answered));
}

void DesktopFilePanels::watchPortal() {
  bus_.watchOwner(PortalFileChooser::kService, [this](const std::string& owner) { ownerChanged(owner); });
}

void DesktopFilePanels::ownerChanged(const std::string& owner) {
  const std::string former = std::exchange(owner_, owner);
  if (owner == former) return;
  portalHangs_ = false;
  if (former.empty()) return;
  for (FilePanelSurface* panel : std::vector(shown_))
    if (std::count(shown_.begin(), shown_.end(), panel)) panel->portalLeft();
}

void DesktopFilePanels::loadTranslation() {
  static QTranslator* const translator = [] {
    auto* const loaded = new QTranslator(QCoreApplication::instance());
    if (loaded->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
      QCoreApplication::installTranslator(loaded);
    return loaded;
  }();
  static_cast<void>(translator);
}

}  // namespace desktop
