// A host's view: it links Platform and a back end, and reaches the plug-in through the bundle and the protocol headers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/Session.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitEntry.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitSearchField.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperProtocol.h"

namespace veltrik {
namespace {

using platform::Bundle;
using platform::NSWindow;

class BundleTest : public testing::Test {
 protected:
  headless::HeadlessBackend desktop;
  platform::Session session{desktop};
  std::shared_ptr<Bundle> bundle = Bundle::open(VELTRIK_BUNDLE);
};

TEST_F(BundleTest, NamesItselfAndCarriesItsIcon) {
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->bundleIdentifier(), kVeltrikAppKitBundleIdentifier);
  EXPECT_TRUE(bundle->info().contains("CFBundleShortVersionString"));
  EXPECT_TRUE(bundle->pathForResource("MireloIcon.svg"));
}

TEST_F(BundleTest, GivesAPrincipalObjectThatBindsWindows) {
  ASSERT_TRUE(bundle);
  const auto appKit = createVeltrikAppKit(*bundle);
  ASSERT_TRUE(appKit);
  EXPECT_TRUE(bundle->isLoaded());
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> helper;
  appKit->bindNSWindowWithUIWindowID("main", [&](const auto& made) { helper = made; });
  const auto window = NSWindow::make({100, 100, 400, 300}, platform::StyleMask::kTitled);
  window->setTitle("main");
  ASSERT_TRUE(helper);
  EXPECT_EQ(helper->nsWindowNumber(), window->windowNumber());
  EXPECT_EQ(window->title(), "");
}

TEST_F(BundleTest, AnEntryAskedForAnotherVersionCreatesNothing) {
  ASSERT_TRUE(bundle->load());
  const auto create = reinterpret_cast<VeltrikAppKitCreateFunction*>(bundle->symbol(kVeltrikAppKitCreateSymbol));
  ASSERT_TRUE(create);
  std::shared_ptr<VeltrikAppKitProtocol> made;
  EXPECT_FALSE(create(kVeltrikAppKitInterfaceVersion + 1, &made));
  EXPECT_FALSE(made);
  EXPECT_FALSE(create(kVeltrikAppKitInterfaceVersion, nullptr));
}

TEST_F(BundleTest, ItsSearchFieldHasItsPicturesSharpAtEveryScale) {
  ASSERT_TRUE(bundle->load());
  const auto make =
      reinterpret_cast<VeltrikAppKitMakeSearchFieldFunction*>(bundle->symbol(kVeltrikAppKitMakeSearchFieldSymbol));
  ASSERT_TRUE(make);
  std::shared_ptr<platform::NSView> field;
  make({}, &field);
  ASSERT_TRUE(field);
  ASSERT_EQ(field->subviews().size(), 3U);
  const auto icon = std::dynamic_pointer_cast<platform::NSImageView>(field->subviews().at(0));
  const auto cancel = std::dynamic_pointer_cast<platform::NSButton>(field->subviews().at(2));
  ASSERT_TRUE(icon && cancel);
  for (const auto& image : {icon->image(), cancel->image()}) {
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (platform::Size{16, 16}));
    for (const int scale : {1, 2, 3}) EXPECT_EQ(image->bestRepresentation(scale)->width, 16 * scale);
  }
}

TEST_F(BundleTest, ExportsItsCFunctionsAlone) {
  const std::string command = "nm -D --defined-only --format=just-symbols '" + bundle->executablePath().string() + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  ASSERT_TRUE(pipe);
  std::vector<std::string> symbols;
  std::array<char, 4096> line{};
  while (std::fgets(line.data(), line.size(), pipe.get())) {
    symbols.emplace_back(line.data());
    symbols.back().pop_back();
  }
  EXPECT_THAT(symbols, testing::UnorderedElementsAre("CFDateGetIdleTimeInterval", "VeltrikAppKitCreate",
                                                     "VeltrikAppKitMakeSearchField", "VeltrikAppKitWindowValues"));
}

}  // namespace
}  // namespace veltrik
