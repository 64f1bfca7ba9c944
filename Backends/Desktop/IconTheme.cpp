#include "Backends/Desktop/IconTheme.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

namespace desktop {

namespace {

constexpr const char* kEveryThemeHasIt = "text-x-generic";

QString setting(const QString& file, const QString& key) {
  const QString path = QStandardPaths::locate(QStandardPaths::GenericConfigLocation, file);
  return path.isEmpty() ? QString() : QSettings(path, QSettings::IniFormat).value(key).toString();
}

QStringList chosenThemes() {
  return {QIcon::themeName(), setting("kdeglobals", "Icons/Theme"),
          setting("gtk-4.0/settings.ini", "Settings/gtk-icon-theme-name"),
          setting("gtk-3.0/settings.ini", "Settings/gtk-icon-theme-name")};
}

QStringList installedThemes() {
  QStringList themes{"Adwaita", "breeze"};
  for (const QString& folder : QIcon::themeSearchPaths())
    themes << QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
  return themes;
}

bool use(const QString& theme) {
  if (theme.isEmpty()) return false;
  QIcon::setThemeName(theme);
  return QIcon::hasThemeIcon(kEveryThemeHasIt);
}

void choose() {
  const QString former = QIcon::themeName();
  for (const QString& theme : chosenThemes() + installedThemes())
    if (use(theme)) return;
  QIcon::setThemeName(former);
}

}  // namespace

void ensureIconTheme() {
  [[maybe_unused]] static const bool chosen = (choose(), true);
}

}  // namespace desktop
