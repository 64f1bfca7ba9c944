#pragma once

#include "VeltrikAppKit/DeflateEngine.h"

namespace veltrik {

/// Null where ISA-L is not built in.
std::unique_ptr<DeflateEngine> makeISALEngine(DeflateDirection direction);
std::unique_ptr<DeflateEngine> makeZlibEngine(DeflateDirection direction);

}  // namespace veltrik
