#pragma once

namespace desktop {

/// Sees to it that the toolkit uses an icon theme that has pictures of files: the one it found by itself, else the one
/// that the user chose for other toolkits, else whichever is installed. Looks once.
void ensureIconTheme();

}  // namespace desktop
