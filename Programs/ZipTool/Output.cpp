#include "Programs/ZipTool/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "VeltrikAppKit/ArchiveError.h"

namespace ziptool {
namespace {

[[noreturn]] void fail() {
  veltrik::DataError error(veltrik::DataError::Case::unwritableFile, errno);
  error.addContext({}, "standard output");
  throw error;
}

}  // namespace

void print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) fail();
}

void flushOutput() {
  if (std::fflush(stdout) != 0) fail();
}

bool outputIsTerminal() {
  static const bool terminal = ::isatty(STDOUT_FILENO) == 1;
  return terminal;
}

}  // namespace ziptool
