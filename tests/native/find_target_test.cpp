// Turning a record back into its element: which identifications are tried in which order, and the window check.
#include "resolve/find_target.h"

#include "automation/automation_context.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

const std::string kTag = "[FindTargetElement] ";
constexpr POINT kOverEdit{150, 130};
constexpr POINT kOverRow{150, 210};

// A dialog with an edit "7", a panel whose edit is "9", and a row without a window.
class FindTargetTest : public FieldTest {
 protected:
  void SetUp() override {
    FieldTest::SetUp();
    panel_ = AddControl(window_, u"Panel", 8, {120, 250, 490, 390}, standin::Behaviour::Window);
    AddControl(panel_, u"Edit", 9, {130, 260, 300, 280});
    row_ = TheDesktop().Elements().Add(window_, {.automationId = u"row", .rect = {120, 200, 320, 220}});
  }

  std::string Find(const TargetRecord& record, HWND window) {
    return IdOf(FindTargetElement(&record, window));
  }
  std::string Find(const TargetRecord& record) {
    return Find(record, window_);
  }

  // The cascade's own lines since the last call.
  Lines Steps() {
    return Starting(Log(), kTag);
  }

  static TargetRecord WithPoint(TargetRecord record, POINT point) {
    record.x = point.x;
    record.y = point.y;
    return record;
  }

  HWND panel_ = nullptr;
  standin::Element row_ = 0;
};

TEST_F(FindTargetTest, SearchTimesAreInMilliseconds) {
  TheDesktop().Calls().SetCrossProcessCost(1000);
  EXPECT_EQ(Find(RecordById(u"7")), "7");
  EXPECT_THAT(Log(), ::testing::Contains("AutomationId search completed in 2000ms"));
}

TEST_F(FindTargetTest, TheMethodDecidesWhatIsTried) {
  const Lines id = {kTag + "Trying Method 0: AutomationId", kTag + "Method 0 failed, continuing..."};
  const Lines path = {kTag + "Trying Method 3: Tree Path", kTag + "Method 3 failed, falling back to coordinates..."};
  const Lines point = {kTag + "Trying Method 2: Coordinates (fallback)",
                       kTag + "Method 2: Element not in target window, releasing", kTag + "Method 2 failed"};
  const TargetRecord onlyPoint = WithPoint(EmptyRecord(), {5, 5});
  const TargetRecord onlyId = RecordById(u"absent");
  TargetRecord onlyPath = EmptyRecord();
  AddLevel(onlyPath, 1, u"Absent", 1);
  TargetRecord all = WithPoint(onlyId, {5, 5});
  AddLevel(all, 1, u"Absent", 1);
  const struct {
    TargetRecord record;
    int method;
    Lines steps;
  } cases[] = {
      {.record = all, .method = 0, .steps = id + point},
      {.record = all, .method = 2, .steps = id + point},
      {.record = all, .method = 3, .steps = path + point},
      {.record = all, .method = -1, .steps = point},
      {.record = all, .method = 1, .steps = point},
      {.record = all, .method = 7, .steps = point},
      {.record = all, .method = INT32_MIN, .steps = point},
      // What a record lacks is not tried.
      {.record = onlyId, .method = 0, .steps = id},
      {.record = onlyId, .method = 3, .steps = {}},
      {.record = onlyPath, .method = 3, .steps = path},
      {.record = onlyPath, .method = 0, .steps = {}},
      {.record = onlyPoint, .method = 0, .steps = point},
      {.record = onlyPoint, .method = 3, .steps = point},
      {.record = EmptyRecord(), .method = 0, .steps = {}},
  };
  for (const auto& c : cases) {
    TargetRecord record = c.record;
    record.identificationMethod = c.method;
    EXPECT_EQ(Find(record), "none");
    EXPECT_EQ(Steps(), Lines{kTag + "Starting with identification method: " + std::to_string(c.method)} + c.steps +
                           Lines{kTag + "FAILED: All identification methods failed"});
  }
}

TEST_F(FindTargetTest, TheFirstIdentificationThatFitsWins) {
  TargetRecord all = WithPoint(RecordById(u"9"), kOverEdit);
  AddLevel(all, UIA_WindowControlTypeId, u"Dialog", 1);
  AddLevel(all, 50033, u"Panel", 1);
  const struct {
    int method;
    const char* found;
    std::string success;
  } cases[] = {
      {0, "9", "SUCCESS with Method 0: AutomationId"},
      {2, "9", "SUCCESS with Method 0: AutomationId"},
      {3, "8", "SUCCESS with Method 3: Tree Path"},
      {-1, "7", "SUCCESS with Method 2: Coordinates (verified window)"},
  };
  for (const auto& c : cases) {
    all.identificationMethod = c.method;
    EXPECT_EQ(Find(all), c.found);
    const Lines steps = Steps();
    EXPECT_EQ(steps.back(), kTag + c.success);
    EXPECT_EQ(steps.size(), 3U);
  }
  // A path with an impossible length is skipped, and the point is tried.
  for (const int length : {-1, 0, 21}) {
    all.identificationMethod = 3;
    all.pathLength = length;
    EXPECT_EQ(Find(all), "7");
    EXPECT_EQ(Steps().size(), length < 1 ? 3U : 5U);
  }
  // One coordinate is enough for a point.
  TheDesktop().Windows().MoveTo(window_, 0, 0);
  EXPECT_EQ(Find(RecordAt(0, 20)), "");
  EXPECT_EQ(Find(RecordAt(20, 0)), "");
}

