// The scripted desktop itself, where a fault of its own would mislead the tests that stand on it.
#include "standin/desktop/desktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <thread>

namespace tests {
namespace {

using standin::Behaviour;
using standin::TheDesktop;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Lines = std::vector<std::string>;

class StandinTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheDesktop().Reset();
  }
  void TearDown() override {
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
    EXPECT_THAT(TheDesktop().Ledger().Misuses(), IsEmpty());
    TheDesktop().Reset();
  }

  // For a test that leaves things behind or misuses them on purpose.
  static Lines TakeMisuses() {
    const Lines misuses = TheDesktop().Ledger().Misuses();
    TheDesktop().Reset();
    return misuses;
  }

  static HWND AddWindow(RECT rect, HWND owner = nullptr) {
    return TheDesktop().Windows().Add({.className = u"Window", .title = u"Title", .rect = rect, .owner = owner});
  }
  static HWND AddChild(HWND parent, Behaviour behaviour, RECT rect = {10, 10, 110, 30}) {
    return TheDesktop().Windows().Add(
        {.className = u"Control", .rect = rect, .parent = parent, .behaviour = behaviour});
  }
};

// ---- Clock and threads ----

// What happened, with the time at which it did.
class Diary {
 public:
  void Write(const std::string& what) {
    const std::lock_guard guard(mutex_);
    lines_.push_back(std::to_string(static_cast<int>(TheDesktop().Clock().Now())) + " " + what);
  }
  Lines Take() {
    const std::lock_guard guard(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex mutex_;
  Lines lines_;
};

Diary g_diary;

struct Sleeper {
  const char* name;
  DWORD milliseconds;
  int times;
};

DWORD SleepSeveralTimes(LPVOID parameter) {
  const auto* sleeper = static_cast<const Sleeper*>(parameter);
  for (int i = 0; i < sleeper->times; ++i) {
    g_diary.Write(sleeper->name);
    Sleep(sleeper->milliseconds);
  }
  g_diary.Write(std::string(sleeper->name) + " ends");
  return 0;
}

DWORD SleepForEver(LPVOID) {
  for (;;) {
    Sleep(10);
  }
}

class StandinThreadsTest : public StandinTest {
 protected:
  static void JoinAndClose(HANDLE thread) {
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
  }
};

TEST_F(StandinThreadsTest, TakeTurnsInAFixedOrder) {
  const Lines expected = {"0 main", "0 a",     "0 b",       "0 main again", "10 action", "10 a",
                          "10 b",   "20 main", "20 a ends", "20 b",         "30 b ends"};
  for (int run = 0; run < 20; ++run) {
    TheDesktop().Reset();
    Sleeper a{"a", 10, 2};
    Sleeper b{"b", 10, 3};
    TheDesktop().Clock().After(10, [] { g_diary.Write("action"); });
    const HANDLE first = CreateThread(nullptr, 0, SleepSeveralTimes, &a, 0, nullptr);
    const HANDLE second = CreateThread(nullptr, 0, SleepSeveralTimes, &b, 0, nullptr);
    g_diary.Write("main");
    Sleep(0);
    g_diary.Write("main again");
    Sleep(20);
    g_diary.Write("main");
    JoinAndClose(first);
    JoinAndClose(second);
    EXPECT_EQ(g_diary.Take(), expected);
  }
}

TEST_F(StandinThreadsTest, WaitsEndAtTheirTime) {
  Sleeper sleeper{"a", 30, 1};
  const HANDLE thread = CreateThread(nullptr, 0, SleepSeveralTimes, &sleeper, 0, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, 29), WAIT_TIMEOUT);
  EXPECT_EQ(TheDesktop().Clock().Now(), 29);
  EXPECT_EQ(WaitForSingleObject(thread, 29), WAIT_OBJECT_0);
  EXPECT_EQ(TheDesktop().Clock().Now(), 30);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("handle of a thread"));
  EXPECT_TRUE(CloseHandle(thread));
  g_diary.Take();
}

