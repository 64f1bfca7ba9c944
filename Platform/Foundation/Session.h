#pragma once

#include <functional>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/Backend.h"

namespace platform {

/// The process's connection to its machine, and the owner of all process-wide services (main run loop, application,
/// notification centres, defaults…), each made at its first use and destroyed in reverse order with the session.
/// A program makes one session for its lifetime; a test makes a new one a case. Main thread.
class PLATFORM_EXPORT Session {
 public:
  /// `backend` is borrowed and outlives the session. There is one session at a time; a second one throws std::logic_error.
  explicit Session(port::Backend& backend);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Throws std::logic_error when there is no session.
  static Session& current();
  static bool exists();

  port::Backend& backend() { return backend_; }

  /// The session's service of a type; `T` needs a constructor without arguments that `Session` may call.
  /// Not templated across the library border by accident: only use it in the library that exports `T`.
  template <class T>
  T& service() {
    return *static_cast<T*>(service(typeid(T), [] { return std::shared_ptr<void>(std::make_shared<T>()); }));
  }

 private:
  void* service(std::type_index type, const std::function<std::shared_ptr<void>()>& make);

  port::Backend& backend_;
  std::unordered_map<std::type_index, void*> found_;
  std::vector<std::shared_ptr<void>> services_;
};

/// Throws std::logic_error when called off the thread that made the session; `where` is the operation's name.
PLATFORM_EXPORT void requireMainThread(const char* where);

}  // namespace platform
