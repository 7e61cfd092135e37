// Clicking: the checks before it, the remembered and the searched way, the input sent, and bringing a window forward.
#include <cstring>

#include "automation/automation_context.h"
#include "resolve/coordinate_cache.h"
#include "tests/native/allocations.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

using ::testing::Contains;
using ::testing::Not;

const std::string kCacheHit = "[CACHE HIT] Clicked using cached coordinates";

class ClickTargetTest : public FormTest {
 protected:
  // The input records of the last call.
  static std::vector<INPUT> LastBatch() {
    const auto batches = TheDesktop().Input().Batches();
    return batches.empty() ? std::vector<INPUT>() : batches.back();
  }

  static void ExpectPoint(POINT actual, POINT expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
  }

  // The statistics of the clicks so far, which are then forgotten.
  std::string Statistics() {
    ForgetLog();
    clearElementCache();
    const Lines lines = Starting(Log(), "[CACHE STATS] ");
    return lines.empty() ? "none" : lines.front().substr(std::strlen("[CACHE STATS] "));
  }
};

TEST_F(ClickTargetTest, FindsTheTargetFocusesItsWindowAndClicks) {
  const HWND other = TheDesktop().Windows().Add({.className = u"Other", .rect = {600, 100, 700, 200}});
  TheDesktop().Windows().SetForeground(other);
  const Lines calls = CallsOf([&] { EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK); });
  EXPECT_EQ(TheDesktop().Windows().Foreground(), window_);
  EXPECT_EQ(TheDesktop().Controls().MouseDowns(edit_), 1);
  EXPECT_EQ(TheDesktop().Windows().Focus(), edit_);
  // No pause, and the cursor is placed after the window came forward.
  const auto element = std::find(calls.begin(), calls.end(), "IUIAutomationElement::GetClickablePoint");
  ASSERT_NE(element, calls.end());
  EXPECT_EQ(Lines(element + 1, calls.end()),
            (Lines{"IsWindow", "IsIconic", "SetForegroundWindow", "GetForegroundWindow", "SetCursorPos", "SendInput"}));
  const auto records = LastBatch();
  ASSERT_EQ(records.size(), 2U);
  const DWORD flags[] = {0x8002, 0x8004};
  for (int i = 0; i < 2; ++i) {
    const INPUT& record = records[static_cast<std::size_t>(i)];
    EXPECT_EQ(record.type, 0U);
    ExpectPoint({record.mi.dx, record.mi.dy}, {220, 135});
    EXPECT_EQ(record.mi.dwFlags, flags[i]);
    EXPECT_EQ(record.mi.mouseData, 0U);
    EXPECT_EQ(record.mi.time, 0U);
    EXPECT_EQ(record.mi.dwExtraInfo, 0U);
  }
  ExpectPoint(TheDesktop().User().Cursor(), {220, 135});
  EXPECT_EQ(Log(), kFoundById);
}

TEST_F(ClickTargetTest, ARememberedPointIsClickedAtOnce) {
  const HWND other = TheDesktop().Windows().Add({.className = u"Other", .rect = {600, 100, 700, 200}});
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  TheDesktop().Windows().SetForeground(other);
  TheDesktop().Windows().BringToTop(window_);
  TheDesktop().User().MoveCursor(0, 0);
  TheDesktop().Windows().MoveTo(edit_, 130, 200);  // is not noticed
  ForgetLog();
  TheDesktop().Calls().ClearTrace();
  const std::size_t batches = TheDesktop().Input().Batches().size();
  const auto crossProcess = TheDesktop().Calls().CrossProcessCount();
  const Lines calls = CallsOf([&] {
    allocations::StartCounting();
    const int code = clickTarget(&target_, window_);
    EXPECT_EQ(allocations::StopCounting(), 0U);
    EXPECT_EQ(code, 0);
  });
  EXPECT_EQ(calls, (Lines{"IsWindow", "WideCharToMultiByte", "GetWindowRect", "SetCursorPos", "mouse_event",
                          "GetSystemTimeAsFileTime", "FileTimeToLocalFileTime", "FileTimeToSystemTime"}));
  EXPECT_EQ(TheDesktop().Calls().CrossProcessCount(), crossProcess);
  EXPECT_EQ(TheDesktop().Input().Batches().size(), batches);
  ExpectPoint(TheDesktop().User().Cursor(), {220, 135});
  const auto trace = TheDesktop().Calls().Trace();
  ASSERT_GE(trace.size(), 2U);
  EXPECT_EQ(trace[1].call, "mouse_event");
  EXPECT_EQ(trace[1].detail, "flags=6 dx=0 dy=0 data=0 extra=0");
  EXPECT_EQ(Log(), (Lines{kCacheHit}));
  EXPECT_EQ(Statistics(), "Hits: 1, Misses: 1, Hit Rate: 50.0%");
  // Once forgotten it is searched for again.
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {230, 215});
}

