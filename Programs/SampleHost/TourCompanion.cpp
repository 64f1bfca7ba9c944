#include "Programs/SampleHost/Tour.h"

namespace samplehost {

void Tour::companion() {
  transcript_.expect("no companion runs", false, host_.appKit().hasActiveWebView());
  host_.appKit().openWebViewWithUrl("https://example.com", std::nullopt, std::nullopt, {{"windowSize", "small"}});
  transcript_.expectTrue("the host is told whether it can be had",
                         wait([this] { return heard("webViewDownloadCompletedWithResult", "app") > 0; }));
}

void Tour::update() {
  const auto window = mainWindow();
  host_.appKit().restartWithDownloadedUpdateFilePath("/nowhere/update.zip");
  transcript_.expectTrue("an update that isn't there leaves all as it is", wait([&] { return window->isVisible(); }));
}

}  // namespace samplehost
