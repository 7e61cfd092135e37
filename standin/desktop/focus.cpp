// Which window is in front and which one gets the keys.
#include "standin/desktop/state.h"

namespace standin {

void State::Activate(HWND window) {
  const HWND top = TopLevelOf(window);
  if (top == nullptr) {
    return;
  }
  HWND lowestOwner = top;
  while (const Node* owner = FindWindow(FindWindow(lowestOwner)->window.owner)) {
    lowestOwner = WindowFor(owner->id);
  }
  Raise(lowestOwner);
  Raise(top);
  if (foreground == top) {
    return;
  }
  foreground = top;
  const HWND lastFocus = FindWindow(top)->lastFocus;
  focus = FindWindow(lastFocus) != nullptr ? lastFocus : top;
}

// Keys go to the window as soon as its top-level window is in front.
void State::GiveFocus(HWND window) {
  const HWND top = TopLevelOf(window);
  FindWindow(top)->lastFocus = window;
  if (foreground == top) {
    focus = window;
  }
}

HWND Windows::Focus() const {
  const std::lock_guard guard(state_->mutex);
  return state_->focus;
}

HWND Windows::Foreground() const {
  const std::lock_guard guard(state_->mutex);
  return state_->foreground;
}

void Windows::SetForeground(HWND window) {
  const std::lock_guard guard(state_->mutex);
  state_->Activate(window);
}

void Windows::RefuseForeground(int times) {
  const std::lock_guard guard(state_->mutex);
  state_->foregroundRefusals = times;
}

void Windows::RefuseThreadAttach(bool refuse) {
  const std::lock_guard guard(state_->mutex);
  state_->attachRefused = refuse;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

namespace {

// Whether the calling thread shares the window's input queue: focus and activation work there only. The desktop's own
// window takes part in neither.
bool SharesQueue(State& state, HWND window) {
  const Node* node = state.FindWindow(window);
  const Thread& self = state.Self();
  return node != nullptr && node->id != kRootElement &&
         (node->thread == self.id || self.attachedTo.contains(node->thread));
}

}  // namespace

extern "C" {

BOOL SetForegroundWindow(HWND window) {
  STANDIN_CALL(SetForegroundWindow);
  if (call.Fails() || call->TopLevelOf(window) == nullptr) {
    return FALSE;
  }
  const bool refused = call->foregroundRefusals != 0;
  call->foregroundRefusals -= call->foregroundRefusals > 0 ? 1 : 0;
  call->Note("SetForegroundWindow", refused ? "refused" : "");
  if (!refused) {
    call->Activate(window);
  }
  return !refused;
}

HWND GetForegroundWindow() {
  STANDIN_CALL(GetForegroundWindow);
  return call.Fails() ? nullptr : call->foreground;
}

HWND SetActiveWindow(HWND window) {
  STANDIN_CALL(SetActiveWindow);
  const HWND previous = call->foreground;
  if (call.Fails() || !SharesQueue(*call, window)) {
    return nullptr;
  }
  call->Activate(window);
  return previous;
}

HWND SetFocus(HWND window) {
  STANDIN_CALL(SetFocus);
  const HWND previous = call->focus;
  if (call.Fails() || !SharesQueue(*call, window)) {
    return nullptr;
  }
  call->GiveFocus(window);
  return previous;
}

BOOL AttachThreadInput(DWORD attach, DWORD to, BOOL attachThem) {
  STANDIN_CALL(AttachThreadInput);
  const std::shared_ptr<Thread> thread = call->FindThread(attach);
  if (!attachThem) {
    if (thread == nullptr || thread->attachedTo.erase(to) == 0) {
      call->Misuse("detached an input queue that was not attached");
      return FALSE;
    }
    return !call.Fails();
  }
  if (call.Fails() || call->attachRefused || thread == nullptr || attach == to || !call->IsThread(to)) {
    return FALSE;
  }
  thread->attachedTo.insert(to);
  return TRUE;
}

}  // extern "C"