TEST_F(StandinThreadsTest, ScheduledActionsComeInOrderAndMayScheduleAndWait) {
  auto& desktop = TheDesktop();
  desktop.Clock().After(7, [] { g_diary.Write("second"); });
  desktop.Clock().After(5, [&desktop] {
    g_diary.Write("first");
    desktop.Clock().After(2, [] { g_diary.Write("third"); });
    desktop.Clock().After(0, [] { g_diary.Write("at once"); });
  });
  desktop.Clock().After(20, [] {
    Sleep(5);
    g_diary.Write("slept");
  });
  Sleep(7);
  EXPECT_THAT(g_diary.Take(), ElementsAre("5 first", "5 at once", "7 second", "7 third"));
  desktop.Clock().Advance(14);
  EXPECT_THAT(g_diary.Take(), ElementsAre("25 slept"));
}

DWORD SetTheEvent(LPVOID parameter) {
  Sleep(5);
  return SetEvent(parameter) ? 0 : 1;
}

TEST_F(StandinThreadsTest, EventsAndTerminatedThreads) {
  for (const bool realTime : {false, true}) {
    TheDesktop().Reset();
    if (realTime) {
      TheDesktop().Clock().UseRealTime();
    }
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 1), WAIT_TIMEOUT);
    const HANDLE setting = CreateThread(nullptr, 0, SetTheEvent, event, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0) << "it stays set";
    JoinAndClose(setting);
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("handle of an event"));
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_FALSE(SetEvent(event));

    const HANDLE endless = CreateThread(nullptr, 0, SleepForEver, nullptr, 0, nullptr);
    Sleep(25);
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("handle of a thread", "thread still running"));
    EXPECT_TRUE(TerminateThread(endless, 0));
    JoinAndClose(endless);
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  }
}

std::ptrdiff_t CountMappings() {
  std::ifstream mappings("/proc/self/maps");
  return std::count(std::istreambuf_iterator<char>(mappings), {}, '\n');
}

// The longest soak starts tens of thousands of monitors.
TEST_F(StandinThreadsTest, ThreadsThatEndedKeepNoStack) {
  constexpr int kThreads = 200;
  Sleeper sleeper{"a", 0, 0};
  const std::ptrdiff_t before = CountMappings();
  for (int i = 0; i < kThreads; ++i) {
    JoinAndClose(CreateThread(nullptr, 0, SleepSeveralTimes, &sleeper, 0, nullptr));
  }
  EXPECT_LT(CountMappings() - before, kThreads / 2);
  EXPECT_THAT(g_diary.Take(), SizeIs(kThreads));
}

TEST_F(StandinThreadsTest, HangIsLoud) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        MSG message;
        GetMessageW(&message, nullptr, 0, 0);
      },
      "every thread waits and nothing is scheduled\n.*waits for a message");
  EXPECT_DEATH(std::thread([] { Sleep(1); }).join(), "did not make waits for Sleep in virtual time");
  EXPECT_DEATH(
      {
        CreateThread(nullptr, 0, SleepForEver, nullptr, 0, nullptr);
        TheDesktop().Reset();
      },
      "reset while a thread");
}

