// Every platform call of every scenario fails once: alone, from there on, and together with a second one; then every
// allocation of ours. After each run the code is a documented one, a failure has its line, nothing is left over, and
// the same call succeeds when nothing fails any more.
#include <functional>
#include <random>
#include <set>

#include "tests/native/allocations.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

// The desktop that all scenarios run on: a dialog with an edit, a button and a part without a window.
struct Form {
  HWND window, edit, button, other;
  TargetRecord byId, byPath, byPoint, windowless;
};

Form BuildForm() {
  auto& desktop = TheDesktop();
  desktop.Reset();
  Form form{};
  const DWORD process = desktop.AddProcess(u"C:\\Office\\orders.exe");
  form.window =
      desktop.AddWindow({.className = u"Dialog", .title = u"Orders", .rect = {100, 100, 500, 400}, .process = process});
  form.edit = desktop.AddWindow({.className = u"Edit",
                                 .rect = {120, 120, 320, 150},
                                 .parent = form.window,
                                 .controlId = 7,
                                 .behaviour = standin::Behaviour::Edit});
  form.button = desktop.AddWindow({.className = u"Button",
                                   .title = u"Save",
                                   .rect = {120, 160, 220, 190},
                                   .parent = form.window,
                                   .controlId = 8,
                                   .behaviour = standin::Behaviour::Button});
  desktop.AddElement(form.window, {.className = u"", .name = u"Row", .rect = {120, 200, 320, 220}});
  form.other = desktop.AddWindow({.className = u"Other", .title = u"Other", .rect = {600, 100, 800, 300}});
  desktop.BringToTop(form.window);
  desktop.SetForeground(form.other);
  desktop.SetClipboard(u"pasted text");
  desktop.SetCursor(150, 130);

  form.byId = RecordById(u"7");
  form.byPath = EmptyRecord();
  AddLevel(form.byPath, UIA_WindowControlTypeId, u"Dialog", 1);
  AddLevel(form.byPath, 50004, u"Edit", 1);
  form.byPoint = RecordAt(150, 130);
  form.windowless = RecordAt(150, 210);
  return form;
}

// A text the library would release itself is the host's here.
int ReadText(const TargetRecord& record, HWND window) {
  KorvaneChar* text = getTargetText(&record, window);
  const int code = text != nullptr ? KORVANE_OK : KORVANE_NOT_FOUND;
  freeTextResult(text);
  return code;
}

struct Scenario {
  const char* name;
  std::function<int(Form&)> call;
  std::set<int> codes;     // every documented one
  std::set<int> unlogged;  // of these, the ones without a line
  int expected = KORVANE_OK;
  std::function<void(Form&)> arrange = [](Form&) {};
};

void ShowText(Form& form) {
  TheDesktop().SetText(form.edit, u"shown text");
}

