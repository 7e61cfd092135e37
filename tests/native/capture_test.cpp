// Capturing: the element and the window at a point, every byte of the record, and the two traces.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;

constexpr POINT kOverEdit{150, 130};
constexpr POINT kOverRow{150, 210};

// As the console shows a handle.
std::string ConsoleHandle(HWND window) {
  char text[24];
  std::snprintf(text, sizeof text, "%016llX",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(window)));
  return text;
}

// A dialog with an edit and, below it, a row without a window.
class CaptureTest : public FormTest {
 protected:
  void SetUp() override {
    FormTest::SetUp();
    row_ = TheDesktop().Elements().Add(window_, {.className = u"Row", .name = u"First", .rect = {120, 200, 320, 220}});
    std::memset(&record_, 0xAB, sizeof record_);
  }

  // The record that a capture of the edit at a point fills.
  TargetRecord ExpectedOfEdit(int x, int y, int method) const {
    TargetRecord expected = RecordAt(x, y);
    AddLevel(expected, UIA_WindowControlTypeId, u"Dialog", 1);
    AddLevel(expected, 50004, u"Edit", 1);
    expected.automationId[0] = u'7';
    expected.hwnd = edit_;
    expected.identificationMethod = method;
    return expected;
  }

  static bool SameBytes(const TargetRecord& a, const TargetRecord& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
  }

  // What the console got during a capture at the cursor.
  std::string TraceOfCaptureAtCursor(int expectedCode) {
    ::testing::internal::CaptureStdout();
    const int code = captureTargetAtCursor(&record_);
    const std::string trace = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(code, expectedCode);
    return trace;
  }

  standin::Element row_ = 0;
  TargetRecord record_;
};

TEST_F(CaptureTest, AtAPointFillsTheWholeRecordAndLogsEveryStep) {
  EXPECT_EQ(captureTargetAtPoint(&record_, 150, 130), KORVANE_OK);
  EXPECT_TRUE(SameBytes(record_, ExpectedOfEdit(150, 130, -1)));
  Lines log = Log();
  std::erase_if(log, [](const std::string& line) { return line.starts_with("[GetChildIndex]"); });
  EXPECT_EQ(
      log,
      (Lines{"[captureTargetAtPoint] Called with coordinates (150, 130)",
             "[captureTargetAtPoint] Set coordinates: (150, 130)", "[GetElementAtPoint] Called with point (150, 130)",
             "[GetElementAtPoint] Found element with name: ''", "[GetElementAtPoint] Element control type: 0xc354",
             "[GetElementAtPoint] Element HWND: " + Decimal(edit_), "[GetElementAtPoint] SUCCESS: Returning element",
             "[captureTargetAtPoint] Successfully found element at point",
             "[captureTargetAtPoint] Captured AutomationId: '7'",
             "[captureTargetAtPoint] Captured HWND: 0x" + Hexadecimal(edit_),
             "[captureTargetAtPoint] Building tree path...", "[BuildTreePath] Removed Desktop level from path",
             "[BuildTreePath] SUCCESS: Built tree path with 2 levels (Desktop level removed)",
             "[captureTargetAtPoint] Successfully built tree path with 2 levels",
             "[captureTargetAtPoint] Set identificationMethod to -1 (user selection required)",
             "[captureTargetAtPoint] SUCCESS: Captured all identification methods"}));
}

TEST_F(CaptureTest, AtAPointRefusals) {
  EXPECT_EQ(captureTargetAtPoint(nullptr, 10, -10), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{"[captureTargetAtPoint] Called with coordinates (10, -10)",
                          "[captureTargetAtPoint] ERROR: target parameter is null",
                          "ERROR captureTargetAtPoint Code:-2 Details:target parameter is null"}));
  const TargetRecord untouched = record_;
  TheDesktop().Faults().FailNth("CoCreateInstance", 1);
  EXPECT_EQ(captureTargetAtPoint(&record_, 10, 20), KORVANE_FAILED);
  EXPECT_TRUE(SameBytes(record_, untouched));
  EXPECT_EQ(Log(), (Lines{"[captureTargetAtPoint] Called with coordinates (10, 20)",
                          "ERROR InitializeAutomation Code:-3 Details:UI Automation creation failed",
                          "[captureTargetAtPoint] ERROR: Failed to initialize automation"}));
}

