// Message queues, the low-level mouse hook, and the cursor's shape.
#include "standin/desktop/state.h"

namespace standin {

namespace {

Thread* FindThread(Desktop::State& state, DWORD id) {
  for (const auto& thread : state.threads) {
    if (thread->id == id) {
      return thread.get();
    }
  }
  return nullptr;
}

}  // namespace

// Offers an event to the hooks, newest first; true when one swallows it. A hook is called while its thread waits for
// messages, which is when Windows calls it.
bool Desktop::State::PassMouseHooks(UINT message) {
  const auto installed = hooks;
  for (auto hook = installed.rbegin(); hook != installed.rend(); ++hook) {
    const Thread* thread = FindThread(*this, hook->second.thread);
    if (thread == nullptr || !thread->inGetMessage) {
      continue;
    }
    MSLLHOOKSTRUCT event{};
    event.pt = cursor;
    if (hook->second.procedure(0, message, reinterpret_cast<LPARAM>(&event)) != 0) {
      return true;
    }
  }
  return false;
}

// ---- Scripting ----

void Desktop::PostMessageToThread(UINT message) {
  const std::lock_guard guard(state_->mutex);
  MSG posted{};
  posted.message = message;
  // From an action, to whoever waits for messages; else to the caller.
  for (const auto& thread : state_->threads) {
    if (thread->inGetMessage) {
      thread->messages.push_back(posted);
      state_->changed.notify_all();
      return;
    }
  }
  state_->Self().messages.push_back(posted);
}

void Desktop::PostQuit(int code) {
  const std::lock_guard guard(state_->mutex);
  for (const auto& thread : state_->threads) {
    if (thread->inGetMessage) {
      thread->quit = code;
      state_->changed.notify_all();
      return;
    }
  }
  state_->Self().quit = code;
}

bool Desktop::QuitPending() const {
  const std::lock_guard guard(state_->mutex);
  return state_->Self().quit.has_value();
}

int Desktop::HookCount() const {
  const std::lock_guard guard(state_->mutex);
  return static_cast<int>(state_->hooks.size());
}

std::string Desktop::CursorShape() const {
  const std::lock_guard guard(state_->mutex);
  return state_->cursorShape;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

namespace {

constexpr std::uintptr_t kArrow = 32512;
constexpr std::uintptr_t kCross = 32515;

}  // namespace

extern "C" {

HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE /*module*/, DWORD /*threadId*/) {
  STANDIN_CALL(SetWindowsHookExW);
  if (call.Fails() || kind != WH_MOUSE_LL) {
    return nullptr;
  }
  const auto hook = reinterpret_cast<HHOOK>(call->nextHook += 8);
  call->hooks[hook] = {procedure, call->Self().id};
  return hook;
}

BOOL UnhookWindowsHookEx(HHOOK hook) {
  STANDIN_CALL(UnhookWindowsHookEx);
  return call->hooks.erase(hook) > 0 && !call.Fails();
}

LRESULT CallNextHookEx(HHOOK /*hook*/, int /*code*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
  STANDIN_COUNTED_CALL(CallNextHookEx);
  return 0;
}

BOOL GetMessageW(MSG* message, HWND /*window*/, UINT /*first*/, UINT /*last*/) {
  STANDIN_CALL(GetMessageW);
  *message = {};
  if (call.Fails()) {
    return -1;
  }
  Thread& self = call->Self();
  self.inGetMessage = true;
  call->Wait(
      kNever, [&self] { return !self.messages.empty() || self.quit.has_value(); }, "a message");
  self.inGetMessage = false;
  if (!self.messages.empty()) {
    *message = self.messages.front();
    self.messages.pop_front();
    return TRUE;
  }
  message->message = WM_QUIT;
  message->wParam = static_cast<WPARAM>(*self.quit);
  self.quit.reset();
  return FALSE;
}

BOOL TranslateMessage(const MSG* /*message*/) {
  STANDIN_COUNTED_CALL(TranslateMessage);
  return FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
  STANDIN_COUNTED_CALL(DispatchMessageW);
  call->Note("DispatchMessageW", "message=" + std::to_string(message->message));
  return 0;
}

BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
  STANDIN_CALL(PostThreadMessageW);
  Thread* thread = FindThread(call.State(), threadId);
  if (call.Fails() || thread == nullptr) {
    return FALSE;
  }
  MSG posted{};
  posted.message = message;
  posted.wParam = wParam;
  posted.lParam = lParam;
  thread->messages.push_back(posted);
  call->changed.notify_all();
  return TRUE;
}

void PostQuitMessage(int exitCode) {
  STANDIN_COUNTED_CALL(PostQuitMessage);
  call->Self().quit = exitCode;
}

HCURSOR LoadCursorW(HINSTANCE /*module*/, const WCHAR* name) {
  STANDIN_CALL(LoadCursorW);
  return call.Fails() ? nullptr : reinterpret_cast<HCURSOR>(const_cast<WCHAR*>(name));
}

HCURSOR SetCursor(HCURSOR cursor) {
  STANDIN_COUNTED_CALL(SetCursor);
  const auto previous = reinterpret_cast<HCURSOR>(call->cursorShape == "cross" ? kCross : kArrow);
  if (cursor != nullptr) {
    call->cursorShape = reinterpret_cast<std::uintptr_t>(cursor) == kCross ? "cross" : "arrow";
  }
  return previous;
}

}  // extern "C"