TEST_F(ClickTargetTest, AWindowThatDoesNotAnswerMakesARememberedPointAMiss) {
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  TheDesktop().Windows().MoveTo(edit_, 130, 200);
  TheDesktop().Faults().FailNth("GetWindowRect", 1);
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {230, 215});
  const auto point = FindCachedPoint(CacheKey(window_, target_));
  ASSERT_TRUE(point);
  ExpectPoint(*point, {230, 215});
  EXPECT_EQ(Statistics(), "Hits: 0, Misses: 2, Hit Rate: 0.0%");
}

TEST_F(ClickTargetTest, TheStatisticsCountClicksAlone) {
  EXPECT_EQ(verifyTarget(&target_, window_), KORVANE_OK);
  EXPECT_EQ(Statistics(), "none");
  EXPECT_EQ(verifyTarget(&target_, window_), KORVANE_OK);
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  EXPECT_EQ(Statistics(), "Hits: 1, Misses: 0, Hit Rate: 100.0%");
}

TEST_F(ClickTargetTest, WithoutAnIdEveryClickSearches) {
  const TargetRecord byPoint = RecordAt(130, 130);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(clickTarget(&byPoint, window_), KORVANE_OK);
  }
  EXPECT_EQ(Statistics(), "Hits: 0, Misses: 3, Hit Rate: 0.0%");
}

TEST_F(ClickTargetTest, ChecksInOrder) {
  const auto error = [](int code, const std::string& details) {
    return "ERROR clickTarget Code:" + std::to_string(code) + " Details:" + details;
  };
  // Without a context the target comes first, then the context, then the window.
  EXPECT_EQ(clickTarget(nullptr, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{error(-2, "Invalid target parameter")}));
  EXPECT_EQ(TheDesktop().Calls().Count("CoCreateInstance"), 0U);
  TheDesktop().Faults().FailNth("CoCreateInstance", 1);
  EXPECT_EQ(clickTarget(&target_, nullptr), KORVANE_FAILED);
  EXPECT_EQ(Log(), (Lines{"ERROR InitializeAutomation Code:-3 Details:UI Automation creation failed"}));
  EXPECT_EQ(clickTarget(&target_, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{error(-2, "No target window specified")}));
  const HWND gone = AddDialog();
  TheDesktop().Windows().Destroy(gone);
  EXPECT_EQ(clickTarget(&target_, gone), KORVANE_NOT_FOUND);
  EXPECT_EQ(Log(), (Lines{error(-1, "Target window not found")}));
  EXPECT_EQ(Statistics(), "none");

  const TargetRecord absent = RecordById(u"absent");
  EXPECT_EQ(clickTarget(&absent, window_), KORVANE_NOT_FOUND);
  EXPECT_EQ(Log().back(), error(-1, "Target element not found"));
  const auto edit = TheDesktop().Elements().Of(edit_);
  TheDesktop().Elements().SetClickablePoint(edit, std::nullopt);
  TheDesktop().Elements().FailRectangle(edit);
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_FAILED);
  EXPECT_EQ(Log().back(), error(-3, "Failed to get clickable point"));
  EXPECT_EQ(Statistics(), "Hits: 0, Misses: 2, Hit Rate: 0.0%") << "a failed search is a miss";
  EXPECT_TRUE(TheDesktop().Input().Sent().empty());

  CancelByEscape();
  ForgetLog();
  EXPECT_THAT(CallsOf([&] {
                EXPECT_EQ(clickTarget(nullptr, nullptr), KORVANE_CANCELLED);
                EXPECT_EQ(clickTarget(&target_, window_), KORVANE_CANCELLED);
              }),
              IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ClickTargetTest, TheGivenWindowComesBeforeTheTargetWindow) {
  const HWND second = TheDesktop().Windows().Add({.className = u"Dialog", .rect = {600, 100, 900, 400}});
  AddControl(second, u"Edit", 7, {620, 120, 820, 150});
  ASSERT_EQ(setTargetWindow(second), KORVANE_OK);
  TargetRecord target = target_;
  target.hwnd = edit_;  // is not looked at
  EXPECT_EQ(clickTarget(&target, nullptr), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {720, 135});
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {220, 135});
  EXPECT_EQ(clickTarget(&target_, nullptr), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {720, 135});
  EXPECT_EQ(Statistics(), "Hits: 1, Misses: 2, Hit Rate: 33.3%");
}

