#include <atomic>

#include "korvane/korvane.h"
#include "platform/platform.h"

namespace korvane {
namespace {

constexpr const WCHAR* kHookProperty = TEXT("MouseHook");

// Written by the hook procedure, which runs on the thread that waits in findWindowByClick.
HWND g_pickedWindow = nullptr;
bool g_clicked = false;

HWND TopOfChain(HWND window) {
  while (window != nullptr) {
    const HWND parent = GetParent(window);
    if (parent == nullptr) {
      break;
    }
    window = parent;
  }
  return window;
}

LRESULT CALLBACK PickOnLeftButton(int code, WPARAM message, LPARAM event) {
  if (code < 0 || message != WM_LBUTTONDOWN) {
    return CallNextHookEx(nullptr, code, message, event);
  }
  if (const auto* mouse = reinterpret_cast<const MSLLHOOKSTRUCT*>(event)) {
    g_pickedWindow = TopOfChain(WindowFromPoint(mouse->pt));
  }
  g_clicked = true;
  const HWND desktop = GetDesktopWindow();
  if (const auto hook = static_cast<HHOOK>(GetPropW(desktop, kHookProperty))) {
    UnhookWindowsHookEx(hook);
    RemovePropW(desktop, kHookProperty);
  }
  SetCursor(LoadCursorW(nullptr, IDC_ARROW));
  // The swallowed click itself wakes nobody.
  PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
  return 1;
}

// The cross cursor, until the end.
class CrossCursor {
 public:
  CrossCursor() : previous_(SetCursor(LoadCursorW(nullptr, IDC_CROSS))) {}
  ~CrossCursor() {
    SetCursor(previous_);
  }
  CrossCursor(const CrossCursor&) = delete;
  CrossCursor& operator=(const CrossCursor&) = delete;

 private:
  HCURSOR previous_;
};

// The low-level mouse hook and its entry on the desktop window, until the end. The click itself removes them earlier,
// so that no later event passes through us; removing them again is then refused, which does no harm.
class MouseHook {
 public:
  MouseHook() : hook_(SetWindowsHookExW(WH_MOUSE_LL, PickOnLeftButton, GetModuleHandleW(nullptr), 0)) {
    if (hook_ != nullptr) {
      SetPropW(GetDesktopWindow(), kHookProperty, hook_);
    }
  }
  ~MouseHook() {
    if (hook_ != nullptr) {
      UnhookWindowsHookEx(hook_);
      RemovePropW(GetDesktopWindow(), kHookProperty);
    }
  }
  MouseHook(const MouseHook&) = delete;
  MouseHook& operator=(const MouseHook&) = delete;

  explicit operator bool() const {
    return hook_ != nullptr;
  }

 private:
  HHOOK hook_;
};

// Serves the thread's messages until the click. A quit message is the host's: it is posted again for its own loop.
void WaitForClick() {
  MSG message{};
  while (!g_clicked) {
    const BOOL more = GetMessageW(&message, nullptr, 0, 0);
    if (more == 0) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    if (more < 0) {
      return;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

HWND PickWindow() {
  const CrossCursor cross;
  g_pickedWindow = nullptr;
  g_clicked = false;
  const MouseHook hook;
  if (!hook) {
    return nullptr;
  }
  WaitForClick();
  return g_pickedWindow;
}

}  // namespace
}  // namespace korvane

HWND findWindowByClick() noexcept {
  return korvane::PickWindow();
}
