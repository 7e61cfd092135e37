#include "host/world/keyboard_focus.h"

#include <windows.h>

#include <array>

#include "host/base/text.h"

namespace host::world {

bool HidesText(HWND control) {
  std::array<WCHAR, 64> name{};
  GetClassNameW(control, name.data(), static_cast<int>(name.size()));
  const bool isEdit = Lower(Utf8(name.data())).find("edit") != std::string::npos;
  return isEdit && (GetWindowLongW(control, GWL_STYLE) & ES_PASSWORD) != 0;
}

std::optional<KeyboardFocus> FindKeyboardFocus() {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  if (!GetGUIThreadInfo(0, &thread)) {
    return std::nullopt;
  }
  const HWND control = thread.hwndFocus != nullptr ? thread.hwndFocus : thread.hwndActive;
  DWORD process = 0;
  GetWindowThreadProcessId(control, &process);
  RECT rect{};
  if (control == nullptr || process == GetCurrentProcessId() || control == GetConsoleWindow() ||
      !GetWindowRect(control, &rect)) {
    return std::nullopt;
  }
  KeyboardFocus focus;
  focus.window = GetAncestor(control, GA_ROOT);
  focus.control = control;
  focus.rect = {rect.left, rect.top, rect.right, rect.bottom};
  return focus;
}

}  // namespace host::world