TEST_F(ClickTargetTest, TheElementsOwnPointComesBeforeItsCentre) {
  const struct {
    RECT rect;
    std::optional<POINT> clickable;
    POINT clicked;
  } cases[] = {
      {{100, 50, 201, 71}, std::nullopt, {150, 60}},
      {{-3, -8, 0, -3}, std::nullopt, {-1, -5}},  // halves the sum, toward zero
      {{INT32_MAX - 2, INT32_MIN, INT32_MAX, INT32_MIN + 3}, std::nullopt, {INT32_MAX - 1, INT32_MIN + 2}},
      {{100, 50, 201, 71}, POINT{101, 52}, {101, 52}},
      {{100, 50, 201, 71}, POINT{0, 0}, {0, 0}},
  };
  int id = 20;
  for (const auto& c : cases) {
    const HWND control = AddControl(window_, u"Edit", ++id, c.rect);
    TheDesktop().Elements().SetClickablePoint(TheDesktop().Elements().Of(control), c.clickable);
    const std::string digits = std::to_string(id);
    const TargetRecord record = RecordById(std::u16string(digits.begin(), digits.end()));
    EXPECT_EQ(clickTarget(&record, window_), KORVANE_OK);
    ExpectPoint(TheDesktop().User().Cursor(), c.clicked);
    const auto stored = FindCachedPoint(CacheKey(window_, record));
    ASSERT_TRUE(stored);
    ExpectPoint(*stored, c.clicked);
  }
}

TEST_F(ClickTargetTest, APointIsTakenWhateverTheElementSaysOfIt) {
  const auto edit = TheDesktop().Elements().Of(edit_);
  TheDesktop().Elements().SetClickablePoint(edit, POINT{130, 125});
  TheDesktop().Elements().DenyClickablePoint(edit);
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  ExpectPoint(TheDesktop().User().Cursor(), {130, 125});
}

TEST_F(ClickTargetTest, InputThatIsNotAcceptedFailsAndLeavesNoButtonDown) {
  for (const std::uint32_t inserted : {0U, 1U}) {
    clearElementCache();
    TheDesktop().Input().Block(inserted);
    ForgetLog();
    EXPECT_EQ(clickTarget(&target_, window_), KORVANE_FAILED);
    EXPECT_THAT(Starting(Log(), "ERROR"), IsEmpty());
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), Not(Contains("mouse button left down")));
    EXPECT_TRUE(FindCachedPoint(CacheKey(window_, target_))) << "stored before the click";
    const auto batch = LastBatch();
    ASSERT_EQ(batch.size(), inserted == 0 ? 2U : 1U);
    EXPECT_EQ(batch.back().mi.dwFlags, 0x8004U) << "the press that went through is released";
  }
}

TEST_F(ClickTargetTest, AWindowThatDoesNotComeForwardIsClickedAllTheSame) {
  TheDesktop().Windows().RefuseForeground(-1);
  TheDesktop().Windows().RefuseThreadAttach(true);
  EXPECT_EQ(clickTarget(&target_, window_), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().MouseDowns(edit_), 1);
  EXPECT_EQ(Log().back(), "ERROR ensureWindowFocus Code:-3 Details:Window not in foreground after focus attempt");
}

TEST_F(ClickTargetTest, AHostileRecordEndsWithItsFields) {
  TargetRecord record;
  std::memset(&record, 0xFF, sizeof record);
  EXPECT_EQ(clickTarget(&record, window_), KORVANE_NOT_FOUND);
  for (std::size_t i = 0; i < KORVANE_AUTOMATION_ID_SIZE; ++i) {
    record.automationId[i] = u'7';
  }
  record.identificationMethod = 0;
  TheDesktop().Elements().SetProperty(TheDesktop().Elements().Of(edit_), UIA_AutomationIdPropertyId,
                                      standin::Text(255, u'7'));
  EXPECT_EQ(clickTarget(&record, window_), KORVANE_OK);
  EXPECT_EQ(clickTarget(&record, window_), KORVANE_OK);
  EXPECT_EQ(Log().back(), kCacheHit);
}

class WindowFocusTest : public ClickTargetTest {};

