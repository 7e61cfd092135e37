// The cursor, the left button, and what a press does to the window under it.
#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr UINT kMouseMove = 0x0200;
constexpr UINT kButtonUp = 0x0202;

bool TakesFocus(Behaviour behaviour) {
  return behaviour == Behaviour::Edit || behaviour == Behaviour::Button || behaviour == Behaviour::List;
}

void Press(State& state, Node& window) {
  const HWND handle = WindowFor(window.id);
  ++window.mouseDowns;
  state.pressed = handle;
  state.Note("WM_LBUTTONDOWN", "x=", state.cursor.x, " y=", state.cursor.y);
  state.Activate(handle);
  if (TakesFocus(window.window.behaviour)) {
    state.GiveFocus(handle);
  }
  if (window.window.behaviour == Behaviour::Edit) {
    // The caret goes behind the text: where in it a point lies is not modelled.
    window.selectionBegin = window.selectionEnd = window.window.title.size();
  }
}

// `window` may be gone afterwards, when the script of the button destroys it.
void Release(State& state, Node& window) {
  state.Note("WM_LBUTTONUP", "x=", state.cursor.x, " y=", state.cursor.y);
  if (state.pressed != WindowFor(window.id) || window.window.behaviour != Behaviour::Button) {
    return;
  }
  ++window.presses;
  if (const auto action = window.onPress) {
    const CallOut out(state, CallOut::To::Script);
    action();
  }
}

}  // namespace

void State::MouseButton(bool down, bool synthesized) {
  if (synthesized) {
    synthesizedButtonDown = down;
  }
  if (HooksSwallow(down ? WM_LBUTTONDOWN : kButtonUp)) {
    return;
  }
  const Element under = HitTest(kRootElement, cursor, true);
  if (Node* window = under == kRootElement ? nullptr : Find(under)) {
    down ? Press(*this, *window) : Release(*this, *window);
  }
  if (!down) {
    pressed = nullptr;
  }
}

// ---- Scripting ----

void User::MoveCursor(int x, int y) {
  const std::lock_guard guard(state_->mutex);
  state_->cursor = {x, y};
}

POINT User::Cursor() const {
  const std::lock_guard guard(state_->mutex);
  return state_->cursor;
}

void User::Click(int x, int y) {
  const std::lock_guard guard(state_->mutex);
  state_->cursor = {x, y};
  state_->HooksSwallow(kMouseMove);
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
  call->Note("SetCursorPos", "x=", x, " y=", y);
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

void mouse_event(DWORD flags, DWORD dx, DWORD dy, DWORD data, ULONG_PTR extraInfo) {
  STANDIN_COUNTED_CALL(mouse_event);
  call->Note("mouse_event", "flags=", flags, " dx=", dx, " dy=", dy, " data=", data,
             " extra=", static_cast<std::int64_t>(extraInfo));
  if ((flags & MOUSEEVENTF_LEFTDOWN) != 0) {
    call->MouseButton(true, true);
  }
  if ((flags & MOUSEEVENTF_LEFTUP) != 0) {
    call->MouseButton(false, true);
  }
}

}  // extern "C"