TEST_F(CaptureTest, AtAPointWithoutElementLeavesThePointAlone) {
  const struct {
    HRESULT result;
    std::string line;
  } cases[] = {
      {static_cast<HRESULT>(0x80131505), "[GetElementAtPoint] ERROR: ElementFromPoint failed with HRESULT: 0x80131505"},
      {S_FALSE, "[GetElementAtPoint] ElementFromPoint returned null element"},
  };
  for (const auto& c : cases) {
    std::memset(&record_, 0xAB, sizeof record_);
    TheDesktop().Faults().FailWith("IUIAutomation::ElementFromPoint", c.result);
    TheDesktop().Faults().FailNth("IUIAutomation::ElementFromPoint", 1);
    EXPECT_EQ(captureTargetAtPoint(&record_, -5, 20), KORVANE_NOT_FOUND);
    EXPECT_TRUE(SameBytes(record_, RecordAt(-5, 20)));
    EXPECT_THAT(Log(), ElementsAre("[captureTargetAtPoint] Called with coordinates (-5, 20)",
                                   "[captureTargetAtPoint] Set coordinates: (-5, 20)",
                                   "[GetElementAtPoint] Called with point (-5, 20)", c.line,
                                   "[captureTargetAtPoint] ERROR: No element found at specified point",
                                   "ERROR captureTargetAtPoint Code:-1 Details:No element found at point"));
  }
}

TEST_F(CaptureTest, TheDesktopItselfHasNoPath) {
  EXPECT_EQ(captureTargetAtPoint(&record_, 5, 5), KORVANE_OK);
  EXPECT_EQ(record_.pathLength, 0);
  EXPECT_EQ(record_.identificationMethod, -1);
  const Lines log = Log();
  EXPECT_THAT(log, Contains("[BuildTreePath] WARNING: Path length is 0 after Desktop removal"));
  EXPECT_THAT(log, Contains("[captureTargetAtPoint] WARNING: Tree path building resulted in 0 levels"));
}