TEST_F(StandinThreadsTest, RealThreadsShareTheDesktop) {
  TheDesktop().Clock().UseRealTime();
  const HWND edit = AddChild(AddWindow({0, 0, 200, 200}), Behaviour::Edit);
  std::atomic<int> pressed{0};
  TheDesktop().Clock().After(5, [&] { ++pressed; });
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([edit] {
      for (int round = 0; round < 50; ++round) {
        SendMessageW(edit, EM_REPLACESEL, 1, reinterpret_cast<LPARAM>(u"x"));
        BSTR text = SysAllocString(u"text");
        SysFreeString(text);
        Sleep(0);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit).size(), 200U);
  while (pressed == 0) {
    Sleep(1);
  }
  EXPECT_EQ(TheDesktop().Calls().Count("SysFreeString"), 200U);
}

TEST_F(StandinTest, CalendarFollowsTheClock) {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  EXPECT_EQ((std::vector<WORD>{time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour, time.wMinute,
                               time.wSecond, time.wMilliseconds}),
            (std::vector<WORD>{2026, 11, 3, 18, 9, 5, 7, 45}));
  Sleep(86'400'000 - 45);
  FILETIME utc{};
  FILETIME local{};
  GetSystemTimeAsFileTime(&utc);
  EXPECT_TRUE(FileTimeToSystemTime(&utc, &time));
  EXPECT_EQ((std::vector<WORD>{time.wDay, time.wHour, time.wSecond, time.wMilliseconds}),
            (std::vector<WORD>{19, 8, 7, 0}));
  EXPECT_TRUE(FileTimeToLocalFileTime(&utc, &local));
  EXPECT_TRUE(FileTimeToSystemTime(&local, &time));
  EXPECT_EQ(time.wHour, 9);
  const FILETIME beyond{0, 0x80000000};
  EXPECT_FALSE(FileTimeToSystemTime(&beyond, &time));
  TheDesktop().Clock().SetTickCount(0xFFFFFFFF);
  EXPECT_EQ(GetTickCount(), 0xFFFFFFFF);
  Sleep(1);
  EXPECT_EQ(GetTickCount(), 0U);
}

// ---- Messages and hooks ----

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

  // Swallows the first press, takes itself away then and wakes its thread.
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

// ---- Windows, focus, elements ----

TEST_F(StandinTest, TopmostShownWindowIsHit) {
  auto& desktop = TheDesktop();
  const HWND below = AddWindow({0, 0, 100, 100});
  const HWND above = AddWindow({50, 50, 150, 150});
  const HWND child = AddChild(above, Behaviour::Edit, {60, 60, 80, 80});
  const auto row = desktop.Elements().Add(above, {.name = u"Row", .rect = {80, 80, 100, 100}});
  EXPECT_EQ(WindowFromPoint({70, 70}), child);
  EXPECT_EQ(WindowFromPoint({90, 90}), above) << "a part without a window has none";
  desktop.Windows().BringToTop(below);
  EXPECT_EQ(WindowFromPoint({70, 70}), below);
  desktop.Windows().Minimize(below);
  EXPECT_EQ(WindowFromPoint({70, 70}), child);
  desktop.Windows().SetVisible(child, false);
  EXPECT_EQ(WindowFromPoint({70, 70}), above);
  EXPECT_EQ(WindowFromPoint({10, 10}), nullptr);
  EXPECT_EQ(WindowFromPoint({150, 150}), nullptr) << "right and bottom lie outside";
  desktop.Windows().MoveTo(above, 500, 50);
  RECT rect{};
  EXPECT_TRUE(GetWindowRect(child, &rect));
  EXPECT_EQ(rect.left, 510);
  desktop.Windows().Destroy(above);
  EXPECT_FALSE(IsWindow(child));
  EXPECT_FALSE(GetWindowRect(child, &rect));
  desktop.Elements().SetProperty(row, UIA_NamePropertyId, u"nobody");
}

TEST_F(StandinTest, OwnedWindowsStayAboveTheirOwner) {
  const HWND owner = AddWindow({0, 0, 100, 100});
  const HWND owned = AddWindow({0, 0, 50, 50}, owner);
  AddWindow({0, 0, 100, 100});
  TheDesktop().Windows().SetForeground(owner);
  EXPECT_EQ(WindowFromPoint({10, 10}), owned);
  EXPECT_EQ(WindowFromPoint({60, 60}), owner);
  EXPECT_EQ(GetParent(owned), owner);
  EXPECT_EQ(GetAncestor(owned, GA_ROOT), owned);
  TheDesktop().Windows().Destroy(owner);
  EXPECT_FALSE(IsWindow(owned));
}

TEST_F(StandinTest, KeysGoToTheWindowInFront) {
  auto& desktop = TheDesktop();
  const HWND first = AddWindow({0, 0, 100, 100});
  const HWND second = AddWindow({200, 0, 300, 100});
  const HWND edit = AddChild(first, Behaviour::Edit);
  desktop.User().Click(20, 20);
  EXPECT_EQ(desktop.Windows().Focus(), edit);
  EXPECT_EQ(desktop.Windows().Foreground(), first);
  EXPECT_TRUE(SetForegroundWindow(second));
  EXPECT_EQ(desktop.Windows().Focus(), second);
  EXPECT_TRUE(SetForegroundWindow(edit));
  EXPECT_EQ(GetForegroundWindow(), first) << "a control is never in front itself";
  EXPECT_EQ(desktop.Windows().Focus(), edit) << "as it was left";

  desktop.Windows().RefuseForeground(1);
  EXPECT_FALSE(SetForegroundWindow(second));
  EXPECT_EQ(SetActiveWindow(second), nullptr) << "not of this thread's queue";
  const DWORD theirs = GetWindowThreadProcessId(second, nullptr);
  EXPECT_FALSE(AttachThreadInput(GetCurrentThreadId(), 0, TRUE));
  EXPECT_TRUE(AttachThreadInput(GetCurrentThreadId(), theirs, TRUE));
  EXPECT_THAT(desktop.Ledger().Outstanding(), ElementsAre("attached input queue"));
  EXPECT_TRUE(SetForegroundWindow(second));
  EXPECT_TRUE(AttachThreadInput(GetCurrentThreadId(), theirs, FALSE));
  EXPECT_EQ(desktop.Windows().Foreground(), second);
  const HWND own = desktop.Host().AddWindow({.rect = {0, 0, 10, 10}});
  EXPECT_EQ(SetActiveWindow(own), second);
  EXPECT_EQ(desktop.Windows().Foreground(), own);
}

class StandinElementsTest : public StandinTest {
 protected:
  void SetUp() override {
    StandinTest::SetUp();
    void* object = nullptr;
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    ASSERT_EQ(CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation, &object), S_OK);
    automation_ = static_cast<IUIAutomation*>(object);
  }
  void TearDown() override {
    automation_->Release();
    CoUninitialize();
    StandinTest::TearDown();
  }

  IUIAutomation* automation_ = nullptr;
};

