#pragma once

#include <cstdlib>
#include <memory>

namespace desktop {

template <class T>
struct Freed {
  void operator()(T* reply) const { std::free(reply); }
};

/// A reply of the X server, or an event, freed with it; null after an error.
template <class T>
using XReply = std::unique_ptr<T, Freed<T>>;

template <class T>
XReply<T> owned(T* reply) {
  return XReply<T>(reply);
}

}  // namespace desktop