TEST_F(CaptureTest, AFailingPartLeavesItsFieldEmptyAndTheRestStands) {
  constexpr auto kElement = "IUIAutomationElement::";
  struct Case {
    std::string call;
    std::uint64_t nth;
    std::string line;  // written because of it
    std::function<void(TargetRecord&)> change;
  };
  const auto nothing = [](TargetRecord&) {};
  const Case cases[] = {
      {std::string(kElement) + "get_CurrentName", 1, "[GetElementAtPoint] Found element but couldn't get name",
       nothing},
      {std::string(kElement) + "get_CurrentAutomationId", 1, "[captureTargetAtPoint] No AutomationId available",
       [](TargetRecord& r) { r.automationId[0] = 0; }},
      // The first reading is for the log, the second one for the record; without it the window at the point is taken.
      {std::string(kElement) + "get_CurrentNativeWindowHandle", 2,
       "[captureTargetAtPoint] WindowFromPoint fallback succeeded - HWND: 0x" + Hexadecimal(edit_), nothing},
      {"IUIAutomation::get_ControlViewWalker", 1, "[BuildTreePath] FAILED: Unable to get tree walker",
       [](TargetRecord& r) {
         r.pathLength = 0;
         std::memset(r.controlTypes, 0, sizeof r.controlTypes + sizeof r.classNames + sizeof r.childIndices);
       }},
      {std::string(kElement) + "get_CurrentClassName", 1,
       "[GetChildIndex] Empty/null className, using controlType-only "
       "condition",
       [](TargetRecord& r) { std::memset(r.classNames[1], 0, sizeof r.classNames[1]); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.call);
    TheDesktop().Faults().Stop();
    std::memset(&record_, 0xAB, sizeof record_);
    TheDesktop().Faults().FailNth(c.call, c.nth);
    EXPECT_EQ(captureTargetAtPoint(&record_, 150, 130), KORVANE_OK);
    EXPECT_EQ(TheDesktop().Faults().Injected(), 1U);
    TargetRecord expected = ExpectedOfEdit(150, 130, -1);
    c.change(expected);
    EXPECT_TRUE(SameBytes(record_, expected));
    EXPECT_THAT(Log(), Contains(c.line));
  }
  // When a value that only the log shows cannot be read, its line is left out.
  for (const auto& [property, line] : {std::pair{UIA_ControlTypePropertyId, "[GetElementAtPoint] Element control type"},
                                       std::pair{30020, "[GetElementAtPoint] Element HWND"}}) {
    TheDesktop().Elements().FailProperty(TheDesktop().Elements().Of(edit_), property);
    ForgetLog();
    EXPECT_EQ(captureTargetAtPoint(&record_, 150, 130), KORVANE_OK);
    EXPECT_THAT(Log(), Not(Contains(StartsWith(line))));
  }
}

TEST_F(CaptureTest, NamesAndIdsOfEveryKind) {
  const auto element = TheDesktop().Elements().Of(edit_);
  TheDesktop().Elements().SetNullString(element, UIA_NamePropertyId);
  TheDesktop().Elements().SetNullString(element, UIA_AutomationIdPropertyId);
  EXPECT_EQ(captureTargetAtPoint(&record_, 150, 130), KORVANE_OK);
  Lines log = Log();
  EXPECT_THAT(log, Contains("[GetElementAtPoint] Found element but couldn't get name"));
  EXPECT_THAT(log, Contains("[captureTargetAtPoint] No AutomationId available"));
  for (const std::size_t length : {255U, 256U, 300U}) {
    std::memset(&record_, 0xAB, sizeof record_);
    TheDesktop().Elements().SetProperty(element, UIA_AutomationIdPropertyId, standin::Text(length, u'i'));
    EXPECT_EQ(captureTargetAtPoint(&record_, 150, 130), KORVANE_OK);
    EXPECT_EQ(std::u16string_view(record_.automationId), standin::Text(255, u'i'));
    EXPECT_THAT(Log(), Contains("[captureTargetAtPoint] Captured AutomationId: '" + std::string(255, 'i') + "'"));
  }
}

TEST_F(CaptureTest, WithoutAWindowOfItsOwnAnElementGetsTheOneAtThePointOrAboveIt) {
  EXPECT_EQ(captureTargetAtPoint(&record_, kOverRow.x, kOverRow.y), KORVANE_OK);
  EXPECT_EQ(record_.hwnd, window_);
  const std::string handle = Hexadecimal(window_);
  Lines log = Log();
  const auto steps = [](Lines& lines) {
    std::erase_if(lines, [](const std::string& line) {
      return line.find("HWND") == std::string::npos || line.starts_with("[GetElementAtPoint]");
    });
    return lines;
  };
  EXPECT_THAT(steps(log), ElementsAre("[captureTargetAtPoint] Element has no HWND, trying WindowFromPoint fallback",
                                      "[GetWindowFromCoordinates] Point (150, 210) -> HWND: 0x" + handle,
                                      "[captureTargetAtPoint] WindowFromPoint fallback succeeded - HWND: 0x" + handle,
                                      "[captureTargetAtPoint] Captured HWND: 0x" + handle));

  TheDesktop().Faults().FailNth("WindowFromPoint", 1);
  EXPECT_EQ(captureTargetAtPoint(&record_, kOverRow.x, kOverRow.y), KORVANE_OK);
  EXPECT_EQ(record_.hwnd, window_);
  log = Log();
  EXPECT_THAT(steps(log), ElementsAre("[captureTargetAtPoint] Element has no HWND, trying WindowFromPoint fallback",
                                      "[GetWindowFromCoordinates] Point (150, 210) -> HWND: 0x0",
                                      "[GetNearestWindowHandle] Element has no HWND, starting tree walk",
                                      "[GetNearestWindowHandle] Found HWND at depth 1: 0x" + handle,
                                      "[captureTargetAtPoint] Tree walk fallback succeeded - HWND: 0x" + handle,
                                      "[captureTargetAtPoint] Captured HWND: 0x" + handle));

  TheDesktop().Faults().FailNth("WindowFromPoint", 1);
  TheDesktop().Elements().FailProperty(TheDesktop().Elements().Of(window_), 30020);
  TheDesktop().Elements().FailProperty(TheDesktop().Elements().Root(), 30020);
  EXPECT_EQ(captureTargetAtPoint(&record_, kOverRow.x, kOverRow.y), KORVANE_OK);
  EXPECT_EQ(record_.hwnd, nullptr);
  log = Log();
  EXPECT_EQ(Starting(log, "[captureTargetAtPoint] All"),
            (Lines{"[captureTargetAtPoint] All HWND fallback methods failed - element may not be automatable"}));
  EXPECT_THAT(log, Contains("[captureTargetAtPoint] WARNING: No HWND captured for element (HWND=0)"));
  EXPECT_EQ(record_.pathLength, 2);
}

TEST_F(CaptureTest, TheElementAtAPointMakesAMissingContext) {
  EXPECT_TRUE(GetElementAtPoint(kOverRow));
  EXPECT_EQ(Log(), (Lines{"[GetElementAtPoint] Called with point (150, 210)",
                          "[GetElementAtPoint] g_pAutomation is null, initializing...",
                          "[GetElementAtPoint] Automation initialized successfully",
                          "[GetElementAtPoint] Found element with name: 'First'",
                          "[GetElementAtPoint] Element control type: 0xc357", "[GetElementAtPoint] Element HWND: 0",
                          "[GetElementAtPoint] SUCCESS: Returning element"}));
  cleanupAutomation();
  OpenLog();
  TheDesktop().Faults().FailNth("CoInitializeEx", 1);
  EXPECT_FALSE(GetElementAtPoint(kOverRow));
  EXPECT_EQ(Log(), (Lines{"[GetElementAtPoint] Called with point (150, 210)",
                          "[GetElementAtPoint] g_pAutomation is null, initializing...",
                          "ERROR InitializeAutomation Code:-3 Details:COM initialization failed",
                          "[GetElementAtPoint] ERROR: Failed to initialize automation"}));
}

TEST_F(CaptureTest, TheNearestWindowIsLookedForTwentyLevelsUp) {
  constexpr auto kTag = "[GetNearestWindowHandle] ";
  const Lines started = {std::string(kTag) + "Element has no HWND, starting tree walk"};
  const std::string notFound = std::string(kTag) + "No HWND found after walking up 20 levels";
  const std::string reached = std::string(kTag) + "Reached tree root or error at depth ";
  const auto found = [&](int depth) {
    return std::string(kTag) + "Found HWND at depth " + std::to_string(depth) + ": 0x" + Hexadecimal(window_);
  };
  const struct {
    int depth;
    std::uint64_t failingParent;  // 0: none
    HWND window;
    Lines lines;
  } cases[] = {
      {.depth = 1, .failingParent = 0, .window = window_, .lines = {found(1)}},
      {.depth = 20, .failingParent = 0, .window = window_, .lines = {found(20)}},
      {.depth = 21, .failingParent = 0, .window = nullptr, .lines = {notFound}},
      {.depth = 25, .failingParent = 0, .window = nullptr, .lines = {notFound}},
      {.depth = 25, .failingParent = 4, .window = nullptr, .lines = {reached + "3", notFound}},
      {.depth = 2, .failingParent = 1, .window = nullptr, .lines = {reached + "0", notFound}},
  };
  for (const auto& c : cases) {
    auto parent = TheDesktop().Elements().Add(window_, {.rect = {400, 300, 420, 320}});
    for (int i = 1; i < c.depth; ++i) {
      parent = TheDesktop().Elements().Add(parent, {.rect = {400, 300, 420, 320}});
    }
    const ElementPtr element = GetElementAtPoint({410, 310});
    ForgetLog();
    if (c.failingParent != 0) {
      TheDesktop().Faults().FailNth("IUIAutomationTreeWalker::GetParentElement", c.failingParent);
    }
    EXPECT_EQ(GetNearestWindowHandle(element.Get()), c.window);
    Lines expected = started;
    expected.insert(expected.end(), c.lines.begin(), c.lines.end());
    EXPECT_EQ(Log(), expected) << c.depth;
    CONTROLTYPEID type = 0;
    EXPECT_EQ(element->get_CurrentControlType(&type), S_OK) << "the caller's element";
  }
}

TEST_F(CaptureTest, TheNearestWindowOfOddElements) {
  EXPECT_EQ(GetNearestWindowHandle(nullptr), nullptr);
  EXPECT_EQ(Log(), (Lines{"[GetNearestWindowHandle] Element is null"}));
  {
    const ElementPtr edit = GetElementAtPoint(kOverEdit);
    ForgetLog();
    EXPECT_EQ(CallsOf([&] { EXPECT_EQ(GetNearestWindowHandle(edit.Get()), edit_); }),
              (Lines{"IUIAutomationElement::get_CurrentNativeWindowHandle"}));
    EXPECT_EQ(Log(), (Lines{"[GetNearestWindowHandle] Element has HWND: 0x" + Hexadecimal(edit_)}));
  }
  const ElementPtr row = GetElementAtPoint(kOverRow);
  ForgetLog();
  for (const auto& [result, digits] : {std::pair{E_FAIL, "80004005"}, std::pair{S_FALSE, "1"}}) {
    TheDesktop().Faults().FailWith("IUIAutomation::get_ControlViewWalker", result);
    TheDesktop().Faults().FailNth("IUIAutomation::get_ControlViewWalker", 1);
    EXPECT_EQ(GetNearestWindowHandle(row.Get()), nullptr);
    EXPECT_EQ(Log(),
              (Lines{"[GetNearestWindowHandle] Element has no HWND, starting tree walk",
                     std::string("[GetNearestWindowHandle] ERROR: Failed to get tree walker, HRESULT: 0x") + digits}));
  }
}

TEST_F(CaptureTest, AtTheCursorChoosesThePathAndTracesToTheConsole) {
  TheDesktop().Windows().SetForeground(window_);
  TheDesktop().User().MoveCursor(kOverEdit.x, kOverEdit.y);
  // The mouse moves on while the element is looked up.
  TheDesktop().Calls().After("IUIAutomation::ElementFromPoint", 1, [] { TheDesktop().User().MoveCursor(151, 132); });
  const std::string trace = TraceOfCaptureAtCursor(0);
  EXPECT_TRUE(SameBytes(record_, ExpectedOfEdit(151, 132, 3)));
  EXPECT_EQ(trace, "=== CAPTURE START ===\ntargetWindow: 0x" + ConsoleHandle(window_) +
                       "\nInitialized target, identificationMethod = -1\n"
                       "GetElementAtCursor: Starting cursor detection\n"
                       "Cursor position: (150, 130)\n"
                       "GetElementAtCursor: Successfully found element\n"
                       "GetElementAtCursor succeeded\n"
                       "BuildTreePath result: SUCCESS, pathLength: 2\n"
                       "Using Method 3 (Tree Path)\n"
                       "FINAL: identificationMethod = 3\n"
                       "Captured coordinates: (151, 132)\n"
                       "Captured AutomationId: [has_data]\n"
                       "Captured HWND: 0x" +
                       ConsoleHandle(edit_) + "\n=== CAPTURE END ===\n");
  EXPECT_THAT(Starting(Log(), "[captureTargetAtCursor]"), IsEmpty());
}

// Whoever reads it through a pipe sees it before the capture is over.
TEST_F(CaptureTest, AtTheCursorTheTraceIsWrittenAtOnce) {
  const auto file = Folder() / "trace.txt";
  std::fflush(stdout);
  const int kept = dup(STDOUT_FILENO);
  const int trace = open(file.c_str(), O_WRONLY | O_CREAT, 0600);
  dup2(trace, STDOUT_FILENO);
  EXPECT_EQ(captureTargetAtCursor(nullptr), KORVANE_NOT_FOUND);
  const auto written = std::filesystem::file_size(file);
  std::fflush(stdout);
  dup2(kept, STDOUT_FILENO);
  close(kept);
  close(trace);
  EXPECT_GT(written, 0U);
}

TEST_F(CaptureTest, AtTheCursorWithoutPathWindowOrSecondReading) {
  const HWND other = TheDesktop().Windows().Add({.className = u"Other", .rect = {600, 100, 700, 200}});
  TheDesktop().User().MoveCursor(kOverRow.x, kOverRow.y);
  TheDesktop().Faults().FailFromNth("IUIAutomation::get_ControlViewWalker", 1);
  TheDesktop().Calls().After("IUIAutomation::ElementFromPoint", 1, [] { TheDesktop().User().MoveCursor(610, 110); });
  std::string trace = TraceOfCaptureAtCursor(0);
  EXPECT_THAT(trace, ::testing::EndsWith("BuildTreePath result: FAILED, pathLength: 0\n"
                                         "Using Method 2 (Coordinates fallback)\n"
                                         "FINAL: identificationMethod = 2\n"
                                         "Captured coordinates: (610, 110)\n"
                                         "Element has no HWND, trying WindowFromPoint fallback\n"
                                         "WindowFromPoint fallback succeeded\n"
                                         "Captured HWND: 0x" +
                                         ConsoleHandle(other) + "\n=== CAPTURE END ===\n"));
  EXPECT_EQ(record_.identificationMethod, 2);

  // The window is then looked for where the element was.
  TheDesktop().User().MoveCursor(kOverRow.x, kOverRow.y);
  TheDesktop().Faults().FailNth("GetCursorPos", 2);
  trace = TraceOfCaptureAtCursor(0);
  EXPECT_THAT(trace, Not(::testing::HasSubstr("Captured coordinates")));
  EXPECT_EQ(record_.hwnd, window_);
  EXPECT_EQ(record_.x, 0);
  EXPECT_EQ(record_.y, 0);

  TheDesktop().Faults().Stop();
  TheDesktop().Faults().FailFromNth("WindowFromPoint", 1);
  EXPECT_THAT(
      TraceOfCaptureAtCursor(0),
      ::testing::HasSubstr("WindowFromPoint failed, trying tree walk fallback\nTree walk fallback succeeded\n"));
  EXPECT_EQ(record_.hwnd, window_);
  for (const auto element : {TheDesktop().Elements().Of(window_), TheDesktop().Elements().Root()}) {
    TheDesktop().Elements().FailProperty(element, 30020);
  }
  EXPECT_THAT(TraceOfCaptureAtCursor(0),
              ::testing::EndsWith("WindowFromPoint failed, trying tree walk fallback\n"
                                  "All HWND fallback methods failed - element may not be automatable\n"
                                  "WARNING: No HWND captured for element (HWND=0)\n=== CAPTURE END ===\n"));
}

TEST_F(CaptureTest, AtTheCursorRefusals) {
  const std::string start = "=== CAPTURE START ===\ntargetWindow: 0x0000000000000000\n";
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(captureTargetAtCursor(nullptr), KORVANE_NOT_FOUND);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), start + "ERROR: target is null\n");

  const std::string looking =
      start + "Initialized target, identificationMethod = -1\n" + "GetElementAtCursor: Starting cursor detection\n";
  const std::string at = "Cursor position: (7, -9)\n";
  const struct {
    const char* call;
    HRESULT result;
    std::string trace;
  } cases[] = {
      {"GetCursorPos", E_FAIL, "ERROR: GetCursorPos failed, error: "},
      {"CoCreateInstance", E_FAIL, at + "ERROR: InitializeAutomation failed, result: -3\n"},
      {"IUIAutomation::ElementFromPoint", E_FAIL, at + "ERROR: ElementFromPoint failed, HRESULT: 0x80004005\n"},
      {"IUIAutomation::ElementFromPoint", S_FALSE, at + "ERROR: ElementFromPoint returned null element\n"},
  };
  TheDesktop().User().MoveCursor(7, -9);
  for (const auto& c : cases) {
    std::memset(&record_, 0xAB, sizeof record_);
    TheDesktop().Faults().FailWith(c.call, c.result);
    TheDesktop().Faults().FailNth(c.call, 1);
    const std::string trace = TraceOfCaptureAtCursor(-1);
    EXPECT_THAT(trace, StartsWith(looking + c.trace));
    EXPECT_THAT(trace, ::testing::EndsWith("\nERROR: GetElementAtCursor failed\n"));
    EXPECT_TRUE(SameBytes(record_, EmptyRecord()));
    if (std::string_view(c.call) == "GetCursorPos") {
      EXPECT_EQ(TheDesktop().Calls().Count("CoInitializeEx"), 0U);
    }
  }
}

}  // namespace
}  // namespace tests