TEST_F(StandinElementsTest, AnswerForTheirWindowUntilItIsDestroyed) {
  auto& desktop = TheDesktop();
  const HWND window = AddWindow({0, 0, 100, 100});
  const HWND edit = AddChild(window, Behaviour::Edit, {50, 50, 150, 70});
  desktop.Controls().SetText(edit, u"text");
  EXPECT_THAT(desktop.Ledger().Outstanding(), ElementsAre("COM initialisation", "IUIAutomation"));

  IUIAutomationElement* element = nullptr;
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  UIA_HWND handle = nullptr;
  EXPECT_EQ(element->get_CurrentNativeWindowHandle(&handle), S_OK);
  EXPECT_EQ(handle, edit);
  VARIANT value{};
  EXPECT_EQ(element->GetCurrentPropertyValue(UIA_ValueValuePropertyId, &value), S_OK);
  EXPECT_EQ(standin::Text(value.bstrVal), u"text");
  EXPECT_THAT(desktop.Ledger().Outstanding(),
              ElementsAre("BSTR", "COM initialisation", "IUIAutomation", "IUIAutomationElement"));
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(element->GetCurrentPropertyValue(UIA_LegacyIAccessibleValuePropertyId, &value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
  POINT point{};
  BOOL got = FALSE;
  EXPECT_EQ(element->GetClickablePoint(&point, &got), S_OK);
  EXPECT_EQ(point.x, 75) << "the middle of the part that the parent does not cut off";
  desktop.Windows().Minimize(window);
  EXPECT_LT(element->GetClickablePoint(&point, &got), 0);

  desktop.Windows().Destroy(edit);
  EXPECT_EQ(element->get_CurrentNativeWindowHandle(&handle), static_cast<HRESULT>(0x80040201));
  element->Release();
}

TEST_F(StandinElementsTest, FailAndCountAsCallsOfTheirOwn) {
  AddWindow({0, 0, 100, 100});
  IUIAutomationElement* element = nullptr;
  TheDesktop().Calls().SetCrossProcessCost(2.5);
  TheDesktop().Faults().FailWith("IUIAutomation::ElementFromPoint", E_OUTOFMEMORY);
  TheDesktop().Faults().FailNth("IUIAutomation::ElementFromPoint", 2);
  const double start = TheDesktop().Clock().Now();
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  element->Release();
  EXPECT_EQ(automation_->ElementFromPoint({60, 60}, &element), E_OUTOFMEMORY);
  EXPECT_EQ(element, nullptr);
  EXPECT_EQ(TheDesktop().Clock().Now(), start + 5);
  EXPECT_EQ(TheDesktop().Calls().CrossProcessCount(), 2U);

  TheDesktop().Faults().FailNth("NewString", 1);
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  BSTR name = nullptr;
  EXPECT_EQ(element->get_CurrentName(&name), E_OUTOFMEMORY);
  EXPECT_FALSE(standin::InsidePlatformCall());
  TheDesktop().Calls().After("IUIAutomationElement::get_CurrentName", 1,
                             [&] { EXPECT_EQ(standin::Text(name), u"Title"); });
  EXPECT_EQ(element->get_CurrentName(&name), S_OK);
  SysFreeString(name);
  element->Release();
}

// ---- Keys and fields ----

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

// ---- Clipboard, memory, files ----

TEST_F(StandinTest, ClipboardOwnsWhatItWasGiven) {
  const auto allocate = [] {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 4);
    std::memcpy(GlobalLock(block), u"x", 4);
    return block;
  };
  const HGLOBAL block = allocate();
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("global memory", "lock of global memory"));
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr) << "not open";
  EXPECT_TRUE(OpenClipboard(nullptr));
  EXPECT_FALSE(OpenClipboard(nullptr));
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr) << "locked";
  GlobalUnlock(block);
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), block);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("clipboard held open"));
  EXPECT_EQ(GetClipboardData(CF_UNICODETEXT), block);
  const void* before = GlobalLock(block);
  GlobalUnlock(block);
  EXPECT_EQ(GlobalFree(block), block) << "the system's";
  EXPECT_TRUE(CloseClipboard());
  EXPECT_FALSE(CloseClipboard());
  EXPECT_EQ(GlobalLock(block), nullptr) << "closed";

  EXPECT_TRUE(OpenClipboard(nullptr));
  EXPECT_NE(GlobalLock(block), before) << "nobody gets away with a pointer kept from the time before";
  GlobalUnlock(block);
  const HGLOBAL second = allocate();
  GlobalUnlock(second);
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, second), second);
  EXPECT_THAT(TheDesktop().Clipboard().Formats(), ElementsAre("CF_UNICODETEXT"));
  EXPECT_EQ(TheDesktop().Clipboard().Bytes("CF_UNICODETEXT"), (std::vector<std::uint8_t>{'x', 0, 0, 0}));
  EXPECT_TRUE(EmptyClipboard());
  EXPECT_TRUE(CloseClipboard());
  EXPECT_EQ(TheDesktop().Clipboard().Text(), std::nullopt);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(TakeMisuses().size(), 4U);
}

