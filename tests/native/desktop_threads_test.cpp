// The scripted desktop: its clock, and threads that take turns.
#include <atomic>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

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

}  // namespace
}  // namespace tests
