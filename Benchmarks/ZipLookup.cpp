// Lists an archive and looks every one of its paths up, over the public interface: what scripts/benchmark-zip times
// against another library's way of doing the same.

#include <cstdio>
#include <string>
#include <vector>

#include "VeltrikAppKit/Archive.h"

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: zip-lookup ARCHIVE\n", stderr);
    return 2;
  }
  const auto archive = veltrik::Archive::open(platform::URL::fileURL(arguments[1]));
  if (!archive) return 1;
  std::vector<std::string> paths;
  for (const auto& entry : *archive) paths.push_back(entry.path());
  for (const auto& path : paths) {
    if (!(*archive)[path]) return 1;
  }
  return 0;
}
