#include <random>

#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

/// What a composer holds, by the plainest means: whole texts and offsets. Its alphabet is Latin letters, "한", "😀",
/// the combining acute and newlines, so that characters can be told apart without tables.
class Composer {
 public:
  std::u16string text, marked;  // `marked` is part of `text`, from `markedAt`
  std::size_t markedAt = 0;
  std::size_t anchor = 0, head = 0;
  bool preparing = false, converting = false;
  int sent = 0;
  bool allows = true;

  std::size_t from() const { return std::min(anchor, head); }
  std::size_t to() const { return std::max(anchor, head); }

  void insert(const std::u16string& with) {
    if (with.empty() && marked.empty() && from() == to()) return;
    const bool composing = !marked.empty();
    const std::size_t start = composing ? markedAt : from();
    const std::size_t end = composing ? markedAt + marked.size() : to();
    edit(start, end, with);
    marked.clear();
  }
  void compose(const std::u16string& with) {
    if (with.empty() && marked.empty()) return;
    const bool starts = marked.empty();
    const std::size_t start = starts ? from() : markedAt;
    const std::size_t end = starts ? to() : markedAt + marked.size();
    if (starts) stepsOfComposition_ = 0;
    if (starts) compositionKeepsSteps_ = true;
    if (!edit(start, end, with)) return marked.clear();
    marked = with;
    markedAt = start;
    ++stepsOfComposition_;
  }
  void typeKey(const std::u16string& with) {
    marked.clear();
    insert(with);
  }
  void backspace() { remove(previous(head)); }
  void forwardDelete() { remove(next(head)); }
  void move(int direction, bool extending) {
    marked.clear();
    if (!extending && from() != to())
      head = direction < 0 ? from() : to();
    else
      head = direction < 0 ? previous(head) : next(head);
    if (!extending) anchor = head;
  }
  void select(std::size_t location, std::size_t length) {
    std::size_t start = std::min(location, text.size());
    std::size_t end = std::min(start + length, text.size());
    const bool empty = start == end;
    if (inPair(start)) --start;
    if (empty) end = start;
    if (inPair(end)) ++end;
    anchor = start;
    head = end;
    if (!marked.empty() && (start < markedAt || end > markedAt + marked.size())) marked.clear();
  }
  void set(const std::optional<std::u16string>& with) {
    marked.clear();
    put(with.value_or(u""));
    step(before_);
  }
  void reset() {
    set(std::nullopt);
    before_.clear();
    undo_.clear();
    redo_.clear();
  }
  void sendKey() {
    if (!marked.empty() && converting) {
      marked.clear();
    } else {
      ++sent;
    }
    preparing = false;
    undo_.clear();
    redo_.clear();
    compositionKeepsSteps_ = false;
  }
  void undo() {
    if (marked.empty()) return stepBack(undo_, redo_);
    const std::size_t start = markedAt, end = markedAt + marked.size();
    marked.clear();
    const int steps = compositionKeepsSteps_ ? stepsOfComposition_ : 0;
    for (int step = 0; step < steps; ++step) stepBack(undo_, redo_);
    if (steps == 0) edit(start, end, u"");
  }
  void redo() {
    marked.clear();
    stepBack(redo_, undo_);
  }

 private:
  bool edit(std::size_t start, std::size_t end, const std::u16string& with) {
    converting = preparing && with != u"\n";
    before_ = text;
    if (!allows) return false;
    text = text.substr(0, start) + with + text.substr(end);
    anchor = head = start + with.size();
    step(before_);
    return true;
  }
  void remove(std::size_t other) {
    marked.clear();
    const std::size_t start = from() != to() ? from() : std::min(head, other);
    const std::size_t end = from() != to() ? to() : std::max(head, other);
    if (start != end) edit(start, end, u"");
  }
  void step(const std::u16string& snapshot) {
    undo_.push_back(snapshot);
    redo_.clear();
  }
  void put(const std::u16string& with) {
    text = with;
    for (auto* end : {&anchor, &head}) *end = std::min(*end, text.size());
    for (auto* end : {&anchor, &head}) *end -= inPair(*end) ? 1 : 0;
  }
  void stepBack(std::vector<std::u16string>& stack, std::vector<std::u16string>& other) {
    if (stack.empty()) return;
    const std::u16string old = text;
    other.push_back(text);
    text = stack.back();
    stack.pop_back();
    std::size_t tail = 0;
    std::size_t same = 0;
    while (same < std::min(old.size(), text.size()) && old[same] == text[same]) ++same;
    while (tail < std::min(old.size(), text.size()) - same &&
           old[old.size() - 1 - tail] == text[text.size() - 1 - tail])
      ++tail;
    anchor = head = text.size() - tail;
    if (inPair(head)) anchor = --head;
  }
  bool inPair(std::size_t at) const { return at > 0 && at < text.size() && (text[at] & 0xFC00) == 0xDC00; }
  bool isBoundary(std::size_t at) const {
    if (at == 0 || at >= text.size()) return true;
    return !inPair(at) && (text[at] != u'\u0301' || text[at - 1] == u'\n');
  }
  std::size_t next(std::size_t at) const {
    do at = std::min(at + 1, text.size());
    while (!isBoundary(at));
    return at;
  }
  std::size_t previous(std::size_t at) const {
    do at = at == 0 ? 0 : at - 1;
    while (!isBoundary(at));
    return at;
  }

