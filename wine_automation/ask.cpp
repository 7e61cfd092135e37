#include "wine_automation/ask.h"

namespace wine_automation {

std::optional<LONG_PTR> Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  constexpr UINT kAnswerMilliseconds = 1000;
  if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) {
    // By its procedure: a message would go through the hook that brought the question here.
    const auto procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    return CallWindowProcW(procedure, window, message, wParam, lParam);
  }
  DWORD_PTR answer = 0;
  if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerMilliseconds, &answer) == 0) {
    return std::nullopt;
  }
  return static_cast<LONG_PTR>(answer);
}

}  // namespace wine_automation
