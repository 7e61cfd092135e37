// Every shortcut and a typed sentence, as a real window receives them.
#include <gmock/gmock.h>

#include "korvane/korvane.h"
#include "tests/shortcuts.h"
#include "tests/windows/window.h"

namespace windows_tests {
namespace {

using tests::kShortcuts;

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
    EXPECT_EQ(pressed, std::vector<WPARAM>(keys.begin(), keys.end()));
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