TEST_F(FindTargetTest, AnAutomationIdIsSearchedAmongTheChildrenFirst) {
  const auto searches = [&](std::u16string_view id, const char* expected) {
    const auto before = TheDesktop().Calls().Count("IUIAutomationElement::FindFirst");
    EXPECT_EQ(Find(RecordById(id)), expected);
    return TheDesktop().Calls().Count("IUIAutomationElement::FindFirst") - before;
  };
  EXPECT_EQ(searches(u"7", "7"), 1U);
  EXPECT_EQ(searches(u"9", "9"), 2U);
  EXPECT_EQ(searches(u"absent", "none"), 2U);
  // A failed search of the children is not followed by another.
  TheDesktop().Faults().FailNth("IUIAutomationElement::FindFirst", 1);
  EXPECT_EQ(searches(u"9", "none"), 1U);
  ForgetLog();
  EXPECT_EQ(Find(RecordById(u"7")), "7");
  EXPECT_EQ(Log(), kFoundById);
}

TEST_F(FindTargetTest, AFailingAutomationIdSearchEndsAtOnce) {
  const struct {
    const char* call;
    std::uint64_t nth;
    bool completed;  // its second line is written
  } cases[] = {
      {"IUIAutomation::ElementFromHandle", 1, false},
      {"IUIAutomation::CreatePropertyCondition", 1, true},
      {"SysAllocString", 1, true},
      {"IUIAutomationElement::FindFirst", 2, true},
  };
  for (const auto& c : cases) {
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
      TheDesktop().Faults().FailWith(c.call, result);
      TheDesktop().Faults().FailNth(c.call, c.nth);
      EXPECT_EQ(Find(RecordById(u"9")), "none");
      const Lines log = Log();
      EXPECT_EQ(Starting(log, "AutomationId search completed").size(), c.completed ? 1U : 0U) << c.call;
      EXPECT_EQ(log.back(), kTag + "FAILED: All identification methods failed");
    }
  }
}

TEST_F(FindTargetTest, AnUnterminatedAutomationIdEndsWithItsField) {
  TargetRecord record = RecordById(u"");
  std::fill(std::begin(record.automationId), std::end(record.automationId), u'i');
  record.hwnd = reinterpret_cast<HWND>(std::uintptr_t{0x0069006900690069});  // what lies behind the field
  TheDesktop().Elements().SetProperty(TheDesktop().Elements().Of(edit_), UIA_AutomationIdPropertyId,
                                      standin::Text(255, u'i'));
  EXPECT_EQ(Find(record), std::string(255, 'i'));
}

TEST_F(FindTargetTest, APointCountsOnlyInsideTheTargetWindow) {
  const HWND owned =
      TheDesktop().Windows().Add({.className = u"Popup", .rect = {600, 100, 700, 200}, .owner = window_});
  const TargetRecord overPopup = RecordAt(650, 150);
  EXPECT_EQ(Find(RecordAt(140, 270)), "9") << "two windows below the target";
  EXPECT_EQ(Find(overPopup), "") << "a window that the target owns";
  EXPECT_EQ(Find(overPopup, owned), "");
  EXPECT_EQ(Find(RecordAt(150, 130), panel_), "none");
  EXPECT_EQ(Find(RecordAt(150, 130), edit_), "7") << "the window itself";
  ForgetLog();

  const HWND cover = TheDesktop().Windows().Add({.className = u"Other", .rect = {140, 120, 400, 300}});
  for (const POINT point : {kOverEdit, kOverRow}) {
    EXPECT_EQ(Find(RecordAt(point.x, point.y)), "none");
    EXPECT_THAT(Steps(), ElementsAre(kTag + "Starting with identification method: -1",
                                     kTag + "Trying Method 2: Coordinates (fallback)",
                                     kTag + "Method 2: Element not in target window, releasing",
                                     kTag + "Method 2 failed", kTag + "FAILED: All identification methods failed"));
  }
  TheDesktop().Windows().Destroy(cover);
  EXPECT_EQ(Find(RecordAt(kOverEdit.x, kOverEdit.y)), "7");
}

