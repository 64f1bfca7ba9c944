#include "Platform/Runtime/Class.h"

#include <stdexcept>
#include <unordered_set>

namespace platform::runtime {

Selector::Selector(std::string_view name) {
  static auto& names =
      *new std::unordered_set<std::string>();  // never destroyed: selectors are used until the very end
  name_ = &*names.emplace(name).first;
}

bool Class::isSubclassOf(const Class& other) const {
  for (const Class* each = this; each; each = each->superclass_)
    if (each == &other) return true;
  return false;
}

Method Class::instanceMethod(Selector selector) const {
  for (const Class* each = this; each; each = each->superclass_)
    if (const auto found = each->methods_.find(selector); found != each->methods_.end()) return found->second;
  return {};
}

bool Class::addMethod(Selector selector, Method method) {
  return method && methods_.emplace(selector, std::move(method)).second;
}

bool Class::replaceMethod(Selector selector, Method method) {
  if (!method) return false;
  if (const Method standing = instanceMethod(selector); standing && standing.encoding() != method.encoding())
    return false;
  methods_.insert_or_assign(selector, std::move(method));
  return true;
}

bool Class::exchange(Selector original, Selector replacement) {
  const Method before = instanceMethod(original);
  const Method after = instanceMethod(replacement);
  if (original == replacement || !before || !after || before.encoding() != after.encoding()) return false;
  methods_.insert_or_assign(original, after);
  methods_.insert_or_assign(replacement, before);
  return true;
}

void throwUnrecognised(const Class& receiver, Selector selector) {
  throw std::logic_error("class " + receiver.name() + " has no method of the wanted signature for " + selector.name());
}

}  // namespace platform::runtime
