#include "Platform/AppKit/KeyBindings.h"

#include "Tests/AppKit/TextFixture.h"

namespace platform {
namespace {

using namespace ModifierFlag;

TEST(TextKeyBindings, FollowTheDesktop) {
  struct Row {
    std::uint16_t key;
    std::uint64_t modifiers;
    const char* characters;
    const char* command;
  };
  constexpr std::uint64_t kArrow = kNumericPad | kFunction;
  for (const Row& row : std::initializer_list<Row>{
           {KeyCode::kRightArrow, kArrow | kOption, "", ""},
           {KeyCode::kDownArrow, kArrow | kShift, "", "moveDownAndModifySelection:"},
           {KeyCode::kPageDown, kShift, "", "pageDownAndModifySelection:"},
           {KeyCode::kReturn, kShift | kCapsLock, "\r", "insertNewline:"},
           {KeyCode::kReturn, kControl | kShift, "\r", ""},
           {KeyCode::kZ, kControl, "z", "undo:"},
           {KeyCode::kZ, kControl | kShift, "Z", "redo:"},
           {KeyCode::kA, kControl | kCapsLock, "A", "selectAll:"},
           {KeyCode::kV, kControl | kCommand, "v", ""},
           {KeyCode::kC, 0, "c", ""},
           // A French layout has its a where others have q, and q where they have a.
           {12, kControl, "a", "selectAll:"},
           {KeyCode::kA, kControl, "q", ""},
           // A Hangul layout types no Latin letters: the key's place counts.
           {KeyCode::kC, kControl, "ㅊ", "copy:"},
           {KeyCode::kV, kControl, "", "paste:"},
       })
    EXPECT_EQ(editingCommandFor(*keyEvent(row.key, row.characters, row.modifiers)), row.command)
        << row.key << " with " << std::hex << row.modifiers << " typing " << row.characters;
}

TEST(TextKeyBindings, OnlyPlainKeysType) {
  struct Row {
    const char* characters;
    std::uint64_t modifiers;
    std::u16string typed;
  };
  for (const Row& row : std::initializer_list<Row>{{"a", 0, u"a"},
                                                   {"A", kShift, u"A"},
                                                   {"A", kCapsLock, u"A"},
                                                   {"7", kNumericPad, u"7"},
                                                   {"😀", 0, u"😀"},
                                                   {"a", kControl, u""},
                                                   {"a", kOption, u""},
                                                   {"a", kCommand, u""},
                                                   {"\x1b", 0, u""},
                                                   {"\x7f", 0, u""},
                                                   {"\xEF\x9C\x84", 0, u""}})  // U+F704, a function key
    EXPECT_EQ(typedText(*keyEvent(0, row.characters, row.modifiers)), row.typed) << row.characters << row.modifiers;
}

}  // namespace
}  // namespace platform
