#include "Platform/Foundation/UndoManager.h"

#include <utility>

namespace platform {

void UndoManager::registerUndo(const void* target, std::function<void()> handler) {
  auto& stack = state_ == State::undoing ? redo_ : undo_;
  stack.push_back({target, std::move(handler)});
  if (state_ == State::idle) redo_.clear();
}

void UndoManager::removeAllActions(const void* target) {
  const auto isOfTarget = [target](const Step& step) { return step.target == target; };
  std::erase_if(undo_, isOfTarget);
  std::erase_if(redo_, isOfTarget);
}

void UndoManager::undo() {
  run(undo_, State::undoing);
}
void UndoManager::redo() {
  run(redo_, State::redoing);
}

void UndoManager::run(std::vector<Step>& from, State state) {
  if (from.empty() || state_ != State::idle) return;
  const Step step = std::move(from.back());
  from.pop_back();
  struct Running {
    State& state;
    ~Running() { state = State::idle; }
  } const running{state_};
  state_ = state;
  step.handler();
}

}  // namespace platform
