#include "Programs/SampleHost/ChatView.h"

#include <algorithm>
#include <utility>

#include "Programs/SampleHost/ChatLayout.h"
#include "Programs/SampleHost/ChatTheme.h"

namespace samplehost {

using platform::Rect;
using platform::Size;
using platform::port::Canvas;
using platform::port::Wrapping;

void ChatView::draw(Canvas& canvas, Size size) {
  const ChatLayout layout = ChatLayout::of(size);
  canvas.fill({0, 0, size.width, size.height}, theme::kWindow, 0);
  list_.fit(layout.messages.size());
  list_.draw(canvas, layout.messages);
  drawTitleBar(canvas, layout.titleBar);
  drawComposer(canvas, size);
}

void ChatView::drawTitleBar(Canvas& canvas, const Rect& rect) const {
  canvas.fill(rect, theme::kPanel, 0);
  canvas.fill({rect.x, rect.maxY() - 1, rect.width, 1}, theme::kHairline, 0);
  // Centred in the window, yet never under its buttons.
  constexpr double kButtons = 84;
  const double room = std::max(0.0, rect.width - 2 * kButtons);
  const TextBlock title(chat_.title(), theme::kTitleFont, theme::kText, Wrapping::none, room);
  const TextBlock subtitle(chat_.subtitle(), theme::kSmallFont, theme::kSecondaryText, Wrapping::none, room);
  const double height = title.size().height + 1 + subtitle.size().height;
  const double top = (rect.height - height) / 2;
  title.drawCentered(canvas, {rect.x, top, rect.width, title.size().height});
  subtitle.drawCentered(canvas, {rect.x, top + title.size().height + 1, rect.width, subtitle.size().height});
}

void ChatView::drawComposer(Canvas& canvas, Size size) const {
  const ChatLayout layout = ChatLayout::of(size);
  canvas.fill(layout.composer, theme::kPanel, 0);
  canvas.fill({layout.composer.x, layout.composer.y, layout.composer.width, 1}, theme::kHairline, 0);
  canvas.fill(layout.field, theme::kField, 10);
  canvas.stroke(layout.field.insetBy(0.5, 0.5), theme::kFieldBorder, 1, 10);
  if (composerEmpty_) {
    const TextBlock placeholder("메시지를 입력하세요", platform::Font{13, false}, theme::kSecondaryText);
    // Where the native text begins, after its padding.
    placeholder.draw(canvas, {layout.input.x + 5, layout.input.y});
  }
  const TextBlock hint("Return 보내기  ·  Control+Return 줄 바꿈", theme::kSmallFont, theme::kSecondaryText,
                       Wrapping::none, layout.hint.width);
  hint.drawLeft(canvas, layout.hint);
}

bool ChatView::scroll(double points) {
  const double before = list_.offset();
  list_.scrollBy(points);
  return list_.offset() != before;
}

bool ChatView::setComposerEmpty(bool empty) {
  return std::exchange(composerEmpty_, empty) != empty;
}

}  // namespace samplehost
