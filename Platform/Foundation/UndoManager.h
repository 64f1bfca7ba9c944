#pragma once

#include <functional>
#include <vector>

#include "Platform/Export.h"

namespace platform {

/// Two stacks of steps back. A step registered while undoing goes to the redo stack, while redoing to the undo stack;
/// one registered otherwise empties the redo stack. Main thread.
class PLATFORM_EXPORT UndoManager {
 public:
  /// `target` is an identity to remove by.
  void registerUndo(const void* target, std::function<void()> handler);
  void removeAllActions(const void* target);
  /// Runs the newest step; nothing when there is none or while one runs.
  void undo();
  void redo();
  bool canUndo() const { return !undo_.empty(); }
  bool canRedo() const { return !redo_.empty(); }

 private:
  struct Step {
    const void* target;
    std::function<void()> handler;
  };
  enum class State { idle, undoing, redoing };
  void run(std::vector<Step>& from, State state);
  std::vector<Step> undo_;
  std::vector<Step> redo_;
  State state_ = State::idle;
};

}  // namespace platform
