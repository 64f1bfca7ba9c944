#pragma once

#include <string>
#include <vector>

#include "Programs/SampleHost/HostScene.h"

namespace samplehost {

/// A small window of the host's: a heading and lines below it. Main thread.
class CardScene : public HostScene {
 public:
  /// `topMargin`: what a title bar over the content takes, in points.
  CardScene(std::string heading, std::vector<std::string> lines, double topMargin);

  void draw(platform::port::Canvas& canvas, platform::Size size) override;

 private:
  std::string heading_;
  std::vector<std::string> lines_;
  double topMargin_;
};

}  // namespace samplehost
