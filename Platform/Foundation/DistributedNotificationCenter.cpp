#include "Platform/Foundation/DistributedNotificationCenter.h"

#include <optional>

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

namespace {

constexpr std::size_t kCostOfAValue = 16;

/// Measures a payload while it checks it; stops at the first thing that may not cross.
class PayloadCheck {
 public:
  /// The size in bytes; nothing when the payload may not cross between processes.
  static std::optional<std::size_t> size(const Dictionary& payload) {
    PayloadCheck check;
    if (!check.fits(Value(payload), 0)) return std::nullopt;
    return check.size_;
  }

 private:
  bool add(std::size_t bytes) {
    if (bytes > DistributedNotificationCenter::kLargestPayload - size_) return false;
    size_ += bytes;
    return true;
  }
  bool fits(const Value& value, int depth) {
    if (value.isNull() || depth > DistributedNotificationCenter::kDeepestPayload || !add(kCostOfAValue)) return false;
    if (const auto* text = value.get<std::string>()) return add(text->size());
    if (const auto* array = value.get<Value::Array>()) {
      for (const Value& each : *array)
        if (!fits(each, depth + 1)) return false;
    } else if (const auto* dictionary = value.get<Dictionary>()) {
      for (const auto& [key, each] : *dictionary)
        if (!add(key.size()) || !fits(each, depth + 1)) return false;
    }
    return true;
  }
  std::size_t size_ = 0;
};

std::string wellFormed(const std::string& text) {
  return utf8(utf16(text));
}

Value wellFormed(const Value& value) {
  if (const auto* text = value.get<std::string>()) return wellFormed(*text);
  if (const auto* array = value.get<Value::Array>()) {
    Value::Array result;
    for (const Value& each : *array) result.push_back(wellFormed(each));
    return result;
  }
  if (const auto* dictionary = value.get<Dictionary>()) {
    Dictionary result;
    for (const auto& [key, each] : *dictionary) result.insert_or_assign(wellFormed(key), wellFormed(each));
    return result;
  }
  return value;
}

}  // namespace

struct DistributedNotificationCenter::Entry {
  const void* observer;
  std::string name;
  std::string object;
  Handler handler;
  bool removed = false;
};

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
  return Session::current().service<DistributedNotificationCenter>();
}

DistributedNotificationCenter::DistributedNotificationCenter() {
  if (port::Broadcast* const broadcast = Session::current().backend().broadcast())
    broadcast->setReceiver([this](const std::string& name, const std::string& object, const Dictionary& userInfo) {
      receive(name, object, userInfo);
    });
}

DistributedNotificationCenter::~DistributedNotificationCenter() {
  if (port::Broadcast* const broadcast = Session::current().backend().broadcast()) broadcast->setReceiver(nullptr);
}

void DistributedNotificationCenter::post(const std::string& name, const std::string& object, const Dictionary& userInfo,
                                         unsigned /*options*/) {
  requireMainThread("DistributedNotificationCenter::post");
  DispatchQueue::main().async([this, name, object, userInfo] { deliver(name, object, userInfo); });
  port::Broadcast* const broadcast = Session::current().backend().broadcast();
  if (!PayloadCheck::size(userInfo))
    NSLog("Notification " + name + " stays in this process: its payload is too large or may not cross");
  else if (broadcast && !broadcast->post(wellFormed(name), wellFormed(object), *wellFormed(userInfo).get<Dictionary>()))
    NSLog("Notification " + name + " stays in this process: there is no way to the others");
  if (const auto observer = postObserver_) observer(name, object, userInfo);
}

void DistributedNotificationCenter::addObserver(const void* observer, const std::string& name,
                                                const std::string& object, unsigned /*suspension*/, Handler handler) {
  requireMainThread("DistributedNotificationCenter::addObserver");
  entries_.push_back(std::make_shared<Entry>(Entry{observer, name, object, std::move(handler)}));
  if (port::Broadcast* const broadcast = Session::current().backend().broadcast()) broadcast->observe(name);
}

void DistributedNotificationCenter::removeObserver(const void* observer) {
  requireMainThread("DistributedNotificationCenter::removeObserver");
  for (const auto& entry : entries_)
    if (entry->observer == observer) entry->removed = true;
  std::erase_if(entries_, [](const auto& entry) { return entry->removed; });
}

void DistributedNotificationCenter::receive(const std::string& name, const std::string& object,
                                            const Dictionary& userInfo) {
  const auto size = PayloadCheck::size(userInfo);
  if (!size || wellFormed(Value(userInfo)) != Value(userInfo))
    return NSLog("Notification " + wellFormed(name) + " from another process is dropped: its payload may not be");
  if (pending_ >= kMostPending || *size > kMostPendingBytes - pendingBytes_) {
    if (!std::exchange(dropping_, true)) NSLog("Notifications from other processes come too fast: some are dropped");
    return;
  }
  ++pending_;
  pendingBytes_ += *size;
  DispatchQueue::main().async([this, name, object, userInfo, size = *size] {
    pendingBytes_ -= size;
    if (--pending_ == 0) dropping_ = false;
    deliver(name, object, userInfo);
  });
}

void DistributedNotificationCenter::deliver(const std::string& name, const std::string& object,
                                            const Dictionary& userInfo) {
  const auto snapshot = entries_;
  for (const auto& entry : snapshot) {
    const bool fits = entry->name == name && (entry->object.empty() || entry->object == object);
    if (fits && !entry->removed) entry->handler(name, userInfo);
  }
}

}  // namespace platform
