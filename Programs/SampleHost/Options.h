#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace samplehost {

enum class Mode { messenger, tour, console, makeUpdate, help };

/// What the command line asks for.
struct Options {
  Mode mode = Mode::messenger;
  std::optional<std::string> backend;
  std::optional<std::filesystem::path> bundle;
  /// Where the tour writes its transcript and pictures; nothing: the transcript to standard output only.
  std::optional<std::filesystem::path> out;

  /// The update that the messenger installs as soon as it stands; an absolute path or a file URL.
  std::optional<std::string> update;
  /// For `makeUpdate`: the version that the update has, and the archive to make.
  std::string version;
  std::filesystem::path archive;

  /// Whether the messenger says on standard output that its window has been painted, for measuring.
  bool saysPainted = false;

  /// `arguments` without the program's name. Throws std::runtime_error for what it doesn't know.
  static Options parse(std::span<char* const> arguments);
  static const char* usage();
};

}  // namespace samplehost
