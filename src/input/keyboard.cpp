#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "platform/wide_text.h"

static_assert(sizeof(INPUT) == 40);

// ---- Fixed shortcuts: modifiers in the order of the name, then the key ----

#define SHORTCUT(name, ...)                                           \
  int name(void) noexcept {                                           \
    return SendShortcut({__VA_ARGS__}) ? KORVANE_OK : KORVANE_FAILED; \
  }

// clang-format off
SHORTCUT(sendAltA,        VK_MENU,    'A')
SHORTCUT(sendAltB,        VK_MENU,    'B')
SHORTCUT(sendAltD,        VK_MENU,    'D')
SHORTCUT(sendAltE,        VK_MENU,    'E')
SHORTCUT(sendAltP,        VK_MENU,    'P')
SHORTCUT(sendAltT,        VK_MENU,    'T')
SHORTCUT(sendAltZ,        VK_MENU,    'Z')
SHORTCUT(sendCtrlA,       VK_CONTROL, 'A')
SHORTCUT(sendCtrlAltN,    VK_CONTROL, VK_MENU, 'N')
SHORTCUT(sendCtrlL,       VK_CONTROL, 'L')
SHORTCUT(sendCtrlN,       VK_CONTROL, 'N')
SHORTCUT(sendCtrlQ,       VK_CONTROL, 'Q')
SHORTCUT(sendCtrlS,       VK_CONTROL, 'S')
SHORTCUT(sendCtrlShiftF3, VK_CONTROL, VK_SHIFT, VK_F3)
SHORTCUT(sendCtrlV,       VK_CONTROL, 'V')
SHORTCUT(sendShiftF2,     VK_SHIFT,   VK_F2)
SHORTCUT(sendShiftF4,     VK_SHIFT,   VK_F4)
SHORTCUT(sendShiftInsert, VK_SHIFT,   VK_INSERT)
// clang-format on

#undef SHORTCUT

// ---- Single keys and texts ----

namespace {

// The modifiers that VkKeyScanW asks for, in its high byte.
constexpr unsigned kNeedsShift = 1;
constexpr unsigned kNeedsControl = 2;
constexpr unsigned kNeedsAlt = 4;

// Types the key with its modifiers, pressed in the order Ctrl, Alt, Shift and released in reverse.
bool TypeKey(WORD virtualKey, unsigned modifiers) {
  INPUT records[8];
  std::size_t count = 0;
  const auto add = [&](bool wanted, const INPUT& record) {
    if (wanted) {
      records[count++] = record;
    }
  };
  add((modifiers & kNeedsControl) != 0, KeyPress(VK_CONTROL));
  add((modifiers & kNeedsAlt) != 0, KeyPress(VK_MENU));
  add((modifiers & kNeedsShift) != 0, KeyPress(VK_SHIFT));
  add(true, KeyPress(virtualKey));
  add(true, KeyRelease(virtualKey));
  add((modifiers & kNeedsShift) != 0, KeyRelease(VK_SHIFT));
  add((modifiers & kNeedsAlt) != 0, KeyRelease(VK_MENU));
  add((modifiers & kNeedsControl) != 0, KeyRelease(VK_CONTROL));
  return SendAll({records, count}) == count;
}

}  // namespace

int sendKey(int virtualKey) noexcept {
  if (virtualKey < 1) {
    return KORVANE_INVALID_ARGUMENT;
  }
  if (virtualKey == KORVANE_KEY_CTRL_A) {
    return sendCtrlA();
  }
  return SendShortcut({static_cast<WORD>(virtualKey)}) ? KORVANE_OK : KORVANE_FAILED;
}

int sendKeySequence(const KorvaneChar* text, int pauseMs) noexcept {
  const WideView characters = ViewOf(text);
  if (characters.empty()) {
    return KORVANE_INVALID_ARGUMENT;
  }
  const DWORD pause = pauseMs < 1 ? 1 : static_cast<DWORD>(pauseMs);
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const SHORT key = VkKeyScanW(characters[i]);
    if (key == -1) {
      continue;
    }
    const auto bits = static_cast<WORD>(key);
    if (!TypeKey(bits & 0xFF, bits >> 8)) {
      return KORVANE_FAILED;
    }
    if (i + 1 < characters.size()) {
      Sleep(pause);
    }
  }
  return KORVANE_OK;
}
