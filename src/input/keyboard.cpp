#include "input/send_input.h"
#include "korvane/korvane.h"
#include "platform/wide_text.h"

static_assert(sizeof(INPUT) == 40);

// ---- Fixed shortcuts: modifiers in the order of the name, then the key ----

#define SHORTCUT(name, ...)                                                    \
  int name(void) noexcept {                                                    \
    return korvane::SendShortcut({__VA_ARGS__}) ? KORVANE_OK : KORVANE_FAILED; \
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

namespace korvane {
namespace {

// The modifiers that VkKeyScanW asks for, in its high byte.
constexpr unsigned kNeedsShift = 1;
constexpr unsigned kNeedsControl = 2;
constexpr unsigned kNeedsAlt = 4;

// Types the key with its modifiers, pressed in the order Ctrl, Alt, Shift and released in reverse.
bool TypeKey(WORD virtualKey, unsigned modifiers) {
  WORD keys[4];
  std::size_t count = 0;
  if ((modifiers & kNeedsControl) != 0) {
    keys[count++] = VK_CONTROL;
  }
  if ((modifiers & kNeedsAlt) != 0) {
    keys[count++] = VK_MENU;
  }
  if ((modifiers & kNeedsShift) != 0) {
    keys[count++] = VK_SHIFT;
  }
  keys[count++] = virtualKey;
  return SendKeys({keys, count}) == count * 2;
}

int TypeText(WideView text, DWORD pauseMs) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const SHORT key = VkKeyScanW(text[i]);
    if (key == -1) {
      continue;
    }
    const auto bits = static_cast<WORD>(key);
    if (!TypeKey(bits & 0xFF, bits >> 8)) {
      return KORVANE_FAILED;
    }
    if (i + 1 < text.size()) {
      Sleep(pauseMs);
    }
  }
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int sendKey(int virtualKey) noexcept {
  if (virtualKey < 1) {
    return KORVANE_INVALID_ARGUMENT;
  }
  if (virtualKey == KORVANE_KEY_CTRL_A) {
    return sendCtrlA();
  }
  return korvane::SendShortcut({static_cast<WORD>(virtualKey)}) ? KORVANE_OK : KORVANE_FAILED;
}

int sendKeySequence(const KorvaneChar* text, int pauseMs) noexcept {
  const korvane::WideView characters = korvane::ViewOf(text);
  if (characters.empty()) {
    return KORVANE_INVALID_ARGUMENT;
  }
  return korvane::TypeText(characters, pauseMs < 1 ? 1 : static_cast<DWORD>(pauseMs));
}
