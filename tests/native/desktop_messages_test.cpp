// The scripted desktop: message queues and low-level mouse hooks.
#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

class StandinHooksTest : public StandinTest {
 protected:
  void SetUp() override {
    StandinTest::SetUp();
    g_hook = nullptr;
    window_ = AddWindow({0, 0, 200, 200});
    button_ = AddChild(window_, Behaviour::Button);
  }

  static inline HHOOK g_hook = nullptr;
  static inline DWORD g_hookThread = 0;

  // Swallows the first press, removes the hook and wakes the thread.
  static LRESULT SwallowOnePress(int code, WPARAM message, LPARAM event) {
    const auto* mouse = reinterpret_cast<const MSLLHOOKSTRUCT*>(event);
    g_diary.Write("hook " + std::to_string(message) + " at " + std::to_string(mouse->pt.x));
    g_hookThread = GetCurrentThreadId();
    if (message != WM_LBUTTONDOWN) {
      return CallNextHookEx(nullptr, code, message, event);
    }
    UnhookWindowsHookEx(g_hook);
    PostThreadMessageW(g_hookThread, WM_NULL, 0, 0);
    return 1;
  }

  static DWORD WaitWithHook(LPVOID) {
    g_hook = SetWindowsHookExW(WH_MOUSE_LL, SwallowOnePress, GetModuleHandleW(nullptr), 0);
    MSG message;
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), TRUE);
    EXPECT_EQ(g_hookThread, GetCurrentThreadId());
    g_diary.Write("woken");
    return 0;
  }

  HWND window_ = nullptr;
  HWND button_ = nullptr;
};

const Lines kSwallowed = {"5 hook 512 at 20", "5 hook 513 at 20", "5 woken"};

TEST_F(StandinHooksTest, CalledOnTheirThreadForAUsersClick) {
  TheDesktop().Clock().After(5, [] { TheDesktop().User().Click(20, 20); });
  WaitWithHook(nullptr);
  EXPECT_EQ(g_diary.Take(), kSwallowed);
  EXPECT_EQ(TheDesktop().Controls().MouseDowns(button_), 0);
  TheDesktop().User().Click(20, 20);
  EXPECT_EQ(TheDesktop().Controls().Presses(button_), 1);
}

TEST_F(StandinHooksTest, CalledOnTheirThreadForAnothersInputAndAction) {
  for (const bool synthesized : {false, true}) {
    const HANDLE waiting = CreateThread(nullptr, 0, WaitWithHook, nullptr, 0, nullptr);
    const double start = TheDesktop().Clock().Now();
    if (synthesized) {
      Sleep(5);
      SetCursorPos(20, 20);
      INPUT records[2]{};
      records[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
      records[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
      EXPECT_EQ(SendInput(2, records, sizeof(INPUT)), 2U);
    } else {
      TheDesktop().Clock().After(5, [] { TheDesktop().User().Click(20, 20); });
    }
    EXPECT_EQ(WaitForSingleObject(waiting, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(TheDesktop().Clock().Now(), start + 5);
    EXPECT_TRUE(CloseHandle(waiting));
    EXPECT_EQ(TheDesktop().Controls().MouseDowns(button_), 0);
    EXPECT_EQ(g_diary.Take().size(), synthesized ? 2U : 3U) << "only a user moves the pointer";
  }
}

TEST_F(StandinHooksTest, PassedByWhileTheirThreadDoesNotAnswer) {
  g_hook = SetWindowsHookExW(WH_MOUSE_LL, SwallowOnePress, GetModuleHandleW(nullptr), 0);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("hook"));
  TheDesktop().User().Click(20, 20);
  EXPECT_EQ(TheDesktop().Controls().Presses(button_), 1);
  EXPECT_TRUE(UnhookWindowsHookEx(g_hook));
  EXPECT_FALSE(UnhookWindowsHookEx(g_hook));
}

TEST_F(StandinHooksTest, QuitComesBehindTheMessages) {
  TheDesktop().Host().PostMessage(0x0400);
  PostQuitMessage(7);
  MSG message;
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), TRUE);
  EXPECT_EQ(message.message, 0x0400U);
  EXPECT_TRUE(TheDesktop().Host().QuitPending());
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), FALSE);
  EXPECT_EQ(message.wParam, 7U);
  EXPECT_FALSE(TheDesktop().Host().QuitPending());
}

}  // namespace
}  // namespace tests
