#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <typeindex>
#include <unordered_map>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/Backend.h"

namespace platform {

/// The process's connection to its machine, and the owner of all process-wide services (main run loop, application,
/// notification centres, defaults…), each made at its first use and destroyed in reverse order with the session.
/// Pending blocks and timers are dropped before the first service goes, so what they hold still finds all services. A
/// program makes one session for its lifetime; a test makes a new one a case. Main thread.
class PLATFORM_EXPORT Session {
 public:
  /// `backend` is borrowed and outlives the session. There is one session at a time; a second one throws
  /// std::logic_error.
  explicit Session(port::Backend& backend);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Throws std::logic_error when there is no session. Any thread.
  static Session& current();
  static bool exists();

  port::Backend& backend() { return backend_; }

  /// The session's service of a type; `T` needs a constructor without arguments that `Session` may call.
  /// A service that stands is found from any thread; made on the main thread only. Throws std::logic_error for one that
  /// the ending session has destroyed already. Only use it in the library that exports `T`.
  template <class T>
  T& service() {
    return *static_cast<T*>(service(typeid(T), [] { return std::shared_ptr<void>(std::make_shared<T>()); }));
  }

 private:
  void destroyNewestService();
  void* service(std::type_index type, const std::function<std::shared_ptr<void>()>& make);

  friend bool isMainThread();

  port::Backend& backend_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::mutex mutex_;  // guards the two below; not held while a service is made or destroyed
  std::unordered_map<std::type_index, void*> found_;
  std::vector<std::shared_ptr<void>> services_;
  bool ending_ = false;
};

/// True on the thread that made the session, and while there is none.
PLATFORM_EXPORT bool isMainThread();

/// Throws std::logic_error when called off the thread that made the session; `where` is the operation's name. Nothing
/// without a session.
PLATFORM_EXPORT void requireMainThread(const char* where);

}  // namespace platform