TEST_F(WindowFocusTest, EveryWayToTheForeground) {
  struct Case {
    const char* what;
    std::function<void()> arrange;
    int code;
    Lines calls;  // after IsWindow and IsIconic
    std::string line;
  };
  const std::string notForeground =
      "ERROR ensureWindowFocus Code:-3 Details:Window not in foreground after focus attempt";
  const Case cases[] = {
      {.what = "granted",
       .arrange = [] {},
       .code = KORVANE_OK,
       .calls = {"SetForegroundWindow", "GetForegroundWindow"},
       .line = ""},
      {.what = "minimised",
       .arrange = [&] { TheDesktop().Windows().Minimize(window_); },
       .code = KORVANE_OK,
       .calls = {"ShowWindow", "SetForegroundWindow", "GetForegroundWindow"},
       .line = ""},
      {.what = "granted after attaching",
       .arrange = [] { TheDesktop().Windows().RefuseForeground(1); },
       .code = KORVANE_OK,
       .calls = {"SetForegroundWindow", "GetCurrentThreadId", "GetWindowThreadProcessId", "AttachThreadInput",
                 "SetForegroundWindow", "SetFocus", "AttachThreadInput", "GetForegroundWindow"},
       .line = ""},
      {.what = "refused after attaching",
       .arrange = [] { TheDesktop().Windows().RefuseForeground(-1); },
       .code = KORVANE_FAILED,
       .calls = {"SetForegroundWindow", "GetCurrentThreadId", "GetWindowThreadProcessId", "AttachThreadInput",
                 "SetForegroundWindow", "SetFocus", "AttachThreadInput", "GetForegroundWindow"},
       .line = notForeground},
      {.what = "attaching refused",
       .arrange =
           [] {
             TheDesktop().Windows().RefuseForeground(-1);
             TheDesktop().Windows().RefuseThreadAttach(true);
           },
       .code = KORVANE_FAILED,
       .calls = {"SetForegroundWindow", "GetCurrentThreadId", "GetWindowThreadProcessId", "AttachThreadInput",
                 "ShowWindow", "SetActiveWindow", "GetForegroundWindow"},
       .line = notForeground},
      {.what = "another window took it",
       .arrange =
           [&] {
             TheDesktop().Calls().After("SetForegroundWindow", 1,
                                        [] { TheDesktop().Windows().SetForeground(AddDialog()); });
           },
       .code = KORVANE_FAILED,
       .calls = {"SetForegroundWindow", "GetForegroundWindow"},
       .line = notForeground},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TheDesktop().Windows().SetForeground(
        TheDesktop().Windows().Add({.className = u"Other", .rect = {600, 100, 700, 200}}));
    c.arrange();
    ForgetLog();
    TheDesktop().Calls().ClearTrace();
    Lines calls = CallsOf([&] { EXPECT_EQ(ensureWindowFocus(window_), c.code); });
    ASSERT_GT(calls.size(), 2U);
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 2), (Lines{"IsWindow", "IsIconic"}));
    EXPECT_EQ(Lines(calls.begin() + 2, calls.end()), c.calls);
    EXPECT_EQ(Log(), c.line.empty() ? Lines{} : Lines{c.line});
    EXPECT_FALSE(TheDesktop().Windows().IsMinimized(window_));
    for (const auto& entry : TheDesktop().Calls().Trace()) {
      if (entry.call == "ShowWindow") {
        EXPECT_EQ(entry.detail, c.code == 0 ? "command=9" : "command=5");
      }
    }
    TheDesktop().Windows().RefuseForeground(0);
    TheDesktop().Windows().RefuseThreadAttach(false);
  }
}

TEST_F(WindowFocusTest, AttachingGivesTheFocusToTheWindowItself) {
  TheDesktop().User().Click(130, 130);
  ASSERT_EQ(TheDesktop().Windows().Focus(), edit_);
  TheDesktop().Windows().SetForeground(AddDialog());
  TheDesktop().Windows().RefuseForeground(1);
  EXPECT_EQ(ensureWindowFocus(window_), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Windows().Focus(), window_);
}

TEST_F(WindowFocusTest, Refusals) {
  EXPECT_EQ(ensureWindowFocus(nullptr), KORVANE_INVALID_ARGUMENT);
  const HWND gone = AddDialog();
  TheDesktop().Windows().Destroy(gone);
  EXPECT_EQ(ensureWindowFocus(gone), KORVANE_NOT_FOUND);
  // A window of the calling thread has no other thread to attach to.
  const HWND own = TheDesktop().Host().AddWindow({.className = u"Own", .rect = {0, 0, 50, 50}});
  TheDesktop().Windows().RefuseForeground(1);
  const Lines calls = CallsOf([&] { EXPECT_EQ(ensureWindowFocus(own), KORVANE_FAILED); });
  EXPECT_EQ(calls.back(), "GetWindowThreadProcessId");
  EXPECT_EQ(Log(), (Lines{"ERROR ensureWindowFocus Code:-2 Details:Invalid window handle",
                          "ERROR ensureWindowFocus Code:-1 Details:Window not found",
                          "ERROR ensureWindowFocus Code:-3 Details:Failed to set foreground window"}));
}

}  // namespace
}  // namespace tests
