#include "Platform/Runtime/Class.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Runtime/AttachedValues.h"

namespace platform::runtime {
namespace {

/// A family of three: classes are made anew for each test.
struct Family {
  Class base{"Base", nullptr};
  Class middle{"Middle", &base};
  Class sibling{"Sibling", &base};
};

struct Receiver {
  explicit Receiver(Class& receiverClass) : itsClass(receiverClass) {}
  Class& runtimeClass() const { return itsClass; }
  Class& itsClass;
};

using Text = Message<std::string(Receiver&, const std::string&)>;
const Text kOriginal{"original:"};
const Text kReplacement{"replacement:"};
const Message<int(Receiver&)> kCount{"original:"};  // the same selector under another signature

Text::Implementation answering(const std::string& who) {
  return [who](Receiver&, const std::string& text) { return who + "(" + text + ")"; };
}

std::string ask(const Text& message, Class& itsClass) {
  Receiver receiver(itsClass);
  return itsClass.responds(message.selector) ? send(message, receiver, "x") : "none";
}

struct ExchangeRow {
  const char* name;
  const char* baseOriginal;
  const char* ownOriginal;
  const char* baseReplacement;
  const char* ownReplacement;
  bool exchanged;
  const char* original;
  const char* replacement;
};

TEST(Class, ExchangeTradesInstanceMethodsWithoutTouchingTheSuperclass) {
  const ExchangeRow rows[] = {
      {"both own", nullptr, "O", nullptr, "R", true, "R(x)", "O(x)"},
      {"original inherited", "O", nullptr, nullptr, "R", true, "R(x)", "O(x)"},
      {"original overridden", "baseO", "O", nullptr, "R", true, "R(x)", "O(x)"},
      {"replacement inherited", nullptr, "O", "R", nullptr, true, "R(x)", "O(x)"},
      {"replacement overridden", nullptr, "O", "baseR", "R", true, "R(x)", "O(x)"},
      {"both inherited", "O", nullptr, "R", nullptr, true, "R(x)", "O(x)"},
      {"no original", nullptr, nullptr, nullptr, "R", false, "none", "R(x)"},
      {"no replacement", nullptr, "O", nullptr, nullptr, false, "O(x)", "none"},
      {"neither", nullptr, nullptr, nullptr, nullptr, false, "none", "none"},
  };
  for (const ExchangeRow& row : rows) {
    SCOPED_TRACE(row.name);
    Family family;
    if (row.baseOriginal) family.base.addMethod(kOriginal, answering(row.baseOriginal));
    if (row.ownOriginal) family.middle.addMethod(kOriginal, answering(row.ownOriginal));
    if (row.baseReplacement) family.base.addMethod(kReplacement, answering(row.baseReplacement));
    if (row.ownReplacement) family.middle.addMethod(kReplacement, answering(row.ownReplacement));
    const std::string baseBefore = ask(kOriginal, family.base) + ask(kReplacement, family.base);

    EXPECT_EQ(family.middle.exchange(kOriginal, kReplacement), row.exchanged);
    EXPECT_EQ(ask(kOriginal, family.middle), row.original);
    EXPECT_EQ(ask(kReplacement, family.middle), row.replacement);
    EXPECT_EQ(ask(kOriginal, family.base) + ask(kReplacement, family.base), baseBefore);
    EXPECT_EQ(ask(kOriginal, family.sibling) + ask(kReplacement, family.sibling), baseBefore);

    // Once more brings everything back.
    if (!row.exchanged) continue;
    EXPECT_TRUE(family.middle.exchange(kOriginal, kReplacement));
    EXPECT_EQ(ask(kOriginal, family.middle), row.replacement);
  }
}

TEST(Class, AReplacementReachesTheFormerMethodUnderItsOwnName) {
  Family family;
  family.base.addMethod(kOriginal, answering("system"));
  family.middle.addMethod(kReplacement, [](Receiver& receiver, const std::string& text) {
    return "wrapped " + send(kReplacement, receiver, text + "!");
  });
  family.middle.exchange(kOriginal, kReplacement);
  Class leaf("Leaf", &family.middle);
  EXPECT_EQ(ask(kOriginal, leaf), "wrapped system(x!)");
}

TEST(Class, MethodsOfAnotherSignatureAreNeitherRunNorPutInPlace) {
  Family family;
  family.base.addMethod(kOriginal, answering("O"));
  const Message<int(Receiver&)> numeric{"replacement:"};
  family.middle.addMethod(numeric, [](Receiver&) { return 1; });
  EXPECT_FALSE(family.middle.exchange(kOriginal.selector, numeric.selector));
  EXPECT_FALSE(family.middle.replaceMethod(kCount, [](Receiver&) { return 2; }));
  EXPECT_EQ(ask(kOriginal, family.middle), "O(x)");
  Receiver receiver(family.middle);
  EXPECT_THROW(send(kCount, receiver), std::logic_error);
}

TEST(Class, AddKeepsAnOwnMethodAndOverridesAnInheritedOne) {
  Family family;
  EXPECT_TRUE(family.base.addMethod(kOriginal, answering("base")));
  EXPECT_FALSE(family.base.addMethod(kOriginal, answering("again")));
  EXPECT_EQ(ask(kOriginal, family.middle), "base(x)");
  EXPECT_TRUE(family.middle.addMethod(kOriginal, answering("middle")));
  EXPECT_EQ(ask(kOriginal, family.middle), "middle(x)");
  EXPECT_EQ(ask(kOriginal, family.base), "base(x)");
  EXPECT_FALSE(family.base.addMethod(kReplacement.selector, Method()));
}

TEST(Class, AMethodSurvivesItsReplacementWhileItRuns) {
  Family family;
  const auto held = std::make_shared<std::string>("still here");
  family.base.addMethod(kOriginal, [held, &family](Receiver&, const std::string&) {
    family.base.replaceMethod(kOriginal, answering("new"));
    return *held;
  });
  EXPECT_EQ(ask(kOriginal, family.base), "still here");
  EXPECT_EQ(ask(kOriginal, family.base), "new(x)");
  EXPECT_EQ(held.use_count(), 1);
}

TEST(Class, AMissingMethodIsNamed) {
  Family family;
  Receiver receiver(family.middle);
  try {
    send(kOriginal, receiver, "x");
    FAIL() << "nothing was thrown";
  } catch (const std::logic_error& error) {
    EXPECT_NE(std::string(error.what()).find("Middle"), std::string::npos) << error.what();
    EXPECT_NE(std::string(error.what()).find("original:"), std::string::npos) << error.what();
  }
}

TEST(Selector, EqualTextIsTheSameSelector) {
  EXPECT_EQ(Selector("setTitle:"), Selector(std::string("setTi") + "tle:"));
  EXPECT_FALSE(Selector("setTitle:") == Selector("setTitle"));
}

TEST(AttachedValues, AValueMaySetItselfAndOthersWhileItGoes) {
  struct AtEnd {
    std::function<void()> action;
    ~AtEnd() {
      if (action) action();
    }
  };
  const AttachedKey<std::shared_ptr<AtEnd>> key;
  AttachedValues values;
  std::vector<std::unique_ptr<AttachedKey<int>>> others;
  const auto fillUp = [&] {
    for (int i = 0; i < 100; ++i) values.set(*others.emplace_back(std::make_unique<AttachedKey<int>>()), i);
  };
  auto value = std::make_shared<AtEnd>();
  value->action = fillUp;
  values.set(key, std::move(value));
  values.set(key, std::shared_ptr<AtEnd>());
  EXPECT_EQ(values.get(key), nullptr);
  EXPECT_EQ(values.get(*others.back()), 99);
}

}  // namespace
}  // namespace platform::runtime
