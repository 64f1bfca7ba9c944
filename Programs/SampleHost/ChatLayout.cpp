#include "Programs/SampleHost/ChatLayout.h"

#include <algorithm>

namespace samplehost {

namespace {
constexpr double kTitleBarHeight = 52;
constexpr double kWindowButtonsWidth = 78;
constexpr double kMargin = 14;
constexpr double kFieldHeight = 66;
constexpr double kFieldInset = 9;
constexpr double kHintHeight = 16;
constexpr double kHintGap = 6;
constexpr double kComposerHeight = kMargin + kFieldHeight + kHintGap + kHintHeight + 8;
}  // namespace

ChatLayout ChatLayout::of(platform::Size window) {
  const double width = window.width;
  const double composerTop = std::max(kTitleBarHeight, window.height - kComposerHeight);
  const double inner = std::max(0.0, width - 2 * kMargin);
  ChatLayout layout;
  layout.titleBar = {0, 0, width, kTitleBarHeight};
  layout.dragRegion = {kWindowButtonsWidth, 0, std::max(0.0, width - kWindowButtonsWidth), kTitleBarHeight};
  layout.messages = {0, kTitleBarHeight, width, composerTop - kTitleBarHeight};
  layout.composer = {0, composerTop, width, kComposerHeight};
  layout.field = {kMargin, composerTop + kMargin, inner, kFieldHeight};
  layout.input = layout.field.insetBy(kFieldInset, kFieldInset);
  layout.hint = {kMargin + 4, layout.field.maxY() + kHintGap, std::max(0.0, inner - 8), kHintHeight};
  return layout;
}

}  // namespace samplehost
