#pragma once

#include <filesystem>

#include "Platform/Port/Applications.h"
#include "Platform/Port/Broadcast.h"
#include "Platform/Port/Clipboard.h"
#include "Platform/Port/LoopDriver.h"
#include "Platform/Port/Text.h"
#include "Platform/Port/WindowHost.h"

namespace platform::port {

/// The user's folders, as the XDG base directories name them.
struct Folders {
  std::filesystem::path home;
  std::filesystem::path config;
  std::filesystem::path data;
  std::filesystem::path cache;
};

/// What a machine provides, and the owner of it all. A capability that a machine lacks is a null getter.
class Backend {
 public:
  virtual ~Backend() = default;
  virtual LoopDriver& loop() = 0;
  virtual WindowHost& windows() = 0;
  virtual TextMeasure& text() = 0;
  virtual Clipboard& clipboard() = 0;
  virtual Broadcast* broadcast() { return nullptr; }
  virtual Applications* applications() { return nullptr; }
  virtual const Folders& folders() const = 0;
};

}  // namespace platform::port
