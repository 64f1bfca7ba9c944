// The web-view companion: found, unpacked, started with its argument, told its page, and ended. A shell script in a
// bundle stands for it.

#include <sys/stat.h>

#include "Platform/AppKit/NSRunningApplication.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/JSON.h"
#include "Tests/Foundation/ApplicationFixture.h"
#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/FileManager+ZIP.h"
#include "VeltrikAppKit/WebViewRequest.h"

namespace veltrik {
namespace {

namespace filesystem = std::filesystem;
using platform::Dictionary;
using platform::NSRunningApplication;
using platform::URL;
using platform::Value;
using testing::StartsWith;

constexpr const char* kTrue = "webViewDownloadCompletedWithResult true";
constexpr const char* kFalse = "webViewDownloadCompletedWithResult false";
constexpr const char* kApp = "MireloWebView_1_1_2.app";
const std::string kFailed = "WebView >>>>> application open";
const std::string kRetried = "WebView >>>>> webview open failed with error, just retry once";

class WebViewTest : public PluginTest {
 protected:
  WebViewTest() {
    makeApplication(scratch / "Mirelo.app", "com.example.host", "");
    platform::Bundle::setMainForTesting(scratch / "Mirelo.app");
    filesystem::create_directories(folder());
    for (const char* const each : {"told", "never"}) EXPECT_EQ(mkfifo((scratch / each).c_str(), 0600), 0);
  }
  ~WebViewTest() override {
    for (const auto& each : companions()) each->terminate();
    platform::Bundle::setMainForTesting({});
  }

  filesystem::path folder() const { return desktop.folders().cache / "com.example.host/PlugIns/WebView"; }
  filesystem::path app() const { return folder() / kApp; }
  filesystem::path archive() const { return folder() / (std::string(kApp) + ".zip"); }
  static std::vector<std::shared_ptr<NSRunningApplication>> companions() {
    return NSRunningApplication::runningApplications("com.brenholt.macos.mirelo.webview");
  }

  /// It tells its argument through a pipe that it keeps open, and waits for its end.
  void makeCompanion(const filesystem::path& bundle) const {
    makeApplication(bundle, "com.brenholt.macos.mirelo.webview",
                    "exec 3>'" + (scratch / "told").native() +
                        "'; printf '%s|%s\\0' \"$#\" \"$1\" >&3; read -r line <>'" + (scratch / "never").native() +
                        "'");
  }
  void makeArchive() const {
    makeCompanion(scratch / "made" / kApp);
    zipItem(URL::fileURL((scratch / "made" / kApp).native()), URL::fileURL(archive().native()));
  }

  /// What the companion that runs was told.
  std::string told() {
    pipe.open(scratch / "told");
    std::string text;
    std::getline(pipe, text, '\0');
    return text;
  }
  void open(const Dictionary& options = {}) {
    appKit->openWebViewWithUrl("https://example.com/길", std::nullopt, "agent", options);
    desktop.settle();
  }
  std::vector<std::string> items() const {
    std::vector<std::string> names;
    for (const auto& item : filesystem::directory_iterator(folder())) names.push_back(item.path().filename());
    return names;
  }

