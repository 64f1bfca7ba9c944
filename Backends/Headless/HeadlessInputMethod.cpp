#include "Backends/Headless/HeadlessInputMethod.h"

#include "Backends/Headless/HeadlessWindowHost.h"

namespace headless {

bool HeadlessInputMethod::consumes(const platform::port::KeyInput& key) {
  return filter_ && filter_(key);
}

platform::port::SurfaceSink* HeadlessInputMethod::target() const {
  return windows_.active() ? &windows_.active()->sink() : nullptr;
}

void HeadlessInputMethod::compose(const std::u16string& text, std::optional<std::size_t> caret) {
  auto* const sink = target();
  if (!sink) return;
  preedit_ = text;
  composedOn_ = windows_.active();
  sink->surfaceMarkedText(text, caret.value_or(text.size()));
}

void HeadlessInputMethod::commit(const std::u16string& text) {
  auto* const sink = target();
  if (!sink) return;
  preedit_.clear();
  sink->surfaceCommittedText(text);
}

void HeadlessInputMethod::deleteSurrounding(std::ptrdiff_t offset, std::size_t length) {
  if (auto* const sink = target()) sink->surfaceDeleteSurrounding(offset, length);
}

std::optional<platform::port::TextInputState> HeadlessInputMethod::textInput() const {
  auto* const sink = target();
  return sink ? sink->surfaceTextInput() : std::nullopt;
}

void HeadlessInputMethod::textInputChanged(HeadlessSurface& surface, bool endComposition) {
  // A window that loses the keyboard ends its composition when the next surface is active already.
  if (!endComposition || (&surface != windows_.active() && &surface != composedOn_)) return;
  composedOn_ = nullptr;
  preedit_.clear();
  ++resetCount_;
}

}  // namespace headless
