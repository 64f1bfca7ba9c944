#include "Programs/SampleHost/CardScene.h"

#include <utility>

#include "Programs/SampleHost/ChatTheme.h"
#include "Programs/SampleHost/TextBlock.h"

namespace samplehost {

using platform::port::Wrapping;

namespace {
constexpr double kMargin = 14;
constexpr double kLineGap = 6;
constexpr double kCornerRadius = 4;
}  // namespace

CardScene::CardScene(std::string heading, std::vector<std::string> lines, double topMargin)
    : heading_(std::move(heading)), lines_(std::move(lines)), topMargin_(topMargin) {}

void CardScene::draw(platform::port::Canvas& canvas, platform::Size size) {
  canvas.fill({0, 0, size.width, size.height}, theme::kPanel, 0);
  if (topMargin_ > 0) canvas.fill({0, topMargin_ - 1, size.width, 1}, theme::kHairline, 0);
  canvas.stroke({0.5, 0.5, size.width - 1, size.height - 1}, theme::kHairline, 1, kCornerRadius);
  const double room = size.width - 2 * kMargin;
  const TextBlock heading(heading_, theme::kTitleFont, theme::kText, Wrapping::none, room);
  double y = topMargin_ + kMargin;
  heading.draw(canvas, {kMargin, y});
  y += heading.size().height + kLineGap;
  for (const std::string& each : lines_) {
    const TextBlock line(each, theme::kMessageFont, theme::kSecondaryText, Wrapping::none, room);
    line.draw(canvas, {kMargin, y});
    y += line.size().height + kLineGap;
  }
}

}  // namespace samplehost
