#pragma once

#include <optional>
#include <string>

#include "Platform/Foundation/URL.h"
#include "Platform/Port/Value.h"

namespace veltrik {

inline constexpr const char* kWebViewBundleIdentifier = "com.brenholt.macos.mirelo.webview";

/// The page that the web-view companion is to show.
struct WebViewRequest {
  std::string url;
  std::string customHeader;
  std::string customUserAgent;
  platform::Dictionary options;

  /// What the companion is started with.
  platform::Dictionary launchArgument(const std::string& openerBundleUrl, const std::string& openerBundleID) const;
  /// What is posted to it: `options` over the page's own, a "windowSize" that is text as the size that it stands for.
  platform::Dictionary pageParameters() const;
};

/// Where the companion is kept: in the user's caches folder, under the application's identifier. Nothing when that has
/// none.
std::optional<platform::URL> webViewDirectoryURL();
std::optional<platform::URL> webViewAppURL();
std::optional<platform::URL> webViewArchiveURL();

/// Unpacks the archive into the folder that holds it: all of it or, whatever ends the process meanwhile, nothing under
/// its final name. Throws what `unzipItem` throws. Any thread.
void unpackWebViewArchive(const platform::URL& archive);

}  // namespace veltrik
