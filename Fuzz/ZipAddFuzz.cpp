// Adding to an archive of any bytes, and undoing what fails.

#include <cstdint>

#include "Tests/Zip/HostileExercises.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  hostile::add({reinterpret_cast<const std::byte*>(bytes), size});
  return 0;
}
