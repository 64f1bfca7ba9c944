#include "Programs/SampleHost/ViewTree.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSTextView.h"
#include "Programs/SampleHost/Codec.h"

namespace samplehost {

std::string className(const platform::NSResponder& responder) {
  const std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(typeid(responder).name(), nullptr, nullptr, nullptr), &std::free);
  const std::string name = readable ? readable.get() : typeid(responder).name();
  const std::size_t colon = name.rfind("::");
  return colon == std::string::npos ? name : name.substr(colon + 2);
}

platform::Value viewTree(const platform::NSView& view) {
  platform::Value::Array subviews;
  for (const auto& subview : view.subviews()) subviews.push_back(viewTree(*subview));
  platform::Dictionary result = {{"class", className(view)},
                                 {"frame", Codec<platform::Rect>::encode(view.frame())},
                                 {"hidden", view.isHidden()},
                                 {"subviews", subviews}};
  if (const auto* field = dynamic_cast<const platform::NSTextField*>(&view)) result["text"] = field->stringValue();
  if (const auto* button = dynamic_cast<const platform::NSButton*>(&view)) result["text"] = button->title();
  if (const auto* text = dynamic_cast<const platform::NSTextView*>(&view)) {
    result["text"] = text->string();
    result["selectedRange"] = Codec<platform::NSRange>::encode(text->selectedRange());
    result["markedRange"] = Codec<platform::NSRange>::encode(text->markedRange());
  }
  return result;
}

}  // namespace samplehost