TEST_F(StandinTest, LedgerNamesWhatIsLeftAndWhatIsGivenBackTwice) {
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
  EXPECT_EQ(CoInitializeEx(nullptr, 0), RPC_E_CHANGED_MODE);
  const BSTR text = SysAllocString(u"ab");
  EXPECT_EQ(SysStringLen(text), 2U);
  void* const block = CoTaskMemAlloc(3);
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, TheDesktop().Windows().AddProcess(u"C:\\a.exe"));
  EXPECT_TRUE(SetPropW(GetDesktopWindow(), u"Property", process));
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(),
              ElementsAre("BSTR", "COM initialisation", "COM initialisation", "handle of a process", "task memory",
                          "window property"));
  for (int i = 0; i < 2; ++i) {
    SysFreeString(text);
    CoTaskMemFree(block);
    CloseHandle(process);
    RemovePropW(GetDesktopWindow(), u"Property");
  }
  for (int i = 0; i < 3; ++i) {
    CoUninitialize();
  }
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(TakeMisuses().size(), 4U);

  TheDesktop().Host().InitializeComMultithreaded();
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
  TheDesktop().Host().UninitializeCom();
}

TEST_F(StandinTest, Utf8) {
  struct Case {
    standin::Text text;
    std::string bytes;
  };
  const Case cases[] = {{u"", ""},
                        {u"a\u00E9\u4E2D", "a\xC3\xA9\xE4\xB8\xAD"},
                        {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
                        {u"\xD83Dx\xDE00", "\xEF\xBF\xBDx\xEF\xBF\xBD"}};
  for (const auto& [text, bytes] : cases) {
    char buffer[32];
    const int size = static_cast<int>(bytes.size()) + 1;
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, buffer, size, nullptr, nullptr), size);
    EXPECT_EQ(buffer, bytes);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, buffer, size - 1, nullptr, nullptr), 0);
  }
}

