// The automation context: creating it, what is shared between threading models, and the order in which it ends.
#include "automation/automation_context.h"

#include "automation/target_window.h"
#include "log/diagnostic_log.h"
#include "tests/native/fixture.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace tests {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class AutomationContextTest : public DesktopTest {};

TEST_F(AutomationContextTest, IsCreatedOnce) {
  EXPECT_EQ(CallsOf([] { EXPECT_EQ(initializeAutomation(), KORVANE_OK); }),
            (Lines{"CoInitializeEx", "GetCurrentThreadId", "CoCreateInstance"}));
  EXPECT_THAT(CallsOf([] {
                EXPECT_EQ(initializeAutomation(), KORVANE_OK);
                EXPECT_EQ(setTargetWindow(nullptr), KORVANE_OK);
              }),
              IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

// The platform may dispatch messages while it makes the object, and a host that gets one may call again on this thread.
TEST_F(AutomationContextTest, ACallFromWithinItsCreationDoesNotHang) {
  for (const char* call : {"CoInitializeEx", "CoCreateInstance"}) {
    TheDesktop().Calls().After(call, 1, [] { EXPECT_EQ(initializeAutomation(), 0); });
    EXPECT_EQ(initializeAutomation(), 0);
    EXPECT_TRUE(CurrentAutomation());
    cleanupAutomation();
    // The inner call found COM initialised already (S_FALSE), and the library gives back only what it initialised
    // itself.
    CoUninitialize();
  }
  EXPECT_EQ(TheDesktop().Calls().Count("CoCreateInstance"), 4U);
}

TEST_F(AutomationContextTest, ReportsWhatCannotBeCreatedAndTriesAgain) {
  const struct {
    const char* call;
    const char* details;
    std::uint64_t uninitialized;
  } cases[] = {
      {"CoInitializeEx", "COM initialization failed", 0},
      {"CoCreateInstance", "UI Automation creation failed", 1},
  };
  for (const auto& c : cases) {
    const auto before = TheDesktop().Calls().Count("CoUninitialize");
    TheDesktop().Faults().FailNth(c.call, 1);
    EXPECT_EQ(initializeAutomation(), KORVANE_FAILED);
    EXPECT_EQ(TheDesktop().Calls().Count("CoUninitialize") - before, c.uninitialized);
    EXPECT_FALSE(CurrentAutomation());
    EXPECT_EQ(Log(), Lines{std::string("ERROR InitializeAutomation Code:-3 Details:") + c.details});
    EXPECT_EQ(initializeAutomation(), KORVANE_OK);
    cleanupAutomation();
    OpenLog();
  }
}

TEST_F(AutomationContextTest, LeavesAnInitialisationOfTheHostAlone) {
  // COM is initialised by the host already (S_FALSE), and the library gives back only what it initialised itself.
  ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
  EXPECT_EQ(initializeAutomation(), KORVANE_OK);
  EXPECT_THAT(CallsOf(cleanupAutomation), Not(Contains("CoUninitialize")));
  CoUninitialize();
  CoUninitialize();
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());

  TheDesktop().Host().InitializeComMultithreaded();
  EXPECT_EQ(initializeAutomation(), KORVANE_OK);
  EXPECT_TRUE(CurrentAutomation());
  EXPECT_THAT(CallsOf(cleanupAutomation), Not(Contains("CoUninitialize")));
  TheDesktop().Host().UninitializeCom();
}

TEST_F(AutomationContextTest, TheTargetWindowIsStoredWhateverTheResult) {
  const HWND window = AddDialog();
  EXPECT_EQ(setTargetWindow(window), KORVANE_OK);
  EXPECT_EQ(ChooseWindow(nullptr), window);
  EXPECT_EQ(setTargetWindow(nullptr), KORVANE_OK);
  EXPECT_EQ(ChooseWindow(nullptr), nullptr);
  cleanupAutomation();
  TheDesktop().Faults().FailNth("CoCreateInstance", 1);
  EXPECT_EQ(setTargetWindow(window), KORVANE_FAILED);
  EXPECT_EQ(ChooseWindow(nullptr), window);
  const HWND other = AddDialog();
  EXPECT_EQ(ChooseWindow(other), other);
}

TEST_F(AutomationContextTest, EndsInOrder) {
  ASSERT_EQ(setTargetWindow(AddDialog()), KORVANE_OK);
  startCancelMonitor();
  Lines atMonitorEnd;
  Lines atLogEnd;
  // The monitor's thread and event, then the log.
  TheDesktop().Calls().After("CloseHandle", 2, [&] { atMonitorEnd = TheDesktop().Ledger().Outstanding(); });
  TheDesktop().Calls().After("CloseHandle", 3, [&] { atLogEnd = TheDesktop().Ledger().Outstanding(); });
  Lines calls = CallsOf(cleanupAutomation);
  std::erase_if(calls, [](const std::string& call) { return call == "Sleep" || call == "GetAsyncKeyState"; });
  EXPECT_EQ(calls, (Lines{"CreateEventW", "WaitForSingleObject", "SetEvent", "CloseHandle", "CloseHandle",
                          "CloseHandle", "CoUninitialize"}));
  EXPECT_THAT(atMonitorEnd, Contains(HasSubstr("IUIAutomation")));
  EXPECT_THAT(atLogEnd, ElementsAre(HasSubstr("COM")));
  EXPECT_EQ(ChooseWindow(nullptr), nullptr);
  EXPECT_FALSE(LogIsOpen());
  EXPECT_THAT(CallsOf(cleanupAutomation), IsEmpty());
}

TEST_F(AutomationContextTest, ACaptureAfterACleanupMakesANewContext) {
  AddDialog();
  initializeAutomation();
  cleanupAutomation();
  TargetRecord record;
  EXPECT_EQ(captureTargetAtPoint(&record, 200, 200), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Calls().Count("CoCreateInstance"), 2U);
}

TEST_F(AutomationContextTest, ACleanupBesideAnOperationDoesNotTakeItsObjectAway) {
  AddDialog();
  TargetRecord record;
  TheDesktop().Calls().After("IUIAutomation::ElementFromPoint", 1, cleanupAutomation);
  EXPECT_EQ(captureTargetAtPoint(&record, 200, 200), KORVANE_OK);
  EXPECT_EQ(record.pathLength, 0);
  EXPECT_FALSE(CurrentAutomation());
}

TEST_F(AutomationContextTest, DelaySleepsAtLeastSomething) {
  const struct {
    int asked;
    double slept;
  } cases[] = {{1, 1}, {120, 120}, {0, 50}, {-5, 50}, {INT32_MIN, 50}};
  for (const auto& c : cases) {
    const double before = TheDesktop().Clock().Now();
    EXPECT_EQ(CallsOf([&] { delay(c.asked); }), (Lines{"Sleep"}));
    EXPECT_DOUBLE_EQ(TheDesktop().Clock().Now() - before, c.slept) << c.asked;
  }
}

TEST_F(AutomationContextTest, OnlyAFreeingDetachEndsTheLibrary) {
  initializeAutomation();
  startCancelMonitor();
  int processEnds = 0;
  const struct {
    DWORD reason;
    void* reserved;
  } harmless[] = {{DLL_PROCESS_DETACH, &processEnds}, {DLL_PROCESS_ATTACH, nullptr}, {2, nullptr}, {3, nullptr}};
  for (const auto& c : harmless) {
    EXPECT_THAT(CallsOf([&] { EXPECT_EQ(DllMain(nullptr, c.reason, c.reserved), TRUE); }), IsEmpty());
    EXPECT_TRUE(LogIsOpen());
    EXPECT_TRUE(CurrentAutomation());
  }
  EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, nullptr), TRUE);
  EXPECT_FALSE(LogIsOpen());
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  // A second detach has nothing left to end; giving something back twice would be a misuse, which the fixture reports.
  EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_DETACH, nullptr), TRUE);
}

TEST_F(AutomationContextTest, ADetachOnAnotherThreadLeavesTheFirstThreadsObjectModel) {
  initializeAutomation();
  const auto detach = [](LPVOID) -> DWORD {
    DllMain(nullptr, DLL_PROCESS_DETACH, nullptr);
    return 0;
  };
  const HANDLE thread = CreateThread(nullptr, 0, detach, nullptr, 0, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  CloseHandle(thread);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre(HasSubstr("COM")));
  CoUninitialize();
  EXPECT_THAT(TheDesktop().Ledger().Misuses(), IsEmpty());
}

}  // namespace
}  // namespace tests
