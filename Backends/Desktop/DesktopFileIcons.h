#pragma once

#include <QMimeDatabase>

#include "Platform/Port/FileIcons.h"

namespace desktop {

/// Icons of the desktop's theme (freedesktop.org icon themes) for types of the shared MIME database.
class DesktopFileIcons final : public platform::port::FileIcons {
 public:
  std::optional<platform::Bitmap> icon(const platform::port::FileType& type, int side) override;

 private:
  QMimeType mimeType(const platform::port::FileType& type) const;

  QMimeDatabase database_;
};

}  // namespace desktop
