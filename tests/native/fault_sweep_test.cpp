// Every platform call of every scenario fails once: alone, from there on, and together with a second one; then every
// allocation of ours. After each run the code is a documented one, a failure has its documented line, what the code
// promises holds, nothing is left over, and the same call succeeds when nothing fails any more.
#include <functional>
#include <random>
#include <set>

#include "tests/native/allocations.h"
#include "tests/native/fault_scenarios.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

// Calls without which a line of the log cannot be written.
bool BelongsToLog(const std::string& call) {
  static const std::set<std::string> calls = {"WriteFile", "CreateFileW", "FileTimeToLocalFileTime",
                                              "FileTimeToSystemTime"};
  return calls.contains(call);
}

class FaultSweepTest : public DesktopTest {
 protected:
  struct Counts {
    int scenarios = 0;
    int sites = 0;
    int runs = 0;
    int injected = 0;
  };

  // Runs the scenario with the faults that `inject` sets. What it writes to the console is dropped.
  static int Run(const Scenario& scenario, Form& form, const std::function<void()>& inject = [] {}) {
    ::testing::internal::CaptureStdout();
    inject();
    const int code = scenario.call(form);
    TheDesktop().Faults().Stop();
    allocations::StopFailing();
    ::testing::internal::GetCapturedStdout();
    return code;
  }

  // A fresh desktop and library, ready for the scenario's call. The context is made by the call itself unless the
  // scenario needs one before.
  Form Prepare(const Scenario& scenario) {
    cleanupAutomation();
    clearElementCache();
    ClearCancelled();
    Form form = BuildForm();
    StartNewLog();
    scenario.arrange(form);
    ForgetLog();
    return form;
  }

  // What may be outstanding while the library is in use: its context and its log.
  static Lines Unexpected() {
    Lines rest;
    for (const std::string& entry : TheDesktop().Ledger().Outstanding()) {
      const bool expected = entry.find("IUIAutomation") == 0 && entry.find("IUIAutomationE") == std::string::npos;
      if (!expected && entry.find("file") == std::string::npos && entry.find("COM") == std::string::npos) {
        rest.push_back(entry);
      }
    }
    return rest;
  }

  static void ExpectDocumented(const Scenario& scenario, int code, const Lines& log, bool lineMayMiss) {
    if (code == scenario.expected && code >= 0) {
      return;
    }
    if (code >= 0) {
      EXPECT_THAT(scenario.others, ::testing::Contains(code)) << "undocumented code";
      return;
    }
    const std::string last = log.empty() ? "" : log.back();
    bool isKnown = false;
    bool hasLine = lineMayMiss;
    for (const Failure& failure : scenario.failures) {
      isKnown |= failure.code == code;
      hasLine |= failure.code == code && (failure.lastLine == nullptr || last == failure.lastLine);
    }
    EXPECT_TRUE(isKnown) << "undocumented code " << code;
    EXPECT_TRUE(hasLine) << "failed with " << code << ", but the last line is: " << last;
  }

  // Runs the scenario with the faults that `inject` sets, and looks at everything it leaves behind.
  void RunWith(const Scenario& scenario, const std::function<void()>& inject, const std::string& what,
               bool lineMayMiss) {
    SCOPED_TRACE(std::string(scenario.name) + ", " + what);
    Form form = Prepare(scenario);
    const int code = Run(scenario, form, inject);

    ExpectDocumented(scenario, code, Log(), lineMayMiss);
    scenario.check(form, code);
    delay(100);  // lets a monitor that outlived its wait end
    EXPECT_THAT(Unexpected(), IsEmpty());
    EXPECT_THAT(TheDesktop().Ledger().Misuses(), IsEmpty());

    Form again = Prepare(scenario);
    EXPECT_EQ(Run(scenario, again), scenario.expected) << "the next call";
    scenario.check(again, scenario.expected);
    cleanupAutomation();
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  }

  // The platform calls of the scenario when nothing fails.
  Lines CallsOf(const Scenario& scenario) {
    Form form = Prepare(scenario);
    const std::size_t before = TheDesktop().Calls().Sequence().size();
    EXPECT_EQ(Run(scenario, form), scenario.expected) << scenario.name;
    const Lines all = TheDesktop().Calls().Sequence();
    return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
  }
};

TEST_F(FaultSweepTest, EveryPlatformCallFailsOnce) {
  Counts counts;
  for (const Scenario& scenario : Scenarios()) {
    const Lines calls = CallsOf(scenario);
    ++counts.scenarios;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      const std::string site = "call " + std::to_string(i + 1) + " (" + calls[i] + ")";
      ++counts.sites;
      RunWith(scenario, [&] { TheDesktop().Faults().FailNth(i + 1); }, site, BelongsToLog(calls[i]));
      RunWith(scenario, [&] { TheDesktop().Faults().FailFromNth(i + 1); }, site + " and later", true);
      counts.runs += 2;
      if (HasFailure()) {
        return;
      }
    }
  }
  std::printf("fault sweep: %d scenarios, %d call sites, %d runs\n", counts.scenarios, counts.sites, counts.runs);
}

// A method may succeed and hand out nothing. GetClickablePoint is left out: (0, 0) is a point like any other.
TEST_F(FaultSweepTest, EveryMethodOfUiAutomationAnswersNothingOnce) {
  for (const Scenario& scenario : Scenarios()) {
    const Lines calls = CallsOf(scenario);
    for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
      if (calls[i].starts_with("IUIAutomation") && !calls[i].ends_with("GetClickablePoint")) {
        const auto inject = [&] {
          TheDesktop().Faults().FailWith(calls[i], S_FALSE);
          TheDesktop().Faults().FailNth(i + 1);
        };
        RunWith(scenario, inject, "nothing from call " + std::to_string(i + 1) + " (" + calls[i] + ")", false);
      }
    }
  }
}