TEST_F(StandinTest, FilesAreAppendedTo) {
  WCHAR* folder = nullptr;
  ASSERT_EQ(SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &folder), S_OK);
  const standin::Text path = standin::Text(folder) + u"\\made\\file.txt";
  CoTaskMemFree(folder);
  const auto open = [&] {
    return CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
  };
  EXPECT_EQ(open(), INVALID_HANDLE_VALUE) << "no such folder";
  EXPECT_TRUE(CreateDirectoryW(path.substr(0, path.rfind(u'\\')).c_str(), nullptr));
  const HANDLE first = open();
  const HANDLE second = open();
  DWORD written = 0;
  for (const HANDLE file : {first, second, first}) {
    EXPECT_TRUE(WriteFile(file, "ab", 2, &written, nullptr));
  }
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("handle of a file", "handle of a file"));
  EXPECT_TRUE(CloseHandle(first));
  EXPECT_TRUE(CloseHandle(second));
  standin::Text machinePath = path;
  std::replace(machinePath.begin(), machinePath.end(), u'\\', u'/');
  EXPECT_EQ(std::filesystem::file_size(machinePath), 6U);
  std::filesystem::remove_all(std::filesystem::path(machinePath).parent_path());
}

// ---- The gate ----

TEST_F(StandinTest, GateFailsTheCallsItIsToldTo) {
  const HWND window = AddWindow({0, 0, 10, 10});
  const auto answers = [window](int calls) {
    std::string all;
    for (int i = 0; i < calls; ++i) {
      all += IsWindow(window) ? 'y' : 'n';
    }
    return all;
  };
  TheDesktop().Faults().FailNth(2);
  EXPECT_EQ(answers(4), "ynyy");
  EXPECT_EQ(GetLastError(), 31U);
  TheDesktop().Faults().FailPair(1, 3);
  EXPECT_EQ(answers(4), "nyny");
  EXPECT_EQ(TheDesktop().Faults().Injected(), 2U);
  TheDesktop().Faults().FailFromNth(3);
  EXPECT_EQ(answers(4), "yynn");
  Sleep(1);
  EXPECT_EQ(TheDesktop().Faults().Injected(), 2U) << "Sleep cannot fail";
  TheDesktop().Faults().FailNth("IsWindow", 2);
  TheDesktop().Faults().Stop();
  EXPECT_EQ(answers(2), "yy");
  TheDesktop().Faults().FailNth("IsWindow", 2);
  EXPECT_EQ(GetParent(window), nullptr);
  EXPECT_EQ(answers(3), "yny");
  TheDesktop().Faults().FailFromNth("IsWindow", 2);
  EXPECT_EQ(answers(3), "ynn");

  TheDesktop().Calls().After("IsWindow", 2, [&] { TheDesktop().Windows().Destroy(window); });
  TheDesktop().Faults().Stop();
  EXPECT_EQ(answers(3), "yyn");
  const auto counted = TheDesktop().Calls().Count();
  const Lines sequence = TheDesktop().Calls().Sequence();
  EXPECT_EQ(sequence.size(), counted);
  EXPECT_EQ(sequence.back(), "IsWindow");
  TheDesktop().Calls().SetTracing(false);
  answers(1);
  EXPECT_EQ(TheDesktop().Calls().Sequence().size(), counted);
  EXPECT_EQ(TheDesktop().Calls().Count(), counted + 1);
}

