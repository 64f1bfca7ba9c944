#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Foundation/Session.h"

namespace platform {

struct NotificationCenter::Entry {
  const void* observer;
  std::string name;
  const void* object;
  Handler handler;
  bool removed = false;
};

NotificationCenter& NotificationCenter::defaultCenter() {
  return Session::current().service<NotificationCenter>();
}

void NotificationCenter::addObserver(const void* observer, const std::string& name, const void* object,
                                     Handler handler) {
  requireMainThread("NotificationCenter::addObserver");
  entries_.push_back(std::make_shared<Entry>(Entry{observer, name, object, std::move(handler)}));
}

void NotificationCenter::removeObserver(const void* observer) {
  requireMainThread("NotificationCenter::removeObserver");
  for (const auto& entry : entries_)
    if (entry->observer == observer) entry->removed = true;
  std::erase_if(entries_, [](const auto& entry) { return entry->removed; });
}

void NotificationCenter::post(const Notification& notification) {
  requireMainThread("NotificationCenter::post");
  const auto snapshot = entries_;  // keeps what a handler removes, itself maybe, until the post is over
  for (const auto& entry : snapshot) {
    const bool fits = entry->name == notification.name && (!entry->object || entry->object == notification.object);
    if (fits && !entry->removed) entry->handler(notification);
  }
}

}  // namespace platform
