#include "korvane/korvane.h"
#include "platform/platform.h"

void delay(int milliseconds) noexcept {
  constexpr DWORD kDefaultMilliseconds = 50;
  Sleep(milliseconds < 1 ? kDefaultMilliseconds : static_cast<DWORD>(milliseconds));
}
