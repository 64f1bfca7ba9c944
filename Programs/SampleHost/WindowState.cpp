#include "Programs/SampleHost/WindowState.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindowController.h"
#include "Programs/SampleHost/Codec.h"
#include "Programs/SampleHost/PluginBundle.h"
#include "Programs/SampleHost/ViewTree.h"

namespace samplehost {

using platform::Dictionary;
using platform::NSWindow;
using platform::Rect;
using platform::Value;

namespace {

Value children(NSWindow& window) {
  Value::Array numbers;
  for (const auto& child : window.childWindows()) numbers.push_back(child->windowNumber());
  return numbers;
}

Value parent(NSWindow& window) {
  return window.parentWindow() ? Value(window.parentWindow()->windowNumber()) : Value();
}

/// Which of the title bar's buttons there are and are shown.
Value buttons(NSWindow& window) {
  static constexpr std::array<std::pair<const char*, platform::WindowButton>, 3> kButtons = {
      {{"close", platform::WindowButton::close},
       {"minimize", platform::WindowButton::miniaturize},
       {"zoom", platform::WindowButton::zoom}}};
  Dictionary result;
  for (const auto& [name, button] : kButtons) {
    const auto* found = window.standardWindowButton(button);
    result[name] = !found ? "none" : found->hidden ? "hidden" : "shown";
  }
  return result;
}

Value screen(NSWindow& window) {
  const auto found = window.screen();
  return found ? Codec<Rect>::encode(found->frame) : Value();
}

/// The caret of the text that has the focus, in screen points.
Value caret(NSWindow& window) {
  const auto text = std::dynamic_pointer_cast<platform::NSTextView>(window.firstResponder());
  if (!text) return {};
  const Rect inWindow = text->convertTo(text->caretRect(), nullptr);
  return Codec<Rect>::encode(inWindow.offsetBy(window.frame().origin()));
}

struct Field {
  const char* name;
  Value (*read)(NSWindow&);
};

constexpr auto kFields = std::to_array<Field>({
    {"number", [](NSWindow& w) -> Value { return w.windowNumber(); }},
    {"frame", [](NSWindow& w) { return Codec<Rect>::encode(w.frame()); }},
    {"contentRect", [](NSWindow& w) { return Codec<Rect>::encode(w.contentRectForFrameRect(w.frame())); }},
    {"frameForContent", [](NSWindow& w) { return Codec<Rect>::encode(w.frameRectForContentRect(w.frame())); }},
    {"level", [](NSWindow& w) -> Value { return w.level(); }},
    {"order",
     [](NSWindow& w) -> Value { return w.isVisible() ? Value(static_cast<std::int64_t>(w.orderedIndex())) : Value(); }},
    {"visible", [](NSWindow& w) -> Value { return w.isVisible(); }},
    {"key", [](NSWindow& w) -> Value { return w.isKeyWindow(); }},
    {"main", [](NSWindow& w) -> Value { return w.isMainWindow(); }},
    {"styleMask", [](NSWindow& w) -> Value { return static_cast<std::int64_t>(w.styleMask()); }},
    {"title", [](NSWindow& w) -> Value { return w.title(); }},
    {"titleHidden", [](NSWindow& w) -> Value { return w.isTitleHidden(); }},
    {"titlebarTransparent", [](NSWindow& w) -> Value { return w.titlebarAppearsTransparent(); }},
    {"backgroundColor", [](NSWindow& w) { return Codec<std::optional<platform::Color>>::encode(w.backgroundColor()); }},
    {"buttons", buttons},
    {"alpha", [](NSWindow& w) -> Value { return w.alphaValue(); }},
    {"minimized", [](NSWindow& w) -> Value { return w.isMiniaturized(); }},
    {"zoomed", [](NSWindow& w) -> Value { return w.isZoomed(); }},
    {"restorable", [](NSWindow& w) -> Value { return w.isRestorable(); }},
    {"collectionBehavior", [](NSWindow& w) -> Value { return static_cast<std::int64_t>(w.collectionBehavior()); }},
    {"tabbingMode", [](NSWindow& w) -> Value { return static_cast<int>(w.tabbingMode()); }},
    {"contentMinSize", [](NSWindow& w) { return Codec<platform::Size>::encode(w.contentMinSize()); }},
    {"frameAutosaveName",
     [](NSWindow& w) -> Value {
       return w.windowController() ? w.windowController()->windowFrameAutosaveName() : w.frameAutosaveName();
     }},
    {"children", children},
    {"parent", parent},
    {"sheet",
     [](NSWindow& w) -> Value { return w.attachedSheet() ? Value(w.attachedSheet()->windowNumber()) : Value(); }},
    {"inputBlocked", [](NSWindow& w) -> Value { return w.isInputBlocked(); }},
    {"screen", screen},
    {"nativeHandle", [](NSWindow& w) -> Value { return static_cast<std::int64_t>(w.nativeHandle()); }},
    {"firstResponder", [](NSWindow& w) -> Value { return className(*w.firstResponder()); }},
    {"caret", caret},
    {"views", [](NSWindow& w) -> Value { return w.contentView() ? viewTree(*w.contentView()) : Value(); }},
    {"attached", [](NSWindow& w) -> Value { return attachedValues(w); }},
});

}  // namespace

Dictionary windowState(NSWindow& window) {
  Dictionary state;
  for (const Field& field : kFields) state[field.name] = field.read(window);
  return state;
}

Value windowField(NSWindow& window, const std::string& name) {
  for (const Field& field : kFields)
    if (field.name == name) return field.read(window);
  throw RequestError(fmt::format("a window has no \"{}\"", name));
}

}  // namespace samplehost