const std::vector<Scenario>& Scenarios() {
  static const std::vector<Scenario> all = {
      {"initializeAutomation", [](Form&) { return initializeAutomation(); }, {0, -3}, {}},
      {"setTargetWindow", [](Form& f) { return setTargetWindow(f.window); }, {0, -3}, {}},
      {"delay",
       [](Form&) {
         delay(3);
         return 0;
       },
       {0},
       {}},
      {"initializeLog, default",
       [](Form&) {
         initializeLog(nullptr);
         return 0;
       },
       {0},
       {}},
      {"logAction",
       [](Form&) {
         logAction(u"step", 0, 1);
         logActionWithTimestamp(u"step", 0, 1, 0);
         return 0;
       },
       {0},
       {}},
      {"captureTargetAtPoint, edit",
       [](Form&) {
         TargetRecord r;
         return captureTargetAtPoint(&r, 150, 130);
       },
       {0, -1, -3},
       {}},
      {"captureTargetAtPoint, part without window",
       [](Form&) {
         TargetRecord r;
         return captureTargetAtPoint(&r, 150, 210);
       },
       {0, -1, -3},
       {}},
      {"captureTargetAtPoint, null", [](Form&) { return captureTargetAtPoint(nullptr, 1, 1); }, {-2}, {}, -2},
      {"captureTargetAtCursor",
       [](Form&) {
         TargetRecord r;
         return captureTargetAtCursor(&r);
       },
       {0, -1},
       {-1}},
      {"verifyTarget, id", [](Form& f) { return verifyTarget(&f.byId, f.window); }, {0, -1, -3}, {}},
      {"verifyTarget, path", [](Form& f) { return verifyTarget(&f.byPath, f.window); }, {0, -1, -3}, {}},
      {"verifyTarget, point", [](Form& f) { return verifyTarget(&f.byPoint, f.window); }, {0, -1, -3}, {}},
      {"verifyTarget, windowless", [](Form& f) { return verifyTarget(&f.windowless, f.window); }, {0, -1, -3}, {}},
      {"verifyTarget, other window", [](Form& f) { return verifyTarget(&f.byPoint, f.other); }, {-1, -3}, {}, -1},
      {"clearElementCache",
       [](Form&) {
         clearElementCache();
         return 0;
       },
       {0},
       {}},
      {"clickTarget, id", [](Form& f) { return clickTarget(&f.byId, f.window); }, {0, -1, -3}, {-3}},
      {"clickTarget, path", [](Form& f) { return clickTarget(&f.byPath, f.window); }, {0, -1, -3}, {-3}},
      {"clickTarget, point", [](Form& f) { return clickTarget(&f.byPoint, f.window); }, {0, -1, -3}, {-3}},
      {"clickTarget, remembered",
       [](Form& f) { return clickTarget(&f.byId, f.window); },
       {0, -1, -3},
       {-3},
       0,
       [](Form& f) { verifyTarget(&f.byId, f.window); }},
      {"clickTarget, no window", [](Form& f) { return clickTarget(&f.byId, nullptr); }, {-2, -3}, {}, -2},
      {"clickTarget, no clickable point",
       [](Form& f) { return clickTarget(&f.byId, f.window); },
       {0, -1, -3},
       {-3},
       0,
       [](Form& f) { TheDesktop().SetClickablePoint(TheDesktop().ElementOf(f.edit), std::nullopt); }},
      {"ensureWindowFocus", [](Form& f) { return ensureWindowFocus(f.window); }, {0, -1, -3}, {}},
      {"ensureWindowFocus, minimised and refused",
       [](Form& f) { return ensureWindowFocus(f.window); },
       {0, -1, -3},
       {},
       0,
       [](Form& f) {
         TheDesktop().Minimize(f.window);
         TheDesktop().RefuseForeground(1);
       }},
      {"pasteToTargetWithVerifyEx",
       [](Form& f) { return pasteToTargetWithVerifyEx(&f.byPath, f.window, 40); },
       {0, -1, -3},
       {}},
      {"pasteToTargetWithVerify, id",
       [](Form& f) { return pasteToTargetWithVerify(&f.byId, f.window); },
       {0, -1, -3},
       {}},
      {"pasteToTargetDirect, caret",
       [](Form& f) { return pasteToTargetDirect(&f.byId, f.window, u"direct", 1); },
       {0, -1},
       {},
       0,
       [](Form&) { initializeAutomation(); }},
      {"pasteToTargetDirect, all",
       [](Form& f) { return pasteToTargetDirect(&f.byPath, f.window, u"direct", 0); },
       {0, -1},
       {},
       0,
       [](Form&) { initializeAutomation(); }},
      {"pasteToTargetSimple", [](Form& f) { return pasteToTargetSimple(&f.byId, f.window); }, {0, -3}, {-3}},
      {"sendKey", [](Form&) { return sendKey(0x41); }, {0, -3}, {-3}},
      {"sendKeySequence", [](Form&) { return sendKeySequence(u"Ab!", 1); }, {0, -3}, {-3}},
      {"sendCtrlShiftF3", [](Form&) { return sendCtrlShiftF3(); }, {0, -3}, {-3}},
      {"setClipboardText", [](Form&) { return setClipboardText(u"text"); }, {0, -3}, {}},
      {"setClipboardTextAndHtml", [](Form&) { return setClipboardTextAndHtml(u"text", "<b>text</b>"); }, {0, -3}, {}},
      {"setClipboardText, held",
       [](Form&) { return setClipboardText(u"text"); },
       {0, -3},
       {},
       -3,
       [](Form&) { TheDesktop().HoldClipboard(-1); }},
      {"getTargetText",
       [](Form& f) { return ReadText(f.byPath, f.window); },
       {0, -1},
       {},
       0,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"isTargetEmpty",
       [](Form& f) { return isTargetEmpty(&f.byId, f.window); },
       {0, -1},
       {},
       0,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"targetContainsText",
       [](Form& f) { return targetContainsText(&f.byId, f.window, u"shown text"); },
       {1, 0, -1},
       {},
       1,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"targetContainsPartialText",
       [](Form& f) { return targetContainsPartialText(&f.byId, f.window, u"own"); },
       {1, 0, -1},
       {},
       1,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"waitForTargetContainsText",
       [](Form& f) { return waitForTargetContainsText(&f.byId, f.window, u"shown text", 6); },
       {0, -3},
       {},
       0,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"waitForFieldChange",
       [](Form& f) { return waitForFieldChange(&f.byId, f.window, u"shown text", 6); },
       {0, -3},
       {},
       0,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
         TheDesktop().After(3, [edit = f.edit] { TheDesktop().SetText(edit, u"new"); });
       }},
      {"waitForFieldEmpty, in vain",
       [](Form& f) { return waitForFieldEmpty(&f.byId, f.window, 4); },
       {0, -3},
       {},
       -3,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"waitForTargetContainsPartialText",
       [](Form& f) { return waitForTargetContainsPartialText(&f.byId, f.window, u"own", 6); },
       {0, -3},
       {},
       0,
       [](Form& f) {
         initializeAutomation();
         ShowText(f);
       }},
      {"verifySimple",
       [](Form& f) { return verifySimple(u"shown text", f.window); },
       {0, -1, -3},
       {-3},
       0,
       [](Form& f) {
         ShowText(f);
         TheDesktop().ClickAsUser(150, 130);
       }},
      {"getWindowInfo",
       [](Form& f) {
         WindowInfo info;
         return getWindowInfo(f.window, &info);
       },
       {0},
       {}},
      {"findWindowByClick",
       [](Form& f) { return findWindowByClick() == f.window ? KORVANE_OK : KORVANE_NOT_FOUND; },
       {0, -1},
       {-1},
       0,
       [](Form&) {
         TheDesktop().After(5, [] { TheDesktop().ClickAsUser(150, 170); });
         // A later message, for when the waking one is lost.
         TheDesktop().After(9, [] { TheDesktop().PostMessageToThread(WM_NULL); });
       }},
      {"cancel monitor",
       [](Form&) {
         startCancelMonitor();
         delay(40);
         stopCancelMonitor();
         return isCancelled();
       },
       {1, 0},
       {0, 1},
       1,
       [](Form&) { TheDesktop().HoldEscape(5, 20); }},
  };
  return all;
}

