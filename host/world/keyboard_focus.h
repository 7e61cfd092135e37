// Which control gets what is typed.
#pragma once

#include <optional>

#include "host/world/world.h"

namespace host::world {

struct KeyboardFocus {
  HWND window = nullptr;  // the top-level window
  HWND control = nullptr;
  Rect rect;  // of the control
};

// Nothing when no window has the focus, or this program or its terminal has it.
std::optional<KeyboardFocus> FindKeyboardFocus();
// Whether a control shows marks instead of what is typed: a password field.
bool HidesText(HWND control);

}  // namespace host::world
