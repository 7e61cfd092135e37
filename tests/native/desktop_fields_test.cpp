// The scripted desktop: keys, edits and buttons.
#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

class StandinFieldsTest : public StandinTest {
 protected:
  void SetUp() override {
    StandinTest::SetUp();
    window_ = AddWindow({0, 0, 300, 300});
    edit_ = AddChild(window_, Behaviour::Edit);
    TheDesktop().User().Click(20, 20);
  }

  // Presses and releases keys: a letter or digit, with "^" before it for Ctrl, "+" for Shift, "%" for Alt.
  static void Type(std::string_view keys) {
    std::vector<int> held;
    for (const char key : keys) {
      const int modifier = key == '^' ? VK_CONTROL : key == '+' ? VK_SHIFT : key == '%' ? VK_MENU : 0;
      Send(modifier != 0 ? modifier : key, 0);
      if (modifier != 0) {
        held.push_back(modifier);
        continue;
      }
      Send(key, KEYEVENTF_KEYUP);
      for (; !held.empty(); held.pop_back()) {
        Send(held.back(), KEYEVENTF_KEYUP);
      }
    }
  }
  static void Send(int virtualKey, DWORD flags) {
    INPUT record{};
    record.type = INPUT_KEYBOARD;
    record.ki.wVk = static_cast<WORD>(virtualKey);
    record.ki.dwFlags = flags;
    EXPECT_EQ(SendInput(1, &record, sizeof(INPUT)), 1U);
  }

  HWND window_ = nullptr;
  HWND edit_ = nullptr;
};

TEST_F(StandinFieldsTest, Keys) {
  struct Case {
    const char* keys;
    standin::Text clipboard;
    standin::Text text;
  };
  const Case cases[] = {
      {"AB+A1+1", u"", u"abAaA1!"},
      {"^AX", u"", u"x"},
      {"^V^V", u"p", u"abpp"},
      {"^A^V", u"one\r\ntwo", u"one"},
      {"^A^C^V^V", u"before", u"abab"},
      {"^Q%Q^%Q", u"", u"ab@"},
      {"\x08", u"", u"a"},
      {"^A\x08", u"", u""},
      {"\r\t", u"", u"ab"},
  };
  TheDesktop().Input().SetKey(u'@', 0x0600 | 'Q');
  for (const auto& [keys, clipboard, text] : cases) {
    SCOPED_TRACE(keys);
    TheDesktop().Controls().SetText(edit_, u"ab");
    TheDesktop().Clipboard().Set(clipboard);
    Type(keys);
    EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), *keys == 'A' ? u"ab" + text.substr(0, 2) + u"A1!" : text);
  }
}

TEST_F(StandinFieldsTest, PastesOnlyWhatItCanHave) {
  auto& desktop = TheDesktop();
  desktop.Controls().SetText(edit_, u"ab");
  desktop.Clipboard().Set(u"p");
  desktop.Clipboard().Hold(10);
  Type("^A^V");
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"ab") << "held by another program";
  Sleep(10);
  EXPECT_TRUE(OpenClipboard(nullptr));
  Type("^V");
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"ab") << "held by ourselves";
  EXPECT_TRUE(CloseClipboard());
  desktop.Clipboard().Clear();
  Type("^V");
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"ab") << "nothing to paste";
  desktop.Clipboard().Set(u"p");
  desktop.Controls().DelayPaste(30);
  Type("^V");
  Sleep(29);
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"ab");
  Sleep(1);
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"p");
  desktop.Controls().DelayPaste(0);

  for (const auto& [readOnly, multiLine, text] :
       {std::tuple(true, false, u""), std::tuple(false, true, u"one\r\ntwox\r\n")}) {
    const HWND other = desktop.Windows().Add({.rect = {200, 10, 290, 30},
                                              .parent = window_,
                                              .behaviour = Behaviour::Edit,
                                              .readOnly = readOnly,
                                              .multiLine = multiLine});
    desktop.Clipboard().Set(u"one\r\ntwo");
    desktop.User().Click(210, 20);
    Type("^VX\r");
    EXPECT_EQ(desktop.Controls().TextOf(other), text);
    desktop.Windows().Destroy(other);
  }
}

TEST_F(StandinFieldsTest, Messages) {
  const auto send = [this](UINT message, const char16_t* text) {
    return SendMessageW(edit_, message, 1, reinterpret_cast<LPARAM>(text));
  };
  auto& desktop = TheDesktop();
  EXPECT_EQ(send(WM_SETTEXT, u"abcd"), TRUE);
  send(EM_REPLACESEL, u">");
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u">abcd") << "a text that was set leaves the caret before it";
  desktop.Controls().SetSelection(edit_, 2, 4);
  int edits = 0;
  desktop.Controls().OnEdited(edit_, [&](HWND edit) {
    ++edits;
    desktop.Controls().SetText(edit, u"[" + desktop.Controls().TextOf(edit) + u"]");
  });
  send(EM_REPLACESEL, u"X");
  EXPECT_EQ(desktop.Controls().TextOf(edit_), u"[>aXd]");
  EXPECT_EQ(edits, 1);
  desktop.Controls().OnEdited(edit_, [&](HWND edit) { desktop.Windows().Destroy(edit); });
  Type("A");
  EXPECT_FALSE(IsWindow(edit_));

  const HWND refusing = AddChild(window_, Behaviour::Edit);
  desktop.Controls().RefuseText(refusing);
  EXPECT_EQ(SendMessageW(refusing, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(u"x")), 0);
  EXPECT_EQ(desktop.Controls().TextOf(refusing), u"");
}

TEST_F(StandinFieldsTest, KeyMessagesAndKeysLeftDown) {
  Type("%A^B+C");
  std::vector<std::pair<UINT, WPARAM>> received;
  for (const auto& message : TheDesktop().Input().KeyMessages()) {
    EXPECT_EQ(message.window, edit_);
    received.emplace_back(message.message, message.key);
  }
  using M = std::pair<UINT, WPARAM>;
  EXPECT_THAT(received, ElementsAre(M(0x104, 0x12), M(0x104, 'A'), M(0x105, 'A'), M(0x105, 0x12),               //
                                    M(0x100, 0x11), M(0x100, 'B'), M(0x102, 2), M(0x101, 'B'), M(0x101, 0x11),  //
                                    M(0x100, 0x10), M(0x100, 'C'), M(0x102, 'C'), M(0x101, 'C'), M(0x101, 0x10)));
  Send(VK_CONTROL, 0);
  mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
  EXPECT_LT(GetAsyncKeyState(VK_CONTROL), 0);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("key left down: 0x11", "left mouse button left down"));
  Send(VK_CONTROL, KEYEVENTF_KEYUP);
  mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
}

TEST_F(StandinFieldsTest, ButtonIsPressedWhereItIsReleased) {
  const HWND button = AddChild(window_, Behaviour::Button, {200, 10, 290, 30});
  int pressed = 0;
  TheDesktop().Controls().OnPress(button, [&] { ++pressed; });
  SetCursorPos(210, 20);
  mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
  SetCursorPos(20, 20);
  mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
  EXPECT_EQ(pressed, 0);
  SetCursorPos(210, 20);
  mouse_event(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
  EXPECT_EQ(pressed, 1);
  EXPECT_EQ(TheDesktop().Controls().MouseDowns(button), 2);
}

}  // namespace
}  // namespace tests
