#pragma once

#include "platform/uia.h"

namespace wine_automation {

// The list of a combo box that drops one; null for others. For the combo box's own thread.
HWND DroppedListOf(HWND comboBox);

}  // namespace wine_automation
