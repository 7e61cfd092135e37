// The thread that watches Escape, on a clock that counts its sleeps.
#include "tests/native/fixture.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace tests {
namespace {

const int g_cancelledAtStart = isCancelled();

class CancelMonitorTest : public DesktopTest {
 protected:
  // How often the state of the key was read while this many milliseconds passed.
  std::uint64_t PollsIn(double milliseconds) {
    const auto before = TheDesktop().Calls().Count("GetAsyncKeyState");
    TheDesktop().Clock().Advance(milliseconds);
    return TheDesktop().Calls().Count("GetAsyncKeyState") - before;
  }
};

TEST_F(CancelMonitorTest, PressIsSeenAndStaysUntilTheNextStart) {
  EXPECT_EQ(isCancelled(), 0);
  startCancelMonitor();
  EXPECT_EQ(isCancelled(), 0);
  TheDesktop().User().HoldEscape(13, 11);
  delay(12);
  EXPECT_EQ(isCancelled(), 0);
  delay(14);
  EXPECT_EQ(isCancelled(), 1);
  stopCancelMonitor();
  EXPECT_EQ(isCancelled(), 1);
  startCancelMonitor();
  EXPECT_EQ(isCancelled(), 0);
  stopCancelMonitor();
  TheDesktop().User().HoldEscape(1, 50);
  delay(100);
  EXPECT_EQ(isCancelled(), 0) << "nobody watches any more";
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(CancelMonitorTest, KeyIsPolledEveryTenMillisecondsAndEveryFiftyWhileHeld) {
  startCancelMonitor();
  delay(5);
  EXPECT_EQ(PollsIn(100), 10U);
  TheDesktop().User().PressKey(VK_ESCAPE, true);
  PollsIn(10);
  EXPECT_EQ(isCancelled(), 1);
  EXPECT_EQ(PollsIn(500), 10U);
  TheDesktop().User().PressKey(VK_ESCAPE, false);
  PollsIn(60);
  EXPECT_EQ(PollsIn(100), 10U);
  TheDesktop().User().PressKey(VK_ESCAPE, true);
  EXPECT_EQ(PollsIn(100), 10U) << "a press after the first one changes nothing";
  TheDesktop().User().PressKey(VK_ESCAPE, false);
}

TEST_F(CancelMonitorTest, StartingTwiceLeavesOneThread) {
  startCancelMonitor();
  startCancelMonitor();
  EXPECT_EQ(TheDesktop().Calls().Count("CreateThread"), 2U);
  delay(5);
  EXPECT_EQ(PollsIn(100), 10U);
  stopCancelMonitor();
  EXPECT_EQ(PollsIn(100), 0U);
}

TEST_F(CancelMonitorTest, StopIsPromptAlsoWhileEscapeIsHeld) {
  startCancelMonitor();
  delay(35);
  EXPECT_EQ(Elapsed(stopCancelMonitor), 5);

  startCancelMonitor();
  TheDesktop().User().PressKey(VK_ESCAPE, true);
  delay(200);
  EXPECT_EQ(isCancelled(), 1);
  EXPECT_LE(Elapsed(stopCancelMonitor), 60);
  EXPECT_EQ(PollsIn(300), 0U);
  TheDesktop().User().PressKey(VK_ESCAPE, false);
}

TEST_F(CancelMonitorTest, NothingIsCancelledAtFirst) {
  EXPECT_EQ(g_cancelledAtStart, 0);
}

TEST_F(CancelMonitorTest, NothingToStop) {
  EXPECT_THAT(CallsOf([] {
                stopCancelMonitor();
                isCancelled();
              }),
              IsEmpty());
}

TEST_F(CancelMonitorTest, CleanupStopsTheThread) {
  startCancelMonitor();
  delay(20);
  cleanupAutomation();
  EXPECT_EQ(PollsIn(300), 0U);
}

TEST_F(CancelMonitorTest, WithoutAThreadNothingIsWatched) {
  TheDesktop().Faults().FailNth("CreateThread", 1);
  startCancelMonitor();
  TheDesktop().User().HoldEscape(1, 100);
  delay(50);
  EXPECT_EQ(isCancelled(), 0);
  EXPECT_THAT(CallsOf(stopCancelMonitor), IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

// Without proof that the thread has ended it may still run code of the library, so the library stays loaded.
TEST_F(CancelMonitorTest, LibraryStaysForAThreadThatDoesNotEnd) {
  startCancelMonitor();
  delay(5);
  TheDesktop().Faults().FailNth("WaitForSingleObject", 1);
  EXPECT_EQ(CallsOf(stopCancelMonitor),
            (Lines{"CreateEventW", "WaitForSingleObject", "GetModuleHandleExW", "CloseHandle", "CloseHandle"}));
  TheDesktop().Faults().Stop();
  delay(20);
  EXPECT_EQ(PollsIn(100), 0U) << "it was asked to end all the same";
  EXPECT_EQ(TheDesktop().Calls().Count("SetEvent"), 0U) << "nobody waits for its event any more";
}

// A thread begins late on a busy machine, and while another one holds the loader's lock.
TEST_F(CancelMonitorTest, ThreadThatBeginsLateWatchesOnlyWhileItIsWanted) {
  TheDesktop().Clock().DelayNewThreads(500);
  startCancelMonitor();
  EXPECT_EQ(PollsIn(400), 20U) << "it was not stopped";
  EXPECT_LE(Elapsed(stopCancelMonitor), 10);

  startCancelMonitor();
  stopCancelMonitor();
  TheDesktop().User().HoldEscape(0, 2000);
  EXPECT_EQ(PollsIn(2000), 0U);
  EXPECT_EQ(isCancelled(), 0);

  startCancelMonitor();
  startCancelMonitor();
  delay(700);
  EXPECT_EQ(PollsIn(100), 10U) << "one of the two threads watches";
  stopCancelMonitor();
  EXPECT_EQ(PollsIn(2000), 0U);
}

TEST_F(CancelMonitorTest, StopDoesNotWaitForAStart) {
  TheDesktop().Clock().DelayNewThreads(10'000);
  double stopped = 0;
  TheDesktop().Clock().After(100, [&] {
    const double begin = TheDesktop().Clock().Now();
    stopCancelMonitor();
    stopped = TheDesktop().Clock().Now() - begin;
  });
  startCancelMonitor();
  EXPECT_THAT(stopped, ::testing::AllOf(::testing::Gt(0), ::testing::Le(300)));
  EXPECT_EQ(PollsIn(20'000), 0U);
}

TEST_F(CancelMonitorTest, UnloadingEndsAThreadThatDoesNotCome) {
  startCancelMonitor();
  TheDesktop().Calls().After("GetAsyncKeyState", 1, [] { Sleep(10'000); });
  delay(25);
  EXPECT_THAT(Elapsed([] { EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, nullptr), TRUE); }),
              ::testing::AllOf(::testing::Ge(300), ::testing::Le(310)));
  EXPECT_EQ(TheDesktop().Calls().Count("TerminateThread"), 1U);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(PollsIn(20'000), 0U);
}

TEST_F(CancelMonitorTest, UnloadingEndsTheThreadAndReleasesEverything) {
  struct Case {
    const char* failing;
    bool escapeHeld;
    std::uint64_t signals;  // the thread told that it is out of the code
  };
  for (const auto& [failing, escapeHeld, signals] :
       {Case{"", false, 1}, Case{"", true, 1}, Case{"CreateEventW", false, 0}}) {
    SCOPED_TRACE(failing);
    initializeAutomation();
    OpenLog();
    startCancelMonitor();
    TheDesktop().User().PressKey(VK_ESCAPE, escapeHeld);
    delay(25);
    const auto before = TheDesktop().Calls().Count("SetEvent");
    TheDesktop().Faults().FailNth(failing, 1);
    EXPECT_LE(Elapsed([] { EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, nullptr), TRUE); }), 60);
    TheDesktop().Faults().Stop();
    TheDesktop().User().PressKey(VK_ESCAPE, false);
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
    EXPECT_EQ(PollsIn(300), 0U);
    EXPECT_EQ(TheDesktop().Calls().Count("SetEvent") - before, signals);
  }
  EXPECT_EQ(TheDesktop().Calls().Count("TerminateThread"), 0U);
}

TEST_F(CancelMonitorTest, LoadingAndTheEndOfTheProcessTouchNothing) {
  startCancelMonitor();
  delay(5);
  int something = 0;
  EXPECT_THAT(CallsOf([&] {
                EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr), TRUE);
                EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_ATTACH, &something), TRUE);
                EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, &something), TRUE);
              }),
              IsEmpty());
  EXPECT_EQ(PollsIn(100), 10U);
}

}  // namespace
}  // namespace tests
