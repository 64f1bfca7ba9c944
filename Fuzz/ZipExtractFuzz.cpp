// Extracting from an archive of any bytes.

#include <cstdint>

#include "Tests/Zip/HostileExercises.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  hostile::extract({reinterpret_cast<const std::byte*>(bytes), size});
  return 0;
}
