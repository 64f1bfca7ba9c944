#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "Backends/Headless/Journal.h"
#include "Platform/Port/WindowHost.h"

namespace headless {

class HeadlessSurface;
class HeadlessWindowHost;

/// An input method that does what a test scripts. It serves the activated surface.
class HeadlessInputMethod {
 public:
  /// True: the key is the input method's own and goes no further. May call `compose` and `commit`.
  using Filter = std::function<bool(const platform::port::KeyInput&)>;

  HeadlessInputMethod(HeadlessWindowHost& windows, Journal& journal) : windows_(windows), journal_(journal) {}

  /// Asked for each key that the application leaves to the input method; an empty one passes all keys on.
  void setFilter(Filter filter) { filter_ = std::move(filter); }
  bool consumes(const platform::port::KeyInput& key);

  /// Shows a preedit text; its caret at the end unless said otherwise. Nothing happens without an activated surface.
  void compose(const std::u16string& text, std::optional<std::size_t> caret = std::nullopt);
  void commit(const std::u16string& text);
  /// Removes `length` units that start `offset` units after the caret (negative: before).
  void deleteSurrounding(std::ptrdiff_t offset, std::size_t length);
  /// What the input method is told of the focused text; nothing when none has the focus.
  std::optional<platform::port::TextInputState> textInput() const;
  /// The preedit that stands, as the input method believes.
  std::u16string preedit() const { return preedit_; }
  /// How often the application asked to forget the preedit.
  int resetCount() const { return resetCount_; }

 private:
  friend class HeadlessBackend;
  void textInputChanged(HeadlessSurface& surface, bool endComposition);
  platform::port::SurfaceSink* target() const;

  HeadlessWindowHost& windows_;
  Journal& journal_;
  Filter filter_;
  std::u16string preedit_;
  const HeadlessSurface* composedOn_ = nullptr;  ///< an identity: the surface may have gone
  int resetCount_ = 0;
};

}  // namespace headless
