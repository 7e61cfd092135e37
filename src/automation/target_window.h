// The host's default window.
#pragma once

#include "platform/platform.h"

namespace korvane {

// `window`, or the target window of the host when it is null; null when neither is set.
HWND ChooseWindow(HWND window) noexcept;

void ForgetTargetWindow() noexcept;

}  // namespace korvane
