#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperProtocol.h"

namespace veltrik {

/// What a host delegate was told, and what the test does inside a call.
class HostRecord {
 public:
  std::vector<std::string> calls;
  /// By member; runs inside that call.
  std::map<std::string, std::function<void()>> reactions;

  bool was(const std::string& call) const { return std::find(calls.begin(), calls.end(), call) != calls.end(); }
  std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

 protected:
  void told(const std::string& member, const std::string& arguments = "") {
    calls.push_back(member + arguments);
    react(member);
  }
  void react(const std::string& member) const {
    const auto found = reactions.find(member);
    if (found == reactions.end()) return;
    const auto reaction = found->second;  // a copy: it may take itself away
    if (reaction) reaction();
  }
};

/// The messenger, as the principal object knows it.
class TestHost final : public VeltrikAppKitDelegateProtocol, public HostRecord {
 public:
  bool reopens = true;
  std::optional<std::string> feedback;

  /// What it answers to function keys, and what it was handed: "key CODE [MODIFIERS…] TYPE".
  bool letsKeysGoOn = true;
  std::vector<std::string> keys;

  bool handleFunctionKey(std::int32_t code, const std::vector<KeyModifier>& modifiers, std::int32_t type) override {
    std::string held;
    for (const KeyModifier modifier : modifiers) held += " " + std::to_string(static_cast<std::uint32_t>(modifier));
    keys.push_back("key " + std::to_string(code) + " [" + held + " ] " + std::to_string(type));
    const bool goesOn = letsKeysGoOn;
    react("handleFunctionKey");
    return goesOn;
  }
  void notifyWorkspaceEnvironment(std::int32_t environment) override {
    told("notifyWorkspaceEnvironment", " " + std::to_string(environment));
  }
  void notifyUserInteraction(std::int32_t interaction) override {
    told("notifyUserInteraction", " " + std::to_string(interaction));
  }
  bool applicationShouldHandleReopen() override {
    told("applicationShouldHandleReopen");
    return reopens;
  }
  void applicationDidBecomeActive() override { told("applicationDidBecomeActive"); }
  void applicationUserTerminate() override { told("applicationUserTerminate"); }
  void openMainWindow() override { told("openMainWindow"); }
  void handleWebViewFeedBackWithUserInfo(const std::optional<std::string>& json) override {
    feedback = json;
    told("handleWebViewFeedBackWithUserInfo");
  }
  void webViewDownloadCompletedWithResult(bool result) override {
    told("webViewDownloadCompletedWithResult", result ? " true" : " false");
  }
};

/// One of the messenger's windows, as its helper knows it; the answers are the test's to set.
class TestHostWindow final : public VeltrikAppKitWindowHelperDelegateProtocol, public HostRecord {
 public:
  explicit TestHostWindow(std::string uiWindowID) : id(std::move(uiWindowID)) {}

  std::string id;
  platform::Rect bounds{0, 0, 800, 600};
  platform::Size initialSize;
  std::optional<std::string> autosaveName;
  std::optional<std::vector<int>> edges;
  bool withoutAppendingAsChild = false;
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> parentHelper;
  bool orderedOut = false;
  std::optional<PopoverWindowDescription> popover;
  bool onlyCloseButton = false;
  bool closable = true;
  std::optional<platform::Color> titleColor;
  bool inputable = true;
  bool consumesClicks = false;
  bool mayClose = true;
  std::vector<platform::Point> clicks;
  std::vector<platform::Size> sizes;
  std::vector<platform::URL> files;
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> helper;

  std::string uiWindowID() override { return asked("uiWindowID", id); }
  platform::Rect uiWindowBounds() override { return asked("uiWindowBounds", bounds); }
  platform::Size initialWindowSize() override { return asked("initialWindowSize", initialSize); }
  std::optional<std::string> frameAutosaveName() override { return asked("frameAutosaveName", autosaveName); }
  std::optional<std::vector<int>> initialAttachmentsEdge() override { return asked("initialAttachmentsEdge", edges); }
  bool attachWithoutAppendingAsChild() override {
    return asked("attachWithoutAppendingAsChild", withoutAppendingAsChild);
  }
  bool isOrderedOutWithFirstBecomeMain() override { return asked("isOrderedOutWithFirstBecomeMain", orderedOut); }
  std::optional<PopoverWindowDescription> popoverWindowDescription() override {
    return asked("popoverWindowDescription", popover);
  }
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> parentWindowHelper() override {
    return asked("parentWindowHelper", parentHelper);
  }
  std::optional<platform::Bitmap> contentImage() override { return std::nullopt; }
  bool showOnlyCloseButton() override { return asked("showOnlyCloseButton", onlyCloseButton); }
  bool closableByUserInterface() override { return asked("closableByUserInterface", closable); }
  std::optional<platform::Color> customTitleBackgroundColor() override {
    return asked("customTitleBackgroundColor", titleColor);
  }
  std::optional<platform::Bitmap> spaceLogoImage() override { return std::nullopt; }
  std::optional<std::string> spaceName() override { return std::nullopt; }
  bool isInputableIosResponder() override { return asked("isInputableIosResponder", inputable); }

  bool mouseDoubleTapped(platform::Point location) override { return clicked("mouseDoubleTapped", location); }
  bool mouseRightClick(platform::Point location) override { return clicked("mouseRightClick", location); }
  void didSelectedFilePath(const std::vector<platform::URL>& selected) override {
    files = selected;
    told("didSelectedFilePath");
  }
  bool windowShouldClose() override {
    told("windowShouldClose");
    return mayClose;
  }
  void windowWillClose() override { told("windowWillClose"); }
  void windowDidBecomeMain() override { told("windowDidBecomeMain"); }
  void windowDidResignMain() override { told("windowDidResignMain"); }
  void windowDidBecomeKey() override { told("windowDidBecomeKey"); }
  void windowDidResignKey() override { told("windowDidResignKey"); }
  void windowDidConvertedAsPopover() override { told("windowDidConvertedAsPopover"); }
  void windowWillResize(platform::Size size) override {
    sizes.push_back(size);
    told("windowWillResize");
  }
  void windowDidResize(platform::Size size) override {
    sizes.push_back(size);
    told("windowDidResize");
  }
  void windowDidResizeByAutoSavedFrame() override { told("windowDidResizeByAutoSavedFrame"); }
  void windowDidMiniaturize() override { told("windowDidMiniaturize"); }
  void windowDidDeminiaturize() override { told("windowDidDeminiaturize"); }

 private:
  /// Queries are not written down: how often the plug-in asks is its own business.
  template <class Answer>
  Answer asked(const std::string& member, Answer answer) {
    react(member);
    return answer;
  }
  bool clicked(const std::string& member, platform::Point location) {
    clicks.push_back(location);
    told(member);
    return consumesClicks;
  }
};

}  // namespace veltrik
