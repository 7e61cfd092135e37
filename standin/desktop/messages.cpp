// Message queues, low-level mouse hooks, and the cursor's shape.
#include "standin/desktop/state.h"

namespace standin {

namespace {

LRESULT CallProcedure(State& state, const HookCall& call) {
  const CallOut out(state, CallOut::To::Library);
  MSLLHOOKSTRUCT event = call.event;
  return call.procedure(0, call.message, reinterpret_cast<LPARAM>(&event));
}

// A hook procedure runs on the thread that installed it, whichever thread's input it is about.
LRESULT CallOn(State& state, Thread& owner, HookCall& call) {
  if (&owner == &state.Self()) {
    return CallProcedure(state, call);
  }
  owner.hookCalls.push_back(&call);
  state.changed.notify_all();
  state.Wait(kNever, [&] { return call.done || owner.ended; }, "a hook procedure");
  return call.result;
}

void AnswerHookCalls(State& state, Thread& self) {
  while (!self.hookCalls.empty()) {
    HookCall& call = *self.hookCalls.front();
    self.hookCalls.pop_front();
    call.result = CallProcedure(state, call);
    call.done = true;
    state.changed.notify_all();
  }
}

// The thread that receives a message of the script: the one that waits for messages, or else the calling one.
Thread& Addressee(State& state) {
  for (const auto& thread : state.threads) {
    if (thread->inGetMessage) {
      return *thread;
    }
  }
  return state.Self();
}

}  // namespace

// Calls the hooks, the newest first, until one swallows the event. A hook runs on the thread that installed it, while
// that thread waits for messages; the hook of a thread that is doing something else is skipped.
bool State::HooksSwallow(UINT message) {
  const auto installed = hooks;
  for (auto hook = installed.rbegin(); hook != installed.rend(); ++hook) {
    const std::shared_ptr<Thread> owner = FindThread(hook->second.thread);
    if (owner == nullptr || owner->ended || !owner->inGetMessage || !hooks.contains(hook->first)) {
      continue;
    }
    HookCall call{hook->second.procedure, message, {}};
    call.event.pt = cursor;
    call.event.time = static_cast<DWORD>(Now() / 1'000'000 + tickOffset);
    if (CallOn(*this, *owner, call) != 0) {
      return true;
    }
  }
  return false;
}

// ---- Scripting ----

void Host::PostMessage(UINT message) {
  const std::lock_guard guard(state_->mutex);
  MSG posted{};
  posted.message = message;
  Addressee(*state_).messages.push_back(posted);
  state_->changed.notify_all();
}

void Host::PostQuit(int code) {
  const std::lock_guard guard(state_->mutex);
  Addressee(*state_).quit = code;
  state_->changed.notify_all();
}

bool Host::QuitPending() const {
  const std::lock_guard guard(state_->mutex);
  return state_->Self().quit.has_value();
}

int Host::HookCount() const {
  const std::lock_guard guard(state_->mutex);
  return static_cast<int>(state_->hooks.size());
}

std::string User::CursorShape() const {
  const std::lock_guard guard(state_->mutex);
  const auto shape = reinterpret_cast<std::uintptr_t>(state_->cursorShape);
  if (shape == reinterpret_cast<std::uintptr_t>(IDC_ARROW)) {
    return "arrow";
  }
  return shape == reinterpret_cast<std::uintptr_t>(IDC_CROSS) ? "cross" : "none";
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE /*module*/, DWORD threadId) {
  STANDIN_CALL(SetWindowsHookExW);
  // A low-level hook is for all threads.
  if (call.Fails() || kind != WH_MOUSE_LL || procedure == nullptr || threadId != 0) {
    return nullptr;
  }
  const auto hook = reinterpret_cast<HHOOK>(call->nextHook += 8);
  call->hooks[hook] = {procedure, call->Self().id};
  return hook;
}

BOOL UnhookWindowsHookEx(HHOOK hook) {
  STANDIN_CALL(UnhookWindowsHookEx);
  const bool wasInstalled = call->hooks.erase(hook) > 0;
  return wasInstalled && !call.Fails();
}

LRESULT CallNextHookEx(HHOOK /*hook*/, int /*code*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
  STANDIN_COUNTED_CALL(CallNextHookEx);
  return 0;
}

BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) {
  STANDIN_CALL(GetMessageW);
  *message = {};
  if (window != nullptr || first != 0 || last != 0) {
    call->Misuse("waited for some messages only, which nobody sends here");
  }
  if (call.Fails()) {
    return -1;
  }
  Thread& self = call->Self();
  const bool outer = std::exchange(self.inGetMessage, true);
  while (self.messages.empty() && !self.quit) {
    call->Wait(kNever, [&self] { return !self.messages.empty() || self.quit || !self.hookCalls.empty(); }, "a message");
    AnswerHookCalls(*call, self);
  }
  self.inGetMessage = outer;
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
  call->Note("DispatchMessageW", "message=", message->message);
  return 0;
}

BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
  STANDIN_CALL(PostThreadMessageW);
  const std::shared_ptr<Thread> thread = call->FindThread(threadId);
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
  return std::exchange(call->cursorShape, cursor);
}

}  // extern "C"