TEST_F(FindTargetTest, AnElementWithoutAWindowGetsOneByItsPointOrItsAncestors) {
  const std::string noWindow = kTag + "No HWND for element, trying WindowFromPoint fallback";
  const Lines start = {kTag + "Starting with identification method: -1",
                       kTag + "Trying Method 2: Coordinates (fallback)", noWindow};
  const Lines accepted = {kTag + "SUCCESS with Method 2: Coordinates (verified window)"};
  const Lines refused = {kTag + "Method 2: Element not in target window, releasing", kTag + "Method 2 failed",
                         kTag + "FAILED: All identification methods failed"};
  const auto expect = [&](const Lines& middle, const Lines& end) {
    Lines all = start;
    all.insert(all.end(), middle.begin(), middle.end());
    all.insert(all.end(), end.begin(), end.end());
    EXPECT_EQ(Steps(), all);
  };
  const TargetRecord row = RecordAt(kOverRow.x, kOverRow.y);
  auto& desktop = TheDesktop();
  // The tick counter wraps to zero while the window is looked for.
  desktop.Clock().SetTickCount(0xFFFFFFFE);
  desktop.Calls().After("WindowFromPoint", 1, [] { TheDesktop().Clock().SetTickCount(5); });
  EXPECT_EQ(Find(row), "row");
  expect({kTag + "Using WindowFromPoint fallback - HWND obtained (7ms)"}, accepted);

  desktop.Faults().FailNth("WindowFromPoint", 1);
  desktop.Clock().SetTickCount(1000);
  desktop.Calls().After("WindowFromPoint", 1, [] { TheDesktop().Clock().SetTickCount(1010); });
  desktop.Calls().After("IUIAutomation::get_ControlViewWalker", 1, [] { TheDesktop().Clock().SetTickCount(1013); });
  EXPECT_EQ(Find(row), "row");
  expect({kTag + "WindowFromPoint failed, trying tree walk fallback",
          kTag + "Using tree walk fallback - HWND obtained (3ms)"},
         accepted);

  desktop.Faults().FailNth("WindowFromPoint", 1);
  desktop.Faults().FailNth("IUIAutomation::get_ControlViewWalker", 1);
  desktop.Calls().After("WindowFromPoint", 1, [] { TheDesktop().Clock().SetTickCount(1023); });
  EXPECT_EQ(Find(row), "none");
  expect({kTag + "WindowFromPoint failed, trying tree walk fallback",
          kTag + "All HWND fallback methods failed (total fallback time: 10ms)"},
         refused);

  // A handle that cannot be read counts as none.
  desktop.Elements().FailProperty(desktop.Elements().Of(edit_), 30020);
  EXPECT_EQ(Find(RecordAt(kOverEdit.x, kOverEdit.y)), "7");
  expect({kTag + "Using WindowFromPoint fallback - HWND obtained (0ms)"}, accepted);
}

TEST_F(FindTargetTest, OddArgumentsAndAMissingContext) {
  const TargetRecord record = WithPoint(RecordById(u"7"), kOverEdit);
  EXPECT_FALSE(FindTargetElement(nullptr, window_));
  EXPECT_FALSE(FindTargetElement(&record, nullptr));
  EXPECT_EQ(Log(), (Lines{kTag + "ERROR: Invalid parameters", kTag + "ERROR: Invalid parameters"}));
  cleanupAutomation();
  OpenLog();
  EXPECT_EQ(CallsOf([&] { EXPECT_FALSE(FindTargetElement(&record, window_)); }), Lines{});
  EXPECT_EQ(Log(), (Lines{kTag + "Starting with identification method: 0", kTag + "Trying Method 0: AutomationId",
                          "[FindElementByAutomationId] Starting AutomationId search",
                          kTag + "Method 0 failed, continuing...", kTag + "Trying Method 2: Coordinates (fallback)",
                          "[FindElementByCoordinates] Starting coordinate search", kTag + "Method 2 failed",
                          kTag + "FAILED: All identification methods failed"}));
}

TEST_F(FindTargetTest, APointSearchIsTimedAndShowsWhatItFound) {
  EXPECT_EQ(Find(RecordAt(kOverEdit.x, kOverEdit.y)), "7");
  EXPECT_EQ(
      Log(),
      (Lines{kTag + "Starting with identification method: -1", kTag + "Trying Method 2: Coordinates (fallback)",
             "[FindElementByCoordinates] Starting coordinate search",
             "[GetElementAtPoint] Called with point (150, 130)", "[GetElementAtPoint] Found element with name: ''",
             "[GetElementAtPoint] Element control type: 0xc354", "[GetElementAtPoint] Element HWND: " + Decimal(edit_),
             "[GetElementAtPoint] SUCCESS: Returning element", "Coordinate search completed in 0ms",
             kTag + "SUCCESS with Method 2: Coordinates (verified window)"}));
  TheDesktop().Faults().FailNth("IUIAutomation::ElementFromPoint", 1);
  EXPECT_EQ(Find(RecordAt(kOverEdit.x, kOverEdit.y)), "none");
  const Lines log = Log();
  EXPECT_EQ(Lines(log.end() - 3, log.end()), (Lines{"Coordinate search completed in 0ms", kTag + "Method 2 failed",
                                                    kTag + "FAILED: All identification methods failed"}));
}

}  // namespace
}  // namespace tests