TEST_F(FaultSweepTest, PairsOfFaults) {
  constexpr int kPairs = 2000;
  std::mt19937 random(20261118);
  std::vector<std::size_t> sizes;
  for (const Scenario& scenario : Scenarios()) {
    sizes.push_back(CallsOf(scenario).size());
  }
  for (int run = 0; run < kPairs && !HasFailure(); ++run) {
    const std::size_t which = random() % Scenarios().size();
    const std::size_t count = std::max<std::size_t>(sizes[which], 1);
    const std::size_t first = random() % count + 1;
    const std::size_t second = first + random() % count + 1;
    RunWith(
        Scenarios()[which], [&] { TheDesktop().Faults().FailPair(first, second); },
        "calls " + std::to_string(first) + " and " + std::to_string(second), true);
  }
}

// Every export catches std::bad_alloc, also one that allocates nothing today: here a platform call throws it.
TEST_F(FaultSweepTest, EveryExportSaysThatMemoryRanOut) {
  const struct {
    const char* scenario;
    const char* call;
    int code;
  } cases[] = {
      {.scenario = "captureTargetAtPoint, part without window", .call = "WindowFromPoint", .code = KORVANE_FAILED},
      {.scenario = "captureTargetAtCursor", .call = "GetCursorPos", .code = KORVANE_NOT_FOUND},
      {.scenario = "verifyTarget, id", .call = "SysAllocString", .code = KORVANE_FAILED},
      {.scenario = "clickTarget, id", .call = "IsWindow", .code = KORVANE_FAILED},
      {.scenario = "pasteToTargetWithVerifyEx", .call = "OpenClipboard", .code = KORVANE_FAILED},
      {.scenario = "pasteToTargetDirect, caret", .call = "GetAncestor", .code = KORVANE_FAILED},
      {.scenario = "setClipboardText", .call = "GlobalAlloc", .code = KORVANE_FAILED},
      {.scenario = "setClipboardTextAndHtml", .call = "GlobalAlloc", .code = KORVANE_FAILED},
      {.scenario = "isTargetEmpty", .call = "SysAllocString", .code = KORVANE_NOT_FOUND},
      {.scenario = "targetContainsText", .call = "SysAllocString", .code = KORVANE_NOT_FOUND},
      {.scenario = "targetContainsPartialText", .call = "SysAllocString", .code = KORVANE_NOT_FOUND},
      {.scenario = "waitForFieldChange", .call = "GetTickCount", .code = KORVANE_FAILED},
      {.scenario = "waitForFieldEmpty, in vain", .call = "GetTickCount", .code = KORVANE_FAILED},
      {.scenario = "waitForTargetContainsText", .call = "GetTickCount", .code = KORVANE_FAILED},
      {.scenario = "waitForTargetContainsPartialText", .call = "GetTickCount", .code = KORVANE_FAILED},
      {.scenario = "verifySimple", .call = "OpenClipboard", .code = KORVANE_FAILED},
      {.scenario = "getWindowInfo", .call = "GetWindowTextW", .code = KORVANE_FAILED},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.scenario);
    const auto scenario = std::find_if(Scenarios().begin(), Scenarios().end(),
                                       [&](const Scenario& each) { return std::string_view(each.name) == c.scenario; });
    ASSERT_NE(scenario, Scenarios().end());
    Form form = Prepare(*scenario);
    EXPECT_EQ(Run(*scenario, form, [&] { TheDesktop().Faults().EndMemoryAt(c.call, 1); }), c.code);
    const std::string name = std::string(c.scenario).substr(0, std::string_view(c.scenario).find(','));
    EXPECT_EQ(Log().back(), "ERROR " + name + " Code:" + std::to_string(c.code) + " Details:Out of memory");
    EXPECT_THAT(Unexpected(), IsEmpty());
  }
}

TEST_F(FaultSweepTest, EveryAllocationFailsOnce) {
  int sites = 0;
  for (const Scenario& scenario : Scenarios()) {
    const std::string name = std::string(scenario.name).substr(0, std::string_view(scenario.name).find(','));
    // These answer -1, as they do when there is no text or no element.
    static const std::set<std::string> unread = {"captureTargetAtCursor", "isTargetEmpty", "targetContainsText",
                                                 "targetContainsPartialText"};
    const int code = unread.contains(name) ? KORVANE_NOT_FOUND : KORVANE_FAILED;
    const std::string line = "ERROR " + name + " Code:" + std::to_string(code) + " Details:Out of memory";
    Scenario withMemory = scenario;
    withMemory.failures.push_back({code, line.c_str()});
    Form form = Prepare(scenario);
    ::testing::internal::CaptureStdout();
    allocations::StartCounting();
    scenario.call(form);
    const std::size_t count = allocations::StopCounting();
    ::testing::internal::GetCapturedStdout();
    for (std::size_t i = 1; i <= count && !HasFailure(); ++i, ++sites) {
      RunWith(withMemory, [&] { allocations::FailNth(i); }, "allocation " + std::to_string(i), false);
    }
  }
  std::printf("fault sweep: %d allocation sites\n", sites);
}

}  // namespace
}  // namespace tests
