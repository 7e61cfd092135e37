// Every shortcut and a typed sentence, as a real window receives them.
#include <gmock/gmock.h>

#include "korvane/korvane.h"
#include "tests/windows/window.h"

namespace windows_tests {
namespace {

struct Shortcut {
  const char* name;
  int (*send)() noexcept;
  std::vector<WPARAM> keys;  // in press order
};

const Shortcut kShortcuts[] = {
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

bool IsPress(UINT message) {
  return message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
}

bool IsRelease(UINT message) {
  return message == WM_KEYUP || message == WM_SYSKEYUP;
}

class KeyboardTest : public ::testing::Test {
 protected:
  KeyWindow window_;
};

TEST_F(KeyboardTest, EveryShortcutArrivesInOrder) {
  for (const auto& [name, send, keys] : kShortcuts) {
    SCOPED_TRACE(name);
    ASSERT_EQ(send(), KORVANE_OK);
    std::vector<WPARAM> pressed;
    std::vector<WPARAM> released;
    for (const KeyMessage& message : window_.Receive(keys.size() * 2)) {
      if (IsPress(message.message)) {
        pressed.push_back(message.key);
      } else if (IsRelease(message.message)) {
        released.push_back(message.key);
      }
    }
    EXPECT_EQ(pressed, keys);
    EXPECT_EQ(released, std::vector<WPARAM>(keys.rbegin(), keys.rend()));
  }
}

TEST_F(KeyboardTest, ASentenceArrivesAsCharacters) {
  // The middle character has no key and is left out.
  ASSERT_EQ(sendKeySequence(L"Aa1!\x4E2D, z?", 1), KORVANE_OK);
  std::wstring typed;
  for (const KeyMessage& message : window_.Receive(26)) {
    if (message.message == WM_CHAR) {
      typed += static_cast<wchar_t>(message.key);
    }
  }
  EXPECT_EQ(typed, L"Aa1!, z?");
}

TEST_F(KeyboardTest, OneKeyIsAPressAndARelease) {
  ASSERT_EQ(sendKey(VK_F2), KORVANE_OK);
  EXPECT_EQ(window_.Receive(2), (std::vector<KeyMessage>{{WM_KEYDOWN, VK_F2}, {WM_KEYUP, VK_F2}}));
}

TEST_F(KeyboardTest, TheOwnWindowIsFocusedAndDescribed) {
  EXPECT_EQ(ensureWindowFocus(window_.Handle()), KORVANE_OK);
  ShowWindow(window_.Handle(), SW_MINIMIZE);
  EXPECT_EQ(ensureWindowFocus(reinterpret_cast<HWND>(0xDEAD)), KORVANE_NOT_FOUND);
  WindowInfo info{};
  ASSERT_EQ(getWindowInfo(window_.Handle(), &info), KORVANE_OK);
  EXPECT_STREQ(info.title, L"Keys");
  EXPECT_STREQ(info.processName, L"windows_tests.exe");
}

}  // namespace
}  // namespace windows_tests
