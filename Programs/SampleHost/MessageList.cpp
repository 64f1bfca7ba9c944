#include "Programs/SampleHost/MessageList.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <iterator>
#include <numeric>

#include "Platform/Foundation/Unicode.h"
#include "Programs/SampleHost/ChatTheme.h"

namespace samplehost {

using platform::Rect;
using platform::Size;
using platform::port::Canvas;
using platform::port::Wrapping;

namespace {
constexpr double kSide = 14, kAvatar = 32, kAvatarGap = 9, kTimeGap = 7, kTimeRoom = 62;
constexpr double kPadX = 12, kPadY = 8, kRadius = 13;
constexpr double kRowGap = 4, kGroupGap = 14, kNameGap = 4, kEndGap = 14;
constexpr double kWidestText = 420, kNarrowestText = 60;

std::string clockText(double seconds) {
  const auto moment = static_cast<std::time_t>(seconds);
  std::tm local{};
  localtime_r(&moment, &local);
  std::array<char, 8> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%H:%M", &local);
  return {text.data(), length};
}

std::string firstCharacter(const std::string& text) {
  const std::u16string wide = platform::utf16(text);
  return platform::utf8(std::u16string_view(wide).substr(0, platform::nextCharacter(wide, 0)));
}

platform::Color colorOf(const std::string& author) {
  const auto sum = std::accumulate(author.begin(), author.end(), 0U,
                                   [](unsigned total, char byte) { return total + static_cast<unsigned char>(byte); });
  return theme::kAvatars[sum % std::size(theme::kAvatars)];
}
}  // namespace

void MessageList::fit(Size size) {
  if (size == size_ && rows_.size() == chat_.messages().size()) return;
  const bool atEnd = offset_ >= maximumOffset();
  size_ = size;
  rows_.clear();
  double top = 0;
  const ChatMessage* before = nullptr;
  for (const ChatMessage& message : chat_.messages()) {
    const bool startsGroup = !before || before->author != message.author;
    top += startsGroup ? kGroupGap : kRowGap;
    rows_.push_back(makeRow(message, startsGroup, top));
    top = rows_.back().bubble.maxY();
    before = &message;
  }
  contentHeight_ = top + kEndGap;
  offset_ = atEnd ? maximumOffset() : std::min(offset_, maximumOffset());
}

MessageList::Row MessageList::makeRow(const ChatMessage& message, bool startsGroup, double top) const {
  Row row;
  row.own = message.own;
  const double left = message.own ? kSide + kTimeRoom : kSide + kAvatar + kAvatarGap;
  const double right = message.own ? kSide : kSide + kTimeRoom;
  const double room = std::clamp(size_.width - left - right - 2 * kPadX, kNarrowestText, kWidestText);
  row.text = TextBlock(message.text, theme::kMessageFont, message.own ? theme::kOnAccent : theme::kText,
                       Wrapping::words, room);
  row.time = TextBlock(clockText(message.sentAt), theme::kSmallFont, theme::kSecondaryText);
  if (!message.own && startsGroup) {
    row.name = TextBlock(message.author, theme::kNameFont, theme::kSecondaryText);
    row.initial = TextBlock(firstCharacter(message.author), theme::kTitleFont, theme::kOnAccent);
    row.avatar = {kSide, top, kAvatar, kAvatar};
    row.avatarColor = colorOf(message.author);
    top += row.name.size().height + kNameGap;
  }
  const double width = std::ceil(row.text.size().width) + 2 * kPadX;
  const double height = std::ceil(row.text.size().height) + 2 * kPadY;
  row.bubble = {message.own ? size_.width - kSide - width : left, top, width, height};
  return row;
}

void MessageList::draw(Canvas& canvas, const Rect& rect) const {
  canvas.save();
  canvas.clip(rect, 0);
  // A short conversation stands at the bottom, above the composer.
  const double slack = std::max(0.0, size_.height - contentHeight_);
  canvas.translate({rect.x, rect.y + slack - offset_});
  for (const Row& row : rows_)
    if (row.bubble.maxY() >= offset_ && row.bubble.y - kAvatar <= offset_ + size_.height) drawRow(canvas, row);
  canvas.translate({0, offset_ - slack});
  drawScroller(canvas);
  canvas.restore();
}

void MessageList::drawRow(Canvas& canvas, const Row& row) const {
  if (!row.avatar.isEmpty()) {
    canvas.fill(row.avatar, row.avatarColor, kAvatar / 2);
    row.initial.drawCentered(canvas, row.avatar);
    row.name.draw(canvas, {row.bubble.x + 2, row.avatar.y});
  }
  canvas.fill(row.bubble, row.own ? theme::kAccent : theme::kPanel, kRadius);
  if (!row.own) canvas.stroke(row.bubble.insetBy(0.5, 0.5), theme::kHairline, 1, kRadius);
  row.text.draw(canvas, {row.bubble.x + kPadX, row.bubble.y + kPadY});
  const double timeX = row.own ? row.bubble.x - kTimeGap - row.time.size().width : row.bubble.maxX() + kTimeGap;
  row.time.draw(canvas, {timeX, row.bubble.maxY() - row.time.size().height - 2});
}

void MessageList::drawScroller(Canvas& canvas) const {
  if (contentHeight_ <= size_.height) return;
  const double track = size_.height - 8;
  const double length = std::max(28.0, track * size_.height / contentHeight_);
  const double top = 4 + (track - length) * offset_ / maximumOffset();
  platform::Color color = theme::kSecondaryText;
  color.alpha = 0.35;
  canvas.fill({size_.width - 8, top, 5, length}, color, 2.5);
}

void MessageList::scrollBy(double points) {
  offset_ = std::clamp(offset_ - points, 0.0, maximumOffset());
}

double MessageList::maximumOffset() const {
  return std::max(0.0, contentHeight_ - size_.height);
}

}  // namespace samplehost
