// Opening what may be an archive.

#include <cstdint>

#include "Tests/Zip/HostileExercises.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  hostile::open({reinterpret_cast<const std::byte*>(bytes), size});
  return 0;
}
