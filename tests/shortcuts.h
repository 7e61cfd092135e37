// The shortcuts that have a function of their own, for the tests of both worlds.
#pragma once

#include <vector>

#include "korvane/korvane.h"
#include "platform/platform.h"

namespace tests {

struct Shortcut {
  const char* name;
  int (*send)() noexcept;
  std::vector<int> keys;  // in the order in which they are pressed
};

inline const Shortcut kShortcuts[] = {
    {"sendAltA", sendAltA, {VK_MENU, 'A'}},
    {"sendAltB", sendAltB, {VK_MENU, 'B'}},
    {"sendAltD", sendAltD, {VK_MENU, 'D'}},
    {"sendAltE", sendAltE, {VK_MENU, 'E'}},
    {"sendAltP", sendAltP, {VK_MENU, 'P'}},
    {"sendAltT", sendAltT, {VK_MENU, 'T'}},
    {"sendAltZ", sendAltZ, {VK_MENU, 'Z'}},
    {"sendCtrlA", sendCtrlA, {VK_CONTROL, 'A'}},
    {"sendCtrlAltN", sendCtrlAltN, {VK_CONTROL, VK_MENU, 'N'}},
    {"sendCtrlL", sendCtrlL, {VK_CONTROL, 'L'}},
    {"sendCtrlN", sendCtrlN, {VK_CONTROL, 'N'}},
    {"sendCtrlQ", sendCtrlQ, {VK_CONTROL, 'Q'}},
    {"sendCtrlS", sendCtrlS, {VK_CONTROL, 'S'}},
    {"sendCtrlShiftF3", sendCtrlShiftF3, {VK_CONTROL, VK_SHIFT, VK_F3}},
    {"sendCtrlV", sendCtrlV, {VK_CONTROL, 'V'}},
    {"sendShiftF2", sendShiftF2, {VK_SHIFT, VK_F2}},
    {"sendShiftF4", sendShiftF4, {VK_SHIFT, VK_F4}},
    {"sendShiftInsert", sendShiftInsert, {VK_SHIFT, VK_INSERT}},
};

}  // namespace tests
