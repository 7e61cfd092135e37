// Low-level hooks on a thread of their own: the system takes a hook away whose callback is slow, so the callbacks only
// decide and put into a queue.
#include "host/world/user_input.h"

#include <windows.h>

#include <algorithm>
#include <deque>
#include <memory>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/outline.h"
#include "host/world/press_hold.h"

namespace host::world {

namespace {

// What this program sends carries it, so that other recorders can tell; hooks ignore it because it is injected.
constexpr ULONG_PTR kOurMark = 0x4b4f5256;
constexpr DWORD kWatchdogMs = 500;
// The last input is told in ticks of up to 16 ms, and other hooks may take their time before ours is called.
constexpr DWORD kWatchdogToleranceMs = 1000;

class Lock {
 public:
  explicit Lock(SRWLOCK& lock) : lock_(lock) {
    AcquireSRWLockExclusive(&lock_);
  }
  ~Lock() {
    ReleaseSRWLockExclusive(&lock_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  SRWLOCK& lock_;
};

struct HandleCloser {
  void operator()(HANDLE handle) const {
    CloseHandle(handle);
  }
};
using Handle = std::unique_ptr<void, HandleCloser>;

struct HookRemover {
  void operator()(HHOOK hook) const {
    UnhookWindowsHookEx(hook);
  }
};
using Hook = std::unique_ptr<HHOOK__, HookRemover>;

// A terminal with tabs is a program of its own, and its window is not this console's.
HWND TerminalWithTabs() {
  WCHAR name[64] = {};
  const HWND front = GetForegroundWindow();
  GetClassNameW(front, name, static_cast<int>(std::size(name)));
  return WideView(name) == L"CASCADIA_HOSTING_WINDOW_CLASS" ? front : nullptr;
}

bool IsModifier(DWORD virtualKey) {
  switch (virtualKey) {
    case VK_SHIFT:
    case VK_LSHIFT:
    case VK_RSHIFT:
    case VK_CONTROL:
    case VK_LCONTROL:
    case VK_RCONTROL:
    case VK_MENU:
    case VK_LMENU:
    case VK_RMENU:
    case VK_LWIN:
    case VK_RWIN:
    case VK_CAPITAL:
    case VK_NUMLOCK:
    case VK_SCROLL:
      return true;
    default:
      return false;
  }
}

void Send(DWORD flags) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  input.mi.dwExtraInfo = kOurMark;
  SendInput(1, &input, sizeof input);
}

// With swapped buttons the left one is the physical right one, which is what SendInput means.
DWORD PhysicalLeft(bool down) {
  const bool swapped = GetSystemMetrics(SM_SWAPBUTTON) != 0;
  return down ? (swapped ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN)
              : (swapped ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP);
}

void SendAt(POINT point, DWORD flags) {
  POINT now{};
  GetCursorPos(&now);
  const bool moved = now.x != point.x || now.y != point.y;
  if (moved) {
    SetCursorPos(point.x, point.y);
  }
  Send(flags);
  if (moved) {
    SetCursorPos(now.x, now.y);
  }
}

// A key as the hook saw it; what it types is found out later, on the recording thread.
struct RawInput {
  UserInput input;
  UINT scanCode = 0;
  bool capsLock = false;
};

std::string TypedBy(const RawInput& raw) {
  const Modifiers& modifiers = raw.input.key.modifiers;
  BYTE keys[256] = {};
  const auto hold = [&](int key, bool down) { keys[key] = down ? 0x80 : 0; };
  hold(VK_SHIFT, modifiers.shift);
  hold(VK_CONTROL, modifiers.control);
  hold(VK_MENU, modifiers.alt);
  keys[VK_CAPITAL] = raw.capsLock ? 1 : 0;
  // Ctrl and Alt together are AltGr, which types on many layouts; alone neither does.
  if (modifiers.windows || modifiers.control != modifiers.alt) {
    return {};
  }
  const HKL layout = GetKeyboardLayout(GetWindowThreadProcessId(GetForegroundWindow(), nullptr));
  constexpr UINT kKeepKeyboardState = 4;  // a dead key stays pressed for the program that gets it
  WCHAR typed[8] = {};
  const int count = ToUnicodeEx(static_cast<UINT>(raw.input.key.virtualKey), raw.scanCode, keys, typed,
                                static_cast<int>(std::size(typed)), kKeepKeyboardState, layout);
  return count > 0 && typed[0] >= 0x20 && typed[0] != 0x7f ? Utf8({typed, static_cast<std::size_t>(count)})
                                                           : std::string();
}

}  // namespace

struct InputWatch::State {
  explicit State(const std::vector<KeyChord>& keys) : hotkeys(keys) {}

