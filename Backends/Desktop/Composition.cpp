#include "Backends/Desktop/Composition.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <algorithm>
#include <utility>

namespace desktop {

namespace {

/// Time for a busy input method; a preedit that it begins ends the wait before.
constexpr qint64 kEchoMilliseconds = 1000;

std::size_t caretIn(const QInputMethodEvent& event) {
  for (const QInputMethodEvent::Attribute& attribute : event.attributes())
    if (attribute.type == QInputMethodEvent::Cursor)
      return static_cast<std::size_t>(std::clamp<qsizetype>(attribute.start, 0, event.preeditString().size()));
  return static_cast<std::size_t>(event.preeditString().size());
}

}  // namespace

void Composition::handle(const QInputMethodEvent& event, platform::port::SurfaceSink& sink,
                         const std::function<bool()>& alive) {
  const QString& commit = event.commitString();
  const QString before = std::exchange(preedit_, event.preeditString());
  if (ignoring_) return;
  if (event.replacementLength() > 0) {
    sink.surfaceDeleteSurrounding(event.replacementStart(), static_cast<std::size_t>(event.replacementLength()));
    if (!alive()) return;
  }
  const bool commits = !commit.isEmpty() && !isEcho(commit);
  if (!event.preeditString().isEmpty()) ended_.clear();
  if (commits) {
    sink.surfaceCommittedText(commit.toStdU16String());
    if (!alive()) return;
  }
  if (!commits && event.preeditString().isEmpty() && !before.isEmpty()) withdrawn_ = before;
  const bool vanished = event.preeditString().isEmpty() && (before.isEmpty() || commits);
  if (!vanished) sink.surfaceMarkedText(event.preeditString().toStdU16String(), caretIn(event));
}

void Composition::end() {
  if (!preedit_.isEmpty()) {
    ended_ = std::exchange(preedit_, QString());
    sinceEnd_.start();
  }
  QGuiApplication::inputMethod()->reset();
}

void Composition::abandon(platform::port::SurfaceSink& sink) {
  const QString composed = std::exchange(preedit_, QString());
  const QString withdrawn = std::exchange(withdrawn_, QString());
  const QString& left = composed.isEmpty() ? withdrawn : composed;
  if (!left.isEmpty()) sink.surfaceCommittedText(left.toStdU16String());
}

void Composition::setIgnoring(bool ignoring) {
  // What it composed meanwhile from a key that has acted already must not come as text later.
  if (std::exchange(ignoring_, ignoring) && !ignoring) end();
}

bool Composition::isEcho(const QString& commit) {
  if (ended_.isEmpty() || commit != ended_ || sinceEnd_.elapsed() > kEchoMilliseconds) return false;
  ended_.clear();
  return true;
}

}  // namespace desktop