  std::u16string before_;
  std::vector<std::u16string> undo_, redo_;
  int stepsOfComposition_ = 0;
  bool compositionKeepsSteps_ = false;
};

struct Walk {
  unsigned seed;
  int steps;
};

class TextInputModel : public TextInputFixture, public testing::WithParamInterface<Walk> {
 protected:
  void press(std::uint16_t keyCode, const std::string& characters = {}, std::uint64_t modifiers = 0) {
    text().keyDown(keyEvent(keyCode, characters, modifiers));
  }
  std::size_t offset() { return random_() % (model.text.size() + 3); }
  std::u16string piece() {
    static const std::u16string kPieces[] = {u"a", u"한", u"😀", u"\u0301", u"한글", u"x😀y", u"e\u0301"};
    return kPieces[random_() % std::size(kPieces)];
  }

  /// One thing that a user, an input method or a host does; its name.
  std::string act() {
    using namespace ModifierFlag;
    const bool shift = random_() % 3 == 0;
    const std::uint64_t arrow = kNumericPad | kFunction | (shift ? kShift : 0);
    const std::u16string with = piece();
    switch (random_() % 24) {
      case 0:
      case 1:
      case 2:
        press(0, platform::utf8(with));
        model.typeKey(with);
        return "type";
      case 3:
      case 4:
      case 5:
      case 6:
        text().setMarkedText(with, with.size());
        model.compose(with);
        return "compose";
      case 7:
        text().setMarkedText(u"", 0);
        model.compose(u"");
        return "end of preedit";
      case 8:
      case 9:
        text().insertText(with);
        model.insert(with);
        return "commit";
      case 10:
        press(KeyCode::kBackspace);
        model.backspace();
        return "backspace";
      case 11:
        press(KeyCode::kForwardDelete);
        model.forwardDelete();
        return "delete";
      case 12:
      case 13:
        press(KeyCode::kLeftArrow, {}, arrow);
        model.move(-1, shift);
        return "left";
      case 14:
        press(KeyCode::kRightArrow, {}, arrow);
        model.move(1, shift);
        return "right";
      case 15:
      case 16:
        press(KeyCode::kZ, "z", kControl);
        model.preparing = false;
        model.undo();
        return "undo";
      case 17:
        press(KeyCode::kZ, "Z", kControl | kShift);
        model.preparing = false;
        model.redo();
        return "redo";
      case 18:
        press(KeyCode::kReturn, "\r", kControl);
        model.preparing = false;
        model.typeKey(u"\n");
        return "control return";
      case 19:
        press(KeyCode::kReturn, "\r", kOption);
        model.preparing = true;
        return "option return";
      case 20: {
        const NSRange range{offset(), random_() % 4};
        text().setSelectedRange(range);
        model.select(range.location, range.length);
        return "select";
      }
      case 21:
        text().unmark();
        model.marked.clear();
        return "unmark";
      case 22:
        model.allows = random_() % 4 != 0;
        host->allows = model.allows;
        return "host changes its mind";
      default:
        return actRarely(with);
    }
  }

  std::string actRarely(const std::u16string& with) {
    switch (random_() % 3) {
      case 0:
        press(KeyCode::kReturn, "\r");
        model.sendKey();
        return "return";
      case 1:
        text().reset();
        model.reset();
        return "reset";
      default:
        text().setAttributedText(platform::NSAttributedString(with));
        model.set(with);
        return "set text";
    }
  }

  Composer model;

 private:
  std::mt19937 random_{GetParam().seed};
};

TEST_P(TextInputModel, EveryStepAgrees) {
  int sent = 0;
  std::string lastReported;
  host->inside = [&](const std::string& heard) {
    if (heard == "send") ++sent;
    if (heard.starts_with("changed ")) lastReported = heard;
  };
  for (int step = 0; step < GetParam().steps; ++step) {
    host->take();
    const std::u16string before = model.text;
    lastReported.clear();
    const std::string what = act();
    const auto where = "step " + std::to_string(step) + ", " + what;
    ASSERT_EQ(string(), model.text) << where;
    ASSERT_EQ(text().selectedRange(), (NSRange{model.from(), model.to() - model.from()})) << where;
    ASSERT_EQ(text().selectionAnchor(), model.anchor) << where;
    ASSERT_EQ(text().markedRange(), model.marked.empty() ? NSRange{} : (NSRange{model.markedAt, model.marked.size()}))
        << where;
    ASSERT_EQ(text().preparingConvertMode(), model.preparing) << where;
    ASSERT_EQ(text().isConvertingMode(), model.converting) << where;
    ASSERT_EQ(sent, model.sent) << where;
    if (model.text != before) {
      ASSERT_EQ(lastReported, "changed '" + platform::utf8(model.text) + "'") << where;
    }
  }
}

#ifdef __SANITIZE_ADDRESS__
constexpr int kLongWalk = 20'000;
#else
constexpr int kLongWalk = 100'000;
#endif

INSTANTIATE_TEST_SUITE_P(Seeds, TextInputModel, testing::Values(Walk{1, kLongWalk}, Walk{2, 20'000}, Walk{3, 20'000}),
                         [](const auto& row) { return "Seed" + std::to_string(row.param.seed); });

}  // namespace
}  // namespace veltrik
