// The cursor, the left button, and what a press does to the window under it.
#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr UINT kButtonUp = 0x0202;

}  // namespace

void Desktop::State::MouseButton(bool down, bool synthesized) {
  if (synthesized) {
    synthesizedButtonDown = down;
  }
  buttonDown = down;
  if (PassMouseHooks(down ? WM_LBUTTONDOWN : kButtonUp)) {
    return;
  }
  const HWND under = WindowFor(HitTest(kRootElement, cursor, true));
  Node* node = FindWindow(under);
  if (node == nullptr) {
    return;
  }
  if (!down) {
    const HWND released = std::exchange(pressed, nullptr);
    if (released == under && node->window.behaviour == Behaviour::Button) {
      ++node->presses;
      if (node->onPress) {
        const auto action = node->onPress;
        action();
      }
    }
    return;
  }
  pressed = under;
  ++node->mouseDowns;
  Note("WM_LBUTTONDOWN", "x=" + std::to_string(cursor.x) + " y=" + std::to_string(cursor.y));
  Activate(TopLevelOf(under));
  focus = under;
  if (node->window.behaviour == Behaviour::Edit) {
    // The caret goes behind the text: where in it a point lies is not modelled.
    node->selectionBegin = node->selectionEnd = node->window.title.size();
  }
}

// ---- Scripting ----

void Desktop::SetCursor(int x, int y) {
  const std::lock_guard guard(state_->mutex);
  state_->cursor = {x, y};
}

POINT Desktop::Cursor() const {
  const std::lock_guard guard(state_->mutex);
  return state_->cursor;
}

void Desktop::ClickAsUser(int x, int y) {
  const std::lock_guard guard(state_->mutex);
  constexpr UINT kMouseMove = 0x0200;
  state_->cursor = {x, y};
  state_->PassMouseHooks(kMouseMove);
  state_->MouseButton(true, false);
  state_->MouseButton(false, false);
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

BOOL SetCursorPos(int x, int y) {
  STANDIN_CALL(SetCursorPos);
  if (call.Fails()) {
    return FALSE;
  }
  if (call->tracing) {
    call->Note("SetCursorPos", "x=" + std::to_string(x) + " y=" + std::to_string(y));
  }
  call->cursor = {x, y};
  return TRUE;
}

BOOL GetCursorPos(POINT* point) {
  STANDIN_CALL(GetCursorPos);
  if (call.Fails()) {
    return FALSE;
  }
  *point = call->cursor;
  return TRUE;
}

void mouse_event(DWORD flags, DWORD /*dx*/, DWORD /*dy*/, DWORD /*data*/, ULONG_PTR /*extraInfo*/) {
  STANDIN_COUNTED_CALL(mouse_event);
  if (call->tracing) {
    call->Note("mouse_event", "flags=" + std::to_string(flags));
  }
  if ((flags & MOUSEEVENTF_LEFTDOWN) != 0) {
    call->MouseButton(true, true);
  }
  if ((flags & MOUSEEVENTF_LEFTUP) != 0) {
    call->MouseButton(false, true);
  }
}

}  // extern "C"
