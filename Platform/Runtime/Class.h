#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <unordered_map>
#include <utility>

#include "Platform/Export.h"

namespace platform::runtime {

/// An interned method name; two selectors of the same text are the same pointer. Main thread.
class Selector {
 public:
  PLATFORM_EXPORT explicit Selector(std::string_view name);
  const std::string& name() const { return *name_; }
  friend bool operator==(const Selector&, const Selector&) = default;

 private:
  friend struct SelectorHash;
  const std::string* name_;
};

struct SelectorHash {
  std::size_t operator()(const Selector& selector) const { return std::hash<const void*>{}(selector.name_); }
};

/// A selector together with the C++ signature of its implementations, the receiver first:
/// `inline const Message<void(NSWindow&, const std::string&)> kSetTitle{"setTitle:"};`
template <class Signature>
struct Message;

template <class Result, class Receiver, class... Arguments>
struct Message<Result(Receiver&, Arguments...)> {
  using Implementation = std::function<Result(Receiver&, Arguments...)>;
  explicit Message(std::string_view name) : selector(name) {}
  Selector selector;
};

/// The exact C++ signature of a method, receiver included. Two methods may trade implementations only when it is equal.
using TypeEncoding = std::type_index;

/// A method's implementation under its type encoding; empty when a lookup finds nothing.
class Method {
 public:
  Method() = default;
  template <class Signature>
  Method(std::in_place_type_t<Signature>, std::function<Signature> body)
      : encoding_(typeid(Signature)), body_(std::make_shared<std::function<Signature>>(std::move(body))) {}

  explicit operator bool() const { return body_ != nullptr; }
  const TypeEncoding& encoding() const { return encoding_; }
  /// The callable, or null when the method has another signature (or is empty). Shared: it survives its replacement
  /// while it runs.
  template <class Signature>
  std::shared_ptr<std::function<Signature>> as() const {
    if (!body_ || encoding_ != TypeEncoding(typeid(Signature))) return nullptr;
    return std::static_pointer_cast<std::function<Signature>>(body_);
  }

 private:
  TypeEncoding encoding_ = typeid(void);
  std::shared_ptr<void> body_;
};

/// A class as the object runtime sees it: a name, a superclass and a method table that can change at run time.
/// Defined once a process and never destroyed. Main thread.
class PLATFORM_EXPORT Class {
 public:
  /// `superclass` is borrowed, lives as long as the process, and is null for a root.
  Class(std::string name, const Class* superclass) : name_(std::move(name)), superclass_(superclass) {}
  Class(const Class&) = delete;
  Class& operator=(const Class&) = delete;

  const std::string& name() const { return name_; }
  const Class* superclass() const { return superclass_; }
  bool isSubclassOf(const Class& other) const;

  /// The method that an instance runs: the class's own or the nearest inherited one; empty when there is none.
  Method instanceMethod(Selector selector) const;
  bool responds(Selector selector) const { return static_cast<bool>(instanceMethod(selector)); }

  /// Adds a method unless the class itself (not a superclass) has one of this selector. True when it was added.
  bool addMethod(Selector selector, Method method);
  /// Puts `method` in the class's own table, over or beside an inherited one. False, without a change, when an instance
  /// method of that selector stands with another encoding.
  bool replaceMethod(Selector selector, Method method);

  template <class Signature>
  bool addMethod(const Message<Signature>& message, typename Message<Signature>::Implementation body) {
    return addMethod(message.selector, Method(std::in_place_type<Signature>, std::move(body)));
  }
  template <class Signature>
  bool replaceMethod(const Message<Signature>& message, typename Message<Signature>::Implementation body) {
    return replaceMethod(message.selector, Method(std::in_place_type<Signature>, std::move(body)));
  }

  /// Exchanges two instance methods, so that the replacement's name reaches what stood under the original's: nothing
  /// when either is missing or their encodings differ. One that is only inherited is first given to this class as its
  /// own: the superclass, and what else derives from it, keeps its methods. True when something changed.
  bool exchange(Selector original, Selector replacement);
  /// The compiler refuses two messages of different signatures.
  template <class Signature>
  bool exchange(const Message<Signature>& original, const Message<Signature>& replacement) {
    return exchange(original.selector, replacement.selector);
  }

 private:
  std::string name_;
  const Class* superclass_;
  std::unordered_map<Selector, Method, SelectorHash> methods_;
};

/// Runs the receiver's method for a message; the receiver's class is `receiver.runtimeClass()`.
/// Throws std::logic_error naming class and selector when there is none or it has another signature.
template <class Result, class Receiver, class... Arguments>
Result send(const Message<Result(Receiver&, Arguments...)>& message, Receiver& receiver,
            std::type_identity_t<Arguments>... arguments);

[[noreturn]] PLATFORM_EXPORT void throwUnrecognised(const Class& receiver, Selector selector);

template <class Result, class Receiver, class... Arguments>
Result send(const Message<Result(Receiver&, Arguments...)>& message, Receiver& receiver,
            std::type_identity_t<Arguments>... arguments) {
  const Class& receiverClass = receiver.runtimeClass();
  auto body = receiverClass.instanceMethod(message.selector).template as<Result(Receiver&, Arguments...)>();
  if (!body) throwUnrecognised(receiverClass, message.selector);
  return (*body)(receiver, std::forward<Arguments>(arguments)...);
}

}  // namespace platform::runtime
