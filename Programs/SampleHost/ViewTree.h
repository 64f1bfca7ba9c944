#pragma once

#include <string>

#include "Platform/AppKit/NSView.h"
#include "Platform/Port/Value.h"

namespace samplehost {

/// A responder's class name, without its namespace.
std::string className(const platform::NSResponder& responder);
/// `{"class","frame","hidden","subviews"}`; a text view's also has "text", "selectedRange" and "markedRange".
platform::Value viewTree(const platform::NSView& view);

}  // namespace samplehost