// Calls whose failure takes the line with it.
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

  // The call alone, with its console trace kept away and the faults set only around it.
  static int Run(
      const Scenario& scenario, Form& form, const std::function<void()>& inject = [] {}) {
    ::testing::internal::CaptureStdout();
    inject();
    const int code = scenario.call(form);
    TheDesktop().Gate().StopFailing();
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
    for (const std::string& entry : TheDesktop().Outstanding()) {
      const bool expected = entry.find("IUIAutomation") == 0 && entry.find("IUIAutomationE") == std::string::npos;
      if (!expected && entry.find("file") == std::string::npos && entry.find("COM") == std::string::npos) {
        rest.push_back(entry);
      }
    }
    return rest;
  }

  // Runs the scenario with the faults that `inject` sets, and looks at everything it leaves behind.
  int RunWith(const Scenario& scenario, const std::function<void()>& inject, const std::string& what,
              bool lineMayMiss) {
    SCOPED_TRACE(std::string(scenario.name) + ", " + what);
    Form form = Prepare(scenario);
    const int code = Run(scenario, form, inject);

    EXPECT_TRUE(scenario.codes.contains(code)) << "undocumented code " << code;
    const Lines log = Log();
    if (code < 0 && !scenario.unlogged.contains(code) && !lineMayMiss) {
      EXPECT_FALSE(log.empty()) << "failed with " << code << " without a line";
    }
    delay(100);  // lets a monitor that outlived its wait end
    EXPECT_THAT(Unexpected(), IsEmpty());
    EXPECT_THAT(TheDesktop().Misuses(), IsEmpty());

    Form again = Prepare(scenario);
    EXPECT_EQ(Run(scenario, again), scenario.expected) << "the next call";
    cleanupAutomation();
    EXPECT_THAT(TheDesktop().Outstanding(), IsEmpty());
    return code;
  }

  // The platform calls of the scenario when nothing fails.
  Lines CallsOf(const Scenario& scenario) {
    Form form = Prepare(scenario);
    const std::size_t before = TheDesktop().Gate().Sequence().size();
    EXPECT_EQ(Run(scenario, form), scenario.expected) << scenario.name;
    const Lines all = TheDesktop().Gate().Sequence();
    return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
  }
};

TEST_F(FaultSweepTest, EveryPlatformCallFailsOnce) {
  Counts counts;
  auto& gate = TheDesktop().Gate();
  for (const Scenario& scenario : Scenarios()) {
    const Lines calls = CallsOf(scenario);
    ++counts.scenarios;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      const std::string site = "call " + std::to_string(i + 1) + " (" + calls[i] + ")";
      ++counts.sites;
      RunWith(
          scenario, [&] { gate.FailNth(i + 1); }, site, BelongsToLog(calls[i]));
      RunWith(
          scenario, [&] { gate.FailFromNth(i + 1); }, site + " and later", true);
      counts.runs += 2;
      if (HasFailure()) {
        return;
      }
    }
  }
  std::printf("fault sweep: %d scenarios, %d call sites, %d runs\n", counts.scenarios, counts.sites, counts.runs);
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
        Scenarios()[which], [&] { TheDesktop().Gate().FailPair(first, second); },
        "calls " + std::to_string(first) + " and " + std::to_string(second), true);
  }
}

TEST_F(FaultSweepTest, EveryAllocationFailsOnce) {
  int sites = 0;
  for (const Scenario& scenario : Scenarios()) {
    Form form = Prepare(scenario);
    std::size_t count = 0;
    ::testing::internal::CaptureStdout();
    allocations::StartCounting();
    scenario.call(form);
    count = allocations::StopCounting();
    ::testing::internal::GetCapturedStdout();
    for (std::size_t i = 1; i <= count && !HasFailure(); ++i, ++sites) {
      Scenario withMemoryCode = scenario;
      withMemoryCode.codes.insert({KORVANE_FAILED, KORVANE_NOT_FOUND});
      RunWith(
          withMemoryCode, [&] { allocations::FailNth(i); }, "allocation " + std::to_string(i), false);
    }
  }
  std::printf("fault sweep: %d allocation sites\n", sites);
}

}  // namespace
}  // namespace tests
