#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Foundation/Progress.h"

namespace veltrik {

/// A part of the work on its own: a child of the whole, or nothing when nobody watches.
inline std::shared_ptr<platform::Progress> makeChild(platform::Progress* whole, std::int64_t units) {
  if (whole == nullptr) return nullptr;
  auto child = std::make_shared<platform::Progress>(units);
  whole->addChild(child, units);
  return child;
}

/// Ends the progress: work of no units at all would otherwise look as if it had not begun.
inline void finish(platform::Progress* progress) {
  if (progress == nullptr) return;
  if (progress->totalUnitCount() == 0) progress->setTotalUnitCount(1);
  progress->setCompletedUnitCount(progress->totalUnitCount());
}

}  // namespace veltrik