  const std::vector<KeyChord> hotkeys;
  const HWND terminal = TerminalWithTabs();
  Handle queued{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
  Handle ready{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  Handle stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  Handle thread;
  bool hooked = false;

  // Guarded by the lock.
  SRWLOCK lock = SRWLOCK_INIT;
  std::deque<RawInput> queue;
  PressHold presses{GetSystemMetrics(SM_CXDRAG), GetSystemMetrics(SM_CYDRAG)};

  // Of the hooks' thread alone.
  Modifiers modifiers;
  std::vector<DWORD> swallowedKeys;  // hotkeys that are down; no program gets their release either
  DWORD lastTold = GetTickCount();
  DWORD lastChecked = GetTickCount();
  Hook mouseHook;
  Hook keyHook;

  void Run();
  bool SetHooks();
  void CheckHooks();
  void LetGoWhatIsDue(bool all);
  bool Mouse(WPARAM message, const MSLLHOOKSTRUCT& mouse);
  bool Key(bool down, const KBDLLHOOKSTRUCT& key);
  void FollowModifiers(DWORD virtualKey, bool down);
  bool LetGo(std::uint64_t press);
  void Enqueue(const RawInput& raw);
  bool IsAboutUs(const UserInput& input) const;
};

namespace {

InputWatch::State* g_watching = nullptr;

LRESULT CALLBACK OnMouse(int code, WPARAM message, LPARAM data) {
  const bool keep = code == HC_ACTION && g_watching->Mouse(message, *reinterpret_cast<const MSLLHOOKSTRUCT*>(data));
  return keep ? 1 : CallNextHookEx(nullptr, code, message, data);
}

LRESULT CALLBACK OnKey(int code, WPARAM message, LPARAM data) {
  const bool down = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
  const bool keep = code == HC_ACTION && g_watching->Key(down, *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data));
  return keep ? 1 : CallNextHookEx(nullptr, code, message, data);
}

DWORD WINAPI RunWatch(void* state) {
  static_cast<InputWatch::State*>(state)->Run();
  return 0;
}

}  // namespace

bool InputWatch::State::SetHooks() {
  const HINSTANCE module = GetModuleHandleW(nullptr);
  mouseHook.reset(SetWindowsHookExW(WH_MOUSE_LL, OnMouse, module, 0));
  keyHook.reset(SetWindowsHookExW(WH_KEYBOARD_LL, OnKey, module, 0));
  return mouseHook && keyHook;
}

void InputWatch::State::Run() {
  // The whole desktop waits for the hooks.
  SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_HIGHEST);
  hooked = SetHooks();
  SetEvent(ready.get());
  const HANDLE stopped = stop.get();
  constexpr DWORD kLookMs = 20;  // how much later than allowed a press may be let go
  while (hooked && MsgWaitForMultipleObjects(1, &stopped, FALSE, kLookMs, QS_ALLINPUT) != WAIT_OBJECT_0) {
    // The hooks are called in here.
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
      DispatchMessageW(&message);
    }
    LetGoWhatIsDue(false);
    CheckHooks();
  }
  mouseHook.reset();
  keyHook.reset();
  LetGoWhatIsDue(true);
}

// The system takes slow hooks away without a word; then input goes on, and nobody tells us.
void InputWatch::State::CheckHooks() {
  const DWORD now = GetTickCount();
  if (now - lastChecked < kWatchdogMs) {
    return;
  }
  lastChecked = now;
  LASTINPUTINFO last{sizeof last, 0};
  if (!GetLastInputInfo(&last) || static_cast<int>(last.dwTime - lastTold) < static_cast<int>(kWatchdogToleranceMs)) {
    return;
  }
  lastTold = now;
  hooked = SetHooks();
  RawInput raw;
  raw.input.kind = UserInput::Kind::Interrupted;
  Enqueue(raw);
}

void InputWatch::State::LetGoWhatIsDue(bool all) {
  for (;;) {
    std::optional<std::uint64_t> due;
    {
      const Lock guard(lock);
      due = presses.Due(Now(), all ? 0 : kLongestHoldMs);
    }
    if (!due || !LetGo(*due)) {
      return;
    }
  }
}

bool InputWatch::State::LetGo(std::uint64_t press) {
  std::optional<Point> at;
  {
    const Lock guard(lock);
    at = presses.BeginLettingGo(press);
  }
  if (!at) {
    return false;
  }
  // Without the lock: the hooks see what is sent here, too.
  SendAt({at->x, at->y}, PhysicalLeft(true));
  std::optional<Point> releasedAt;
  {
    const Lock guard(lock);
    releasedAt = presses.EndLettingGo(press);
  }
  if (releasedAt) {
    SendAt({releasedAt->x, releasedAt->y}, PhysicalLeft(false));
  }
  return true;
}

void InputWatch::State::Enqueue(const RawInput& raw) {
  const Lock guard(lock);
  queue.push_back(raw);
  queue.back().input.time = Now();
  SetEvent(queued.get());
}

bool InputWatch::State::Mouse(WPARAM message, const MSLLHOOKSTRUCT& mouse) {
  lastTold = GetTickCount();
  if ((mouse.flags & LLMHF_INJECTED) != 0) {
    return false;
  }
  const Point at{mouse.pt.x, mouse.pt.y};
  RawInput raw;
  raw.input.at = at;
  if (message == WM_MOUSEMOVE) {
    bool drags = false;
    {
      const Lock guard(lock);
      drags = presses.Move(at);
    }
    if (drags) {
      raw.input.kind = UserInput::Kind::Drag;
      Enqueue(raw);
    }
    return false;
  }
  if (message == WM_LBUTTONUP) {
    const Lock guard(lock);
    return presses.Up(at);
  }
  if (message != WM_LBUTTONDOWN) {
    if (message == WM_RBUTTONDOWN || message == WM_MBUTTONDOWN || message == WM_XBUTTONDOWN ||
        message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL) {
      raw.input.kind = UserInput::Kind::OtherPress;
      Enqueue(raw);
    }
    return false;
  }
  raw.input.kind = UserInput::Kind::Press;
  const Lock guard(lock);
  raw.input.time = Now();
  raw.input.held = presses.Down(at, raw.input.time);
  queue.push_back(raw);
  SetEvent(queued.get());
  return true;
}

// Asked outside the hook: what is at a point is asked of the window there, which may take its time.
bool InputWatch::State::IsAboutUs(const UserInput& input) const {
  if (input.kind != UserInput::Kind::Press && input.kind != UserInput::Kind::OtherPress) {
    return false;
  }
  const HWND window = RootAt(input.at);
  return window == nullptr || IsOurWindow(window) || window == terminal;
}

void InputWatch::State::FollowModifiers(DWORD virtualKey, bool down) {
  switch (virtualKey) {
    case VK_SHIFT:
    case VK_LSHIFT:
    case VK_RSHIFT:
      modifiers.shift = down;
      break;
    case VK_CONTROL:
    case VK_LCONTROL:
    case VK_RCONTROL:
      modifiers.control = down;
      break;
    case VK_MENU:
    case VK_LMENU:
    case VK_RMENU:
      modifiers.alt = down;
      break;
    case VK_LWIN:
    case VK_RWIN:
      modifiers.windows = down;
      break;
    default:
      break;
  }
}

bool InputWatch::State::Key(bool down, const KBDLLHOOKSTRUCT& key) {
  lastTold = GetTickCount();
  if ((key.flags & LLKHF_INJECTED) != 0) {
    return false;
  }
  FollowModifiers(key.vkCode, down);
  const auto swallowed = std::find(swallowedKeys.begin(), swallowedKeys.end(), key.vkCode);
  if (!down) {
    const bool keep = swallowed != swallowedKeys.end();
    if (keep) {
      swallowedKeys.erase(swallowed);
    }
    return keep;
  }
  if (IsModifier(key.vkCode)) {
    return false;
  }
  RawInput raw;
  raw.input.key = {static_cast<int>(key.vkCode), modifiers};
  raw.scanCode = key.scanCode;
  raw.capsLock = (GetKeyState(VK_CAPITAL) & 1) != 0;
  const auto hotkey = std::find(hotkeys.begin(), hotkeys.end(), raw.input.key);
  if (hotkey != hotkeys.end()) {
    raw.input.kind = UserInput::Kind::Hotkey;
    raw.input.hotkey = static_cast<std::size_t>(hotkey - hotkeys.begin());
    // A key that is held down repeats.
    if (swallowed == swallowedKeys.end()) {
      swallowedKeys.push_back(key.vkCode);
      Enqueue(raw);
    }
    return true;
  }
  const HWND front = GetForegroundWindow();
  if (front != nullptr && (IsOurWindow(front) || front == terminal)) {
    return false;
  }
  raw.input.kind = UserInput::Kind::Key;
  raw.input.window = front;
  Enqueue(raw);
  return false;
}

InputWatch::InputWatch(const std::vector<KeyChord>& hotkeys) : state_(std::make_unique<State>(hotkeys)) {
  g_watching = state_.get();
  state_->thread.reset(CreateThread(nullptr, 0, RunWatch, state_.get(), 0, nullptr));
  if (state_->thread) {
    WaitForSingleObject(state_->ready.get(), INFINITE);
  }
  if (!state_->hooked) {
    throw Failure(ExitCode::NotHere, "the system does not let this program watch mouse and keyboard");
  }
}

InputWatch::~InputWatch() {
  SetEvent(state_->stop.get());
  if (state_->thread) {
    WaitForSingleObject(state_->thread.get(), INFINITE);
  }
  g_watching = nullptr;
}

std::optional<UserInput> InputWatch::Next(int timeoutMs) {
  const double end = Now() + timeoutMs;
  for (;;) {
    RawInput raw;
    bool told = false;
    {
      const Lock guard(state_->lock);
      if (!state_->queue.empty()) {
        raw = state_->queue.front();
        state_->queue.pop_front();
        told = true;
      }
    }
    if (told && state_->IsAboutUs(raw.input)) {
      LetGo(raw.input);
      continue;
    }
    if (told) {
      if (raw.input.kind == UserInput::Kind::Key) {
        raw.input.text = TypedBy(raw);
      }
      return raw.input;
    }
    const double left = end - Now();
    if (left <= 0) {
      return std::nullopt;
    }
    // The outline's windows belong to this thread, and want their messages.
    const HANDLE queued = state_->queued.get();
    MsgWaitForMultipleObjects(1, &queued, FALSE, static_cast<DWORD>(left) + 1, QS_ALLINPUT);
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
      DispatchMessageW(&message);
    }
  }
}

bool InputWatch::LetGo(const UserInput& press) {
  return state_->LetGo(press.held);
}

bool InputWatch::Swallow(const UserInput& press) {
  const Lock guard(state_->lock);
  return state_->presses.Drop(press.held);
}

DoubleClick DoubleClickOfSystem() {
  return {static_cast<double>(GetDoubleClickTime()), GetSystemMetrics(SM_CXDOUBLECLK),
          GetSystemMetrics(SM_CYDOUBLECLK)};
}

}  // namespace host::world
