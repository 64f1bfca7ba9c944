#include "VeltrikAppKit/DeflateEngine.h"

#include "VeltrikAppKit/DeflateEngines.h"

namespace veltrik {

DeflateLibrary preferredDeflateLibrary() {
#ifdef HAVE_ISAL
  return DeflateLibrary::isal;
#else
  return DeflateLibrary::zlib;
#endif
}

std::unique_ptr<DeflateEngine> makeDeflateEngine(DeflateDirection direction, DeflateLibrary library) {
  return library == DeflateLibrary::isal ? makeISALEngine(direction) : makeZlibEngine(direction);
}

}  // namespace veltrik