  const ScratchFolder scratch;
  std::ifstream pipe;
};

TEST_F(WebViewTest, ABundleThatIsThereIsStartedWithOneArgument) {
  makeCompanion(app());
  writeText(archive(), "left as it is");
  open();
  EXPECT_EQ(host->takeCalls(), std::vector<std::string>{kTrue});
  const std::string argument = told();
  ASSERT_THAT(argument, StartsWith("1|{\n"));
  const auto json = platform::valueFromJSON(argument.substr(2));
  EXPECT_EQ(json, Value(Dictionary{{"openerBundleUrl", "file://" + (scratch / "Mirelo.app").native() + "/"},
                                   {"openerBundleID", "com.example.host"},
                                   {"url", "https://example.com/길"},
                                   {"customHeader", ""},
                                   {"customUserAgent", "agent"}}));
  const std::string url = URL::fileURL(app().native()).absoluteString();
  EXPECT_THAT(log, ElementsAre("WebView >>>>> now will find webViewApp url = " + url,
                               "WebView >>>>> now will find webViewApp path = " + app().native(), kFailed));
  EXPECT_EQ(readText(archive()), "left as it is");
  ASSERT_EQ(companions().size(), 1U);
  EXPECT_EQ(desktop.journal().count("application " + std::to_string(companions()[0]->processIdentifier())), 1U);
}

TEST_F(WebViewTest, ThePageIsPostedHalfASecondAfterTheStart) {
  makeCompanion(app());
  open({{"windowSize", "large"}, {"customHeader", "X: 1"}});
  desktop.advance(0.49);
  EXPECT_THAT(desktop.broadcast()->takePosted(), IsEmpty());
  desktop.advance(0.02);
  const auto posted = desktop.broadcast()->takePosted();
  ASSERT_EQ(posted.size(), 1U);
  EXPECT_EQ(posted[0].name, "mirelo_webViewLoading");
  EXPECT_EQ(posted[0].userInfo, (Dictionary{{"url", "https://example.com/길"},
                                            {"customHeader", "X: 1"},
                                            {"customUserAgent", "agent"},
                                            {"windowSize", "{900, 660}"}}));
}

TEST_F(WebViewTest, ThePageIsNotPostedWhenThePrincipalObjectHasGone) {
  makeCompanion(app());
  open();
  appKit.reset();
  desktop.advance(1);
  EXPECT_THAT(desktop.broadcast()->takePosted(), IsEmpty());
}

TEST_F(WebViewTest, AnArchiveIsUnpackedStartedAndRemoved) {
  makeArchive();
  open();
  EXPECT_THAT(told(), StartsWith("1|"));
  EXPECT_EQ(host->takeCalls(), std::vector<std::string>{kTrue});
  EXPECT_THAT(log, Contains("WebView >>>> start unzip " + URL::fileURL(archive().native()).absoluteString()));
  EXPECT_THAT(items(), ElementsAre(kApp));
}

TEST_F(WebViewTest, WhatAnUnpackingThatWasKilledLeftIsNoHindrance) {
  makeArchive();
  writeText(folder() / ".MireloWebView.unpacking" / kApp / "half", "");
  open();
  EXPECT_THAT(told(), StartsWith("1|"));
  EXPECT_THAT(items(), ElementsAre(kApp));
  EXPECT_FALSE(filesystem::exists(app() / "half"));
}

struct MissingRow {
  const char* name;
  std::function<void(const WebViewTest&, const filesystem::path& archive)> prepare;
  const char* line;
  bool keepsArchive;
};

class MissingWebViewTest : public WebViewTest, public testing::WithParamInterface<MissingRow> {};

TEST_P(MissingWebViewTest, IsToldTheHost) {
  GetParam().prepare(*this, archive());
  open();
  EXPECT_EQ(host->takeCalls(), std::vector<std::string>{kFalse});
  EXPECT_THAT(log, Contains(GetParam().line));
  EXPECT_EQ(filesystem::exists(archive()), GetParam().keepsArchive);
  EXPECT_THAT(items(), Not(Contains(".MireloWebView.unpacking")));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MissingWebViewTest,
    testing::Values(
        MissingRow{"HostWithoutIdentifier", [](const auto&, const auto&) { platform::Bundle::setMainForTesting({}); },
                   "WebView >>>>> webViewAppUrl invalid", false},
        MissingRow{"Neither", [](const auto&, const auto&) {}, "WebView >>>>> no app or app.zip file", false},
        MissingRow{"NotAnArchive", [](const auto&, const auto& archive) { writeText(archive, "text"); },
                   "WebView >>>>> unzip failed", true},
        MissingRow{"CutOff",
                   [](const auto&, const auto& archive) {
                     const ScratchFolder made;
                     makeApplication(made / kApp, "x", std::string(50'000, '#'));
                     zipItem(URL::fileURL((made / kApp).native()), URL::fileURL(archive.native()));
                     std::string bytes = readText(archive);
                     bytes.erase(100, 20'000);
                     writeText(archive, bytes);
                   },
                   "WebView >>>>> unzip failed", true}),
    [](const auto& row) { return row.param.name; });

TEST_F(WebViewTest, AnEmptyArchiveEndsToo) {
  Archive::open(URL::fileURL(archive().native()), {.accessMode = Archive::AccessMode::create});
  ASSERT_TRUE(filesystem::exists(archive()));
  open();
  EXPECT_EQ(host->takeCalls(), (std::vector<std::string>{kTrue, kFalse}));
  EXPECT_EQ(log.back(), "WebView >>>>> no app or app.zip file");
  EXPECT_THAT(items(), IsEmpty());
}

TEST_F(WebViewTest, AnArchiveThatCantBeRemovedIsLogged) {
  makeArchive();
  host->reactions[std::string(kTrue).substr(0, 34)] = [&] { filesystem::remove(archive()); };
  open();
  EXPECT_THAT(log, Contains("WebView >>>> failed to remove zip file"));
}

TEST_F(WebViewTest, WithoutThePrincipalObjectAnUnpackedArchiveIsJustRemoved) {
  makeArchive();
  appKit->openWebViewWithUrl("https://example.com", std::nullopt, std::nullopt, {});
  appKit.reset();
  desktop.settle();
  EXPECT_THAT(items(), ElementsAre(kApp));
  EXPECT_THAT(host->takeCalls(), IsEmpty());
  EXPECT_THAT(companions(), IsEmpty());
}

TEST_F(WebViewTest, AFailedStartIsTriedOnceMoreEachTime) {
  writeText(app() / "no Info.plist", "");
  for (int round = 0; round < 2; ++round) {
    log.clear();
    open();
    EXPECT_EQ(host->takeCalls(), (std::vector<std::string>{kTrue, kTrue}));
    std::erase_if(log, [](const std::string& line) { return line.starts_with("WebView >>>>> now will find"); });
    EXPECT_THAT(log, ElementsAre(kFailed, kRetried, kFailed));
  }
}

TEST(WebViewParameters, AreTheRequestAndItsOptions) {
  struct Row {
    Dictionary options;
    const char* key;
    Value value;
  };
  for (const Row& row : {Row{{{"windowSize", "small"}}, "windowSize", "{360, 660}"},
                         Row{{{"windowSize", "medium"}}, "windowSize", "{640, 660}"},
                         Row{{{"windowSize", "large"}}, "windowSize", "{900, 660}"},
                         Row{{{"windowSize", "Medium"}}, "windowSize", "{420, 680}"},
                         Row{{{"windowSize", ""}}, "windowSize", "{420, 680}"},
                         Row{{{"windowSize", 3}}, "windowSize", 3}, Row{{{"size", "medium"}}, "size", "medium"},
                         Row{{}, "customHeader", ""}, Row{{{"url", "other"}}, "url", "other"}})
    EXPECT_EQ((WebViewRequest{"address", "", "agent", row.options}.pageParameters().at(row.key)), row.value)
        << platform::jsonText(row.options);
}

}  // namespace
}  // namespace veltrik
