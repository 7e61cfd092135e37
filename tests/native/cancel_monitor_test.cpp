// The thread that watches Escape, on a clock that counts its sleeps.
#include "tests/native/fixture.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace tests {
namespace {

class CancelMonitorTest : public DesktopTest {
 protected:
  // How often the key was asked for while the clock moves on.
  std::uint64_t PollsIn(double milliseconds) {
    const auto before = TheDesktop().Gate().Count("GetAsyncKeyState");
    TheDesktop().Advance(milliseconds);
    return TheDesktop().Gate().Count("GetAsyncKeyState") - before;
  }
};

TEST_F(CancelMonitorTest, PressIsSeenAndStaysUntilTheNextStart) {
  EXPECT_EQ(isCancelled(), 0);
  startCancelMonitor();
  EXPECT_EQ(isCancelled(), 0);
  TheDesktop().HoldEscape(13, 11);
  delay(12);
  EXPECT_EQ(isCancelled(), 0);
  delay(14);
  EXPECT_EQ(isCancelled(), 1);
  stopCancelMonitor();
  EXPECT_EQ(isCancelled(), 1);
  startCancelMonitor();
  EXPECT_EQ(isCancelled(), 0);
  stopCancelMonitor();
  TheDesktop().HoldEscape(1, 50);
  delay(100);
  EXPECT_EQ(isCancelled(), 0) << "nobody watches any more";
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(CancelMonitorTest, KeyIsPolledEveryTenMillisecondsAndEveryFiftyWhileHeld) {
  startCancelMonitor();
  delay(5);
  EXPECT_EQ(PollsIn(100), 10U);
  TheDesktop().PressKey(VK_ESCAPE, true);
  PollsIn(10);
  EXPECT_EQ(isCancelled(), 1);
  EXPECT_EQ(PollsIn(500), 10U);
  TheDesktop().PressKey(VK_ESCAPE, false);
  PollsIn(60);
  EXPECT_EQ(PollsIn(100), 10U);
  TheDesktop().PressKey(VK_ESCAPE, true);
  EXPECT_EQ(PollsIn(100), 10U) << "a press after the first one changes nothing";
  TheDesktop().PressKey(VK_ESCAPE, false);
}

TEST_F(CancelMonitorTest, StartingTwiceLeavesOneThread) {
  startCancelMonitor();
  startCancelMonitor();
  EXPECT_EQ(TheDesktop().Gate().Count("CreateThread"), 2U);
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
  TheDesktop().PressKey(VK_ESCAPE, true);
  delay(200);
  EXPECT_EQ(isCancelled(), 1);
  EXPECT_LE(Elapsed(stopCancelMonitor), 60);
  EXPECT_EQ(PollsIn(300), 0U);
  TheDesktop().PressKey(VK_ESCAPE, false);
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
  TheDesktop().Gate().FailNth("CreateThread", 1);
  startCancelMonitor();
  TheDesktop().HoldEscape(1, 100);
  delay(50);
  EXPECT_EQ(isCancelled(), 0);
  EXPECT_THAT(CallsOf(stopCancelMonitor), IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

// A thread that has not been seen to end may still run in the library, which then has to stay loaded.
TEST_F(CancelMonitorTest, LibraryStaysForAThreadThatDoesNotEnd) {
  startCancelMonitor();
  delay(5);
  TheDesktop().Gate().FailNth("WaitForSingleObject", 1);
  EXPECT_THAT(CallsOf(stopCancelMonitor), ElementsAre("WaitForSingleObject", "GetModuleHandleExW", "CloseHandle"));
  TheDesktop().Gate().StopFailing();
  delay(20);
  EXPECT_EQ(PollsIn(100), 0U) << "it was asked to end all the same";
}

TEST_F(CancelMonitorTest, UnloadingEndsTheThreadAndReleasesEverything) {
  initializeAutomation();
  for (const bool held : {false, true}) {
    OpenLog();
    startCancelMonitor();
    TheDesktop().PressKey(VK_ESCAPE, held);
    delay(25);
    EXPECT_LE(Elapsed([] { EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, nullptr), TRUE); }), 60);
    TheDesktop().PressKey(VK_ESCAPE, false);
    EXPECT_THAT(TheDesktop().Outstanding(), IsEmpty());
    EXPECT_EQ(PollsIn(300), 0U);
  }
  EXPECT_EQ(TheDesktop().Gate().Count("TerminateThread"), 2U) << "each thread ended itself on the spot";
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
