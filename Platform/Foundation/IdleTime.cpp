#include "Platform/Foundation/IdleTime.h"

#include "Platform/Foundation/Session.h"

namespace platform {

std::optional<std::uint64_t> systemIdleNanoseconds() {
  if (!Session::exists() || !isMainThread()) return std::nullopt;
  auto* presence = Session::current().backend().presence();
  return presence ? presence->idleNanoseconds() : std::nullopt;
}

}  // namespace platform
