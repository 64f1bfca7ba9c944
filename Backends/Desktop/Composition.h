#pragma once

#include <QElapsedTimer>
#include <QString>
#include <functional>

#include "Platform/Port/WindowHost.h"

class QInputMethodEvent;

namespace desktop {

/// What the input method composes, for the whole application: there is one keyboard.
///
/// When a composition is ended from our side, the model has put its text in already. Input methods commit it once more
/// when they are reset or lose the focus, some to the window that has the focus next; one such commit is swallowed.
class Composition {
 public:
  /// Reports to the sink what an input method event says. The sink may be gone afterwards.
  void handle(const QInputMethodEvent& event, platform::port::SurfaceSink& sink, const std::function<bool()>& alive);
  /// Makes the input method forget its preedit.
  void end();
  /// A key goes to the input method.
  void keyAsked() { withdrawn_.clear(); }
  /// The input method is gone or silent: what it composed becomes text, also what was withdrawn since the last key,
  /// which is what some do when they die. The sink may be gone afterwards.
  void abandon(platform::port::SurfaceSink& sink);
  /// From now on nothing counts that the input method says, until it is given up with `false`.
  void setIgnoring(bool ignoring);

 private:
  bool isEcho(const QString& commit);

  QString preedit_;
  QString ended_;
  QString withdrawn_;
  bool ignoring_ = false;
  QElapsedTimer sinceEnd_;
};

}  // namespace desktop
