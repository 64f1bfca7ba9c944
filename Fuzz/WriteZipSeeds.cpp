// Writes the archives that fuzzing starts from into a folder: sound ones of every shape, and some that mean harm.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Tests/Zip/HostileArchives.h"

namespace {

// Longer inputs only slow the fuzzer down.
constexpr std::size_t kLongestSeed = 4096;

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: WriteZipSeeds FOLDER\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = arguments[1];
  std::filesystem::create_directories(folder);
  auto specimens = hostile::soundArchives();
  for (auto& specimen : hostile::archivesThatMeanHarm("/outside")) specimens.push_back(std::move(specimen));
  std::size_t number = 0;
  for (const auto& [name, bytes] : specimens) {
    if (bytes.size() > kLongestSeed) continue;
    std::ofstream seed(folder / (std::to_string(number++) + ".zip"), std::ios::binary);
    seed.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!seed.flush()) return 1;
  }
  return 0;
}
