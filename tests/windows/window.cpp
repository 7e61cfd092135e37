#include "tests/windows/window.h"

namespace windows_tests {

namespace {

constexpr DWORD kTooLong = 10000;

std::vector<KeyMessage> g_received;

LRESULT CALLBACK NoteKeys(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message >= WM_KEYFIRST && message <= WM_KEYLAST) {
    g_received.push_back({message, wParam});
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

bool ServeUntil(const std::function<bool()>& condition) {
  const DWORD start = GetTickCount();
  MSG message{};
  while (!condition()) {
    if (GetTickCount() - start > kTooLong) {
      return false;
    }
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    Sleep(1);
  }
  return true;
}

KeyWindow::KeyWindow() {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = NoteKeys;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.lpszClassName = L"KeyWindow";
  RegisterClassExW(&windowClass);
  window_ = CreateWindowExW(0, L"KeyWindow", L"Keys", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 300, 200, nullptr,
                            nullptr, windowClass.hInstance, nullptr);
  SetForegroundWindow(window_);
  ServeUntil([this] { return GetFocus() == window_ && GetForegroundWindow() == window_; });
  const DWORD shown = GetTickCount();
  // The window manager has the last word on activation.
  ServeUntil([shown] { return GetTickCount() - shown > 300; });
  g_received.clear();
}

KeyWindow::~KeyWindow() {
  DestroyWindow(window_);
}

std::vector<KeyMessage> KeyWindow::Receive(std::size_t count) {
  ServeUntil([count] { return g_received.size() >= count; });
  // What should not come would come now.
  const DWORD start = GetTickCount();
  ServeUntil([start] { return GetTickCount() - start > 20; });
  return std::exchange(g_received, {});
}

}  // namespace windows_tests
