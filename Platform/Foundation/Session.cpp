#include "Platform/Foundation/Session.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <utility>

#include "Platform/Foundation/RunLoop.h"

namespace platform {

namespace {

std::atomic<Session*> currentSession = nullptr;

}  // namespace

Session::Session(port::Backend& backend) : backend_(backend) {
  Session* none = nullptr;
  if (!currentSession.compare_exchange_strong(none, this)) throw std::logic_error("a second session at the same time");
  // Made now, so that any thread finds the queues.
  RunLoop::main();
}

Session::~Session() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  // The run loop is the first service and goes last; before each other one it lets go of whatever is pending by then.
  for (; services_.size() > 1; destroyNewestService()) RunLoop::main().shutDown();
  RunLoop::main().shutDown();
  destroyNewestService();
  currentSession = nullptr;
}

void Session::destroyNewestService() {
  // Destroyed outside the lock and while still listed: its destructor may ask for itself or for an older one.
  void* const address = services_.back().get();
  std::exchange(services_.back(), nullptr);
  const std::lock_guard lock(mutex_);
  services_.pop_back();
  std::erase_if(found_, [address](const auto& each) { return each.second == address; });
}

Session& Session::current() {
  Session* const session = currentSession;
  if (!session) throw std::logic_error("there is no session");
  return *session;
}

bool Session::exists() {
  return currentSession != nullptr;
}

void* Session::service(std::type_index type, const std::function<std::shared_ptr<void>()>& make) {
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = found_.find(type); found != found_.end()) return found->second;
    if (ending_) throw std::logic_error(std::string("the session is ending and has no more ") + type.name());
  }
  requireMainThread("making a service");
  std::shared_ptr<void> made = make();
  const std::lock_guard lock(mutex_);
  services_.push_back(made);
  return found_.insert_or_assign(type, made.get()).first->second;
}

bool isMainThread() {
  const Session* const session = currentSession;
  return !session || session->mainThread_ == std::this_thread::get_id();
}

void requireMainThread(const char* where) {
  if (!isMainThread()) throw std::logic_error(std::string(where) + " was called off the main thread");
}

}  // namespace platform
