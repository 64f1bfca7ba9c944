#pragma once

#include <functional>
#include <memory>

/// The least a Qt program needs for what our windows do: what they are measured against, in one process with them and
/// on the same event loop. Needs our Desktop back end, or another application object, to stand.
namespace bare {

using Happened = std::function<void()>;

/// Moves the real pointer, in points from the top left corner.
void movePointer(int x, int y);
/// A signal on the session bus with as much in it as a published frame.
void publish(int width, int height);

/// A frameless window; with `above` it belongs to that one and stays above it.
class Window {
 public:
  Window(int x, int y, int width, int height, const Window* above = nullptr);
  ~Window();
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  /// The pointer moved over the window; where to, in points from the left edge of the screen.
  void onMoved(std::function<void(int x)> moved);
  /// After each painting.
  void onPainted(Happened painted);
  void show();
  void resize(int width, int height);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace bare
