#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/HostArguments.h"
#include "Programs/SampleHost/PopoverAnswer.h"

namespace samplehost {

using platform::Rect;
using platform::Value;
using std::optional;
using veltrik::VeltrikAppKitWindowHelperProtocol;

namespace {

using Helper = VeltrikAppKitWindowHelperProtocol;

HelperPointer helperNamed(ConsoleContext& context, const std::string& identifier) {
  const HelperPointer found = context.host.helperOf(identifier);
  if (!found) throw RequestError(fmt::format("no window \"{}\" was bound", identifier));
  return found;
}

Helper& helper(ConsoleContext& context) {
  return *helperNamed(context, context.identifier);
}

std::weak_ptr<veltrik::VeltrikTextInputViewDelegate> textDelegate(ConsoleContext& context,
                                                                  const optional<DelegateName>& delegate) {
  if (!delegate) return {};
  return context.host.window(context.identifier).textDelegate;
}

void addProperties(ConsoleCalls& calls) {
  calls.add("delegate", [](ConsoleContext& c) { return helper(c).delegate() ? Value("host") : Value(); });
  calls.add("setDelegate", [](ConsoleContext& c, optional<DelegateName> delegate) {
    helper(c).setDelegate(delegate ? c.host.window(c.identifier).delegate : nullptr);
  });
  calls.member("alpha", helper, &Helper::alpha);
  calls.member("setAlpha", helper, &Helper::setAlpha);
  calls.member("alwaysOnTop", helper, &Helper::alwaysOnTop);
  calls.member("setAlwaysOnTop", helper, &Helper::setAlwaysOnTop);
  calls.member("isWindowHidden", helper, &Helper::isWindowHidden);
  calls.member("setIsWindowHidden", helper, &Helper::setIsWindowHidden);
  calls.member("isWindowRestorable", helper, &Helper::isWindowRestorable);
  calls.member("setIsWindowRestorable", helper, &Helper::setIsWindowRestorable);
  calls.member("sheetWindowTopMargin", helper, &Helper::sheetWindowTopMargin);
  calls.member("setSheetWindowTopMargin", helper, &Helper::setSheetWindowTopMargin);
  calls.member("closeWithResignMainWindow", helper, &Helper::closeWithResignMainWindow);
  calls.member("setCloseWithResignMainWindow", helper, &Helper::setCloseWithResignMainWindow);
}

void addQueries(ConsoleCalls& calls) {
  calls.member("nsWindowFrame", helper, &Helper::nsWindowFrame);
  calls.member("nsWindowNumber", helper, &Helper::nsWindowNumber);
  calls.member("titleBarHeight", helper, &Helper::titleBarHeight);
  calls.member("hasChildWindow", helper, &Helper::hasChildWindow);
  calls.member("isCapsLockKeyDown", helper, &Helper::isCapsLockKeyDown);
  calls.member("isPopoverWindow", helper, &Helper::isPopoverWindow);
  calls.member("isSheetWindow", helper, &Helper::isSheetWindow);
  calls.member("isMainNSWindow", helper, &Helper::isMainNSWindow);
  calls.member("isKeyNSWindow", helper, &Helper::isKeyNSWindow);
  calls.member("isForcedClose", helper, &Helper::isForcedClose);
}

void addRolesOrderAndClosing(ConsoleCalls& calls) {
  calls.member("addChildWindowToParentWindowWith", helper, &Helper::addChildWindowToParentWindowWith);
  calls.add("convertAsSheetWindowWithParentWindowHelper", [](ConsoleContext& c, WindowName parent) {
    helper(c).convertAsSheetWindowWithParentWindowHelper(helperNamed(c, parent.identifier));
  });
  calls.member("updateFrameIfNeeded", helper, &Helper::updateFrameIfNeeded);
  calls.member("makeMainAndKeyNSWindow", helper, &Helper::makeMainAndKeyNSWindow);
  calls.member("becomeFirstWindow", helper, &Helper::becomeFirstWindow);
  calls.member("orderFrontNSWindow", helper, &Helper::orderFrontNSWindow);
  calls.member("orderFrontBehideCurrentWindows", helper, &Helper::orderFrontBehideCurrentWindows);
  calls.member("minimize", helper, &Helper::minimize);
  calls.member("maximize", helper, &Helper::maximize);
  calls.member("closeWindow", helper, &Helper::closeWindow);
  calls.member("closePopoverWindow", helper, &Helper::closePopoverWindow);
  calls.member("closeSheetWindow", helper, &Helper::closeSheetWindow);
  calls.member("closeChildAlert", helper, &Helper::closeChildAlert);
}

void addChromeAndInput(ConsoleCalls& calls) {
  calls.member("setTitleBarTransparentAndTitleHidden", helper, &Helper::setTitleBarTransparentAndTitleHidden);
  calls.member("addMovableBounds", helper, &Helper::addMovableBounds);
  calls.member("resetAllMovableBounds", helper, &Helper::resetAllMovableBounds);
  calls.member("setContentSize", helper, &Helper::setContentSize);
  calls.member("setCloseButtonHidden", helper, &Helper::setCloseButtonHidden);
  calls.add("showPopoverMenuWithItems", [](ConsoleContext& c, std::vector<MenuItemAnswer> items) {
    std::vector<std::shared_ptr<veltrik::VeltrikPopoverMenuItemProtocol>> shown;
    for (const MenuItemAnswer& item : items)
      shown.push_back(std::make_shared<PopoverMenuItem>(item, "window:" + c.identifier, c.host.events()));
    helper(c).showPopoverMenuWithItems(shown);
  });
  calls.member("generateRightArrowKey", helper, &Helper::generateRightArrowKey);
  calls.member("nsColorFromHex", helper, &Helper::nsColorFromHex);
  calls.member("setAsFileDropable", helper, &Helper::setAsFileDropable);
  calls.member("readPastedFilePath", helper, &Helper::readPastedFilePath);
  calls.add("addConversationTextInputViewOn", [](ConsoleContext& c, Rect bounds, optional<DelegateName> delegate) {
    helper(c).addConversationTextInputViewOn(bounds, textDelegate(c, delegate));
  });
  calls.add("addCommonTextInputViewOn", [](ConsoleContext& c, Rect bounds, optional<DelegateName> delegate) {
    helper(c).addCommonTextInputViewOn(bounds, textDelegate(c, delegate));
  });
  calls.add("textInputView",
            [](ConsoleContext& c) { return helper(c).textInputView() ? Value("text:" + c.identifier) : Value(); });
  calls.member("makeTextViewFirstResponder", helper, &Helper::makeTextViewFirstResponder);
  calls.member("setInputViewLeading", helper, &Helper::setInputViewLeading);
}

}  // namespace

ConsoleCalls windowCalls() {
  ConsoleCalls calls;
  addProperties(calls);
  addQueries(calls);
  addRolesOrderAndClosing(calls);
  addChromeAndInput(calls);
  return calls;
}

}  // namespace samplehost