// A failing call changes nothing, except that what it was to give back is no longer the caller's.
TEST_F(StandinTest, FailingCallsHaveNoEffectButReleasesRelease) {
  auto& desktop = TheDesktop();
  const HWND window = AddWindow({0, 0, 100, 100});
  desktop.Clipboard().Set(u"before");
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 2);
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, desktop.Windows().AddProcess(u"C:\\a.exe"));
  const HHOOK hook = SetWindowsHookExW(
      WH_MOUSE_LL, [](int, WPARAM, LPARAM) -> LRESULT { return 0; }, nullptr, 0);
  SetPropW(window, u"Property", process);
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), TRUE);
  OpenClipboard(nullptr);
  GlobalLock(block);
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(u"x");
  TheDesktop().Faults().FailFromNth(1);

  EXPECT_FALSE(EmptyClipboard());
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr);
  EXPECT_FALSE(SetCursorPos(5, 5));
  EXPECT_FALSE(SetForegroundWindow(window));
  INPUT key{};
  key.type = INPUT_KEYBOARD;
  EXPECT_EQ(SendInput(1, &key, sizeof key), 0U);
  EXPECT_EQ(SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(u"x")), 0);
  EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE, 2), nullptr);
  EXPECT_EQ(SysAllocString(u"x"), nullptr);
  EXPECT_EQ(CoTaskMemAlloc(2), nullptr);
  EXPECT_EQ(WaitForSingleObject(process, 5), 0xFFFFFFFF);
  EXPECT_EQ(CreateThread(nullptr, 0, SleepForEver, nullptr, 0, nullptr), nullptr);

  EXPECT_FALSE(GlobalUnlock(block));
  EXPECT_NE(GlobalFree(block), nullptr);
  EXPECT_FALSE(CloseClipboard());
  EXPECT_FALSE(CloseHandle(process));
  EXPECT_FALSE(UnhookWindowsHookEx(hook));
  EXPECT_EQ(RemovePropW(window, u"Property"), nullptr);
  EXPECT_FALSE(AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), FALSE) &&
               AttachThreadInput(GetCurrentThreadId(), 0, FALSE));
  EXPECT_EQ(VariantClear(&value), E_FAIL);
  TheDesktop().Faults().Stop();
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), FALSE);
  EXPECT_THAT(desktop.Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(desktop.Clipboard().Text(), u"before");
  EXPECT_EQ(desktop.User().Cursor().x, 0);
  EXPECT_EQ(desktop.Windows().Foreground(), nullptr);
  EXPECT_EQ(desktop.Controls().TextOf(window), u"Title");
  TakeMisuses();
}

}  // namespace
}  // namespace tests
