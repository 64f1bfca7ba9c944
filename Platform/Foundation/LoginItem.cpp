#include "Platform/Foundation/LoginItem.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

/// `text` with a backslash before each of `characters`.
std::string escaped(std::string_view text, std::string_view characters) {
  std::string result;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) result += '\\';
    result += character;
  }
  return result;
}

/// A value of type string (freedesktop.org desktop entries 1.5, "Possible value types").
std::string stringValue(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '\\':
        result += "\\\\";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\t':
        result += "\\t";
        break;
      default:
        result += character;
    }
  }
  return result;
}

/// A command line of one word (same place, "The Exec key"): quoted, and with no field codes in it.
std::string commandLine(std::string_view executable) {
  std::string withoutCodes;
  for (const char character : executable) withoutCodes += character == '%' ? "%%" : std::string(1, character);
  return '"' + escaped(withoutCodes, "\"`$\\") + '"';
}

std::string fileName(const LoginItem& item) {
  return item.identifier + ".desktop";
}

fs::path entryFile(const LoginItem& item) {
  return Session::current().backend().folders().config / "autostart" / fileName(item);
}

bool isThereForAllUsers(const LoginItem& item) {
  const auto& folders = Session::current().backend().folders().systemConfig;
  return std::ranges::any_of(folders, [&](const fs::path& folder) {
    return FileManager().fileExists((folder / "autostart" / fileName(item)).native());
  });
}

void writeEntry(const LoginItem& item, const std::string& rest) {
  const URL url = URL::fileURL(entryFile(item).native());
  FileManager().createParentDirectories(url);
  const std::string text = "[Desktop Entry]\nType=Application\nName=" + stringValue(item.name) + "\n" + rest;
  FileManager().writeAtomically(bytesOf(text), url);
}

bool isUTF8(const std::string& text) {
  return utf8(utf16(text)) == text;
}

}  // namespace

void setLoginItemEnabled(const LoginItem& item, bool enabled) {
  requireMainThread("setLoginItemEnabled");
  if (enabled) {
    if (!isUTF8(item.executable)) throw CocoaError(CocoaError::Code::fileWriteInvalidFileName, item.executable);
    return writeEntry(item, "Exec=" + stringValue(commandLine(item.executable)) + "\nTerminal=false\n");
  }
  // The user's entry overrules the system's of the same name; without one the system's would hold again.
  if (isThereForAllUsers(item)) return writeEntry(item, "Hidden=true\n");
  const URL url = URL::fileURL(entryFile(item).native());
  if (FileManager().isReachableItem(url)) FileManager().removeItem(url);
}

std::string mainExecutablePath() {
  std::error_code failure;
  std::string executable = fs::read_symlink("/proc/self/exe", failure).native();
  // An update has put another file in its place since, which is the one to be started.
  constexpr std::string_view kReplaced = " (deleted)";
  if (executable.ends_with(kReplaced)) executable.resize(executable.size() - kReplaced.size());
  const char* image = std::getenv("APPIMAGE");
  const char* mounted = std::getenv("APPDIR");
  // Both are inherited by whatever an AppImage starts, so they count only for a program from inside it.
  const bool isInImage = image && mounted && *mounted && executable.starts_with(std::string(mounted) + "/");
  return isInImage ? image : executable;
}

}  // namespace platform
