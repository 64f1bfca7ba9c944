#pragma once

#include <memory>
#include <optional>

#include "Platform/AppKit/NSAttributedString.h"

namespace veltrik {

/// A text that the user writes in: the composer of a conversation, or a plain input. A window helper makes it over the
/// host's window and hands it out. Ranges are UTF-16 units; those given are cut to the text and to whole characters of
/// it. Every member may report to the delegate before it returns, and the delegate may call back in. Main thread.
class VeltrikTextInputView {
 public:
  virtual ~VeltrikTextInputView() = default;

  /// The whole text as it stands, a composition of the input method included.
  virtual std::optional<platform::NSAttributedString> attributedText() const = 0;
  /// Replaces the whole text without asking the delegate, reports `didChangeIn`, and keeps a step back to the text that
  /// stood before the last edit of the user. No text: empties it. Nothing happens while the view isn't editable.
  virtual void setAttributedText(const std::optional<platform::NSAttributedString>& text) = 0;

  virtual platform::NSRange selectedRange() const = 0;
  /// A composition that the selection leaves ends, its text stays.
  virtual void setSelectedRange(platform::NSRange range) = 0;

  /// What text written here looks like: the font, and nothing else.
  virtual platform::Attributes defaultAttributes() const = 0;

  /// Empties an editable text; ends the composition and forgets all steps back, editable or not.
  virtual void reset() = 0;
  /// Ends the composition of the input method; its text stays.
  virtual void unmark() = 0;
  /// False makes the text neither editable nor selectable, and hides it.
  virtual void setTextEditable(bool editable) = 0;
};

}  // namespace veltrik
