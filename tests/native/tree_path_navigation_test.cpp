// Following a recorded path down: which element each level takes, what it asks the platform, and how it gives up.
#include "resolve/tree_path_navigation.h"

#include "automation/automation_context.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

constexpr CONTROLTYPEID kEdit = 50004;
constexpr CONTROLTYPEID kButton = 50000;
constexpr CONTROLTYPEID kPanel = 50033;
const std::string kTag = "[FindElementByTreePath] ";

struct Level {
  int controlType;
  std::u16string_view className;
  int index;
};

TargetRecord RecordOf(std::initializer_list<Level> levels) {
  TargetRecord record = EmptyRecord();
  for (const Level& level : levels) {
    AddLevel(record, level.controlType, level.className, level.index);
  }
  return record;
}

// A dialog with a panel that holds, in this order, an edit "1", a button "2", an edit of another class "3" and an
// edit "4".
class TreePathNavigationTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    dialog_ = AddDialog();
    panel_ = AddControl(dialog_, u"Panel", 9, {110, 110, 490, 390}, standin::Behaviour::Window);
    AddControl(panel_, u"Edit", 1);
    AddControl(panel_, u"Button", 2, {120, 160, 320, 180}, standin::Behaviour::Button);
    AddControl(panel_, u"Memo", 3, {120, 190, 320, 210});
    AddControl(panel_, u"Edit", 4, {120, 220, 320, 240});
    ASSERT_EQ(initializeAutomation(), KORVANE_OK);
  }

  std::string Follow(const TargetRecord& record) {
    return IdOf(FindElementByTreePath(dialog_, &record));
  }

  // The record of a path into the panel.
  static TargetRecord InPanel(int controlType, std::u16string_view className, int index) {
    return RecordOf({{UIA_WindowControlTypeId, u"Dialog", 1}, {kPanel, u"Panel", 1}, {controlType, className, index}});
  }

  HWND dialog_ = nullptr;
  HWND panel_ = nullptr;
};

TEST_F(TreePathNavigationTest, AValidPathKeepsItsLimits) {
  struct Case {
    std::function<void(TargetRecord&)> spoil;
    std::string line;
  };
  const auto outOfRange = [](int length) {
    return "ERROR: pathLength out of range: " + std::to_string(length) + " (valid range: 1-20)";
  };
  const std::u16string_view full = u"123456789012345678901234567890123456789012345678901234567890abcd";
  const Case cases[] = {
      {[](TargetRecord&) {}, "SUCCESS: All 3 levels validated in 0ms"},
      {[](TargetRecord& r) { r.pathLength = 0; }, outOfRange(0)},
      {[](TargetRecord& r) { r.pathLength = 21; }, outOfRange(21)},
      {[](TargetRecord& r) { r.pathLength = INT32_MIN; }, outOfRange(INT32_MIN)},
      {[](TargetRecord& r) { r.pathLength = 20; }, "SUCCESS: All 20 levels validated in 0ms"},
      // Its other fields are not looked at.
      {[&](TargetRecord& r) {
         r.controlTypes[2] = -1;
         full.copy(r.classNames[2], 64);
         r.childIndices[2] = -1;
       },
       "ERROR: Invalid control type at level 3: -1 (must be >= 0)"},
      {[&](TargetRecord& r) {
         full.copy(r.classNames[1], 64);
         r.childIndices[1] = -1;
       },
       "ERROR: Class name too long at level 2 (must be < 64 characters)"},
      {[&](TargetRecord& r) { full.copy(r.classNames[1], 63); }, "SUCCESS: All 3 levels validated in 0ms"},
      {[](TargetRecord& r) { r.childIndices[0] = INT32_MIN; },
       "ERROR: Invalid child index at level 1: -2147483648 (must be >= 0)"},
      // Beyond the path nothing is checked.
      {[](TargetRecord& r) { r.controlTypes[3] = r.childIndices[3] = -1; }, "SUCCESS: All 3 levels validated in 0ms"},
  };
  for (const Case& c : cases) {
    TargetRecord record = InPanel(kEdit, u"Edit", 1);
    c.spoil(record);
    EXPECT_EQ(ValidateTreePathData(&record), c.line.starts_with("SUCCESS"));
    EXPECT_EQ(Log(), Lines{"[ValidateTreePathData] " + c.line});
  }
  EXPECT_FALSE(ValidateTreePathData(nullptr));
  EXPECT_EQ(Log(), (Lines{"[ValidateTreePathData] ERROR: target is null"}));
}

TEST_F(TreePathNavigationTest, EachLevelTakesTheChildThatItDescribes) {
  const struct {
    TargetRecord record;
    std::string found;
    std::string line;  // the last one
  } cases[] = {
      {InPanel(kEdit, u"Edit", 1), "1", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(kEdit, u"Edit", 2), "4", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(kEdit, u"Edit", 0), "1", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(kEdit, u"Edit", 3), "none", "Tree path FAILED at level 3: no element found with index 3, time: 0ms"},
      {InPanel(kEdit, u"edit", 1), "none",
       "ERROR: Level 2 - No children found matching combined condition: ControlType=50004 AND ClassName=edit"},
      // Without a class name the position counts every child of the type.
      {InPanel(kEdit, u"", 2), "3", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(kEdit, u"", 0), "1", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(kEdit, u"", 4), "none", "Tree path FAILED at level 3: index 4 exceeds child count 3, time: 0ms"},
      // Without a control type the position counts every child, and the class is compared one by one.
      {InPanel(0, u"", 2), "2", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(0, u"Edit", 4), "4", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(0, u"Memo", 0), "3", "Tree path SUCCESS (levels: 2, time: 0ms)"},
      {InPanel(0, u"Edit", 2), "none", "Tree path FAILED at level 3: no element found with index 2, time: 0ms"},
      {InPanel(0, u"Absent", 0), "none", "Tree path FAILED at level 3: no element found with index 0, time: 0ms"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Follow(c.record), c.found);
    EXPECT_EQ(Log().back(), kTag + c.line);
  }
}

// Class and type of all candidates come along with the search; each of them asked alone would be a call more.
TEST_F(TreePathNavigationTest, ALevelIsOneCall) {
  for (const TargetRecord& record : {InPanel(kEdit, u"Edit", 2), InPanel(kEdit, u"", 3), InPanel(0, u"Edit", 4)}) {
    const auto before = TheDesktop().Calls().CrossProcessCount();
    EXPECT_EQ(Follow(record), "4");
    // The window's element, its class, two levels; and the test's own question for the AutomationId.
    EXPECT_EQ(TheDesktop().Calls().CrossProcessCount() - before, 5U);
  }
}

TEST_F(TreePathNavigationTest, ASearchInVainTakesEachCandidateOnce) {
  const auto before = TheDesktop().Calls().Count("IUIAutomationElementArray::GetElement");
  EXPECT_EQ(Follow(InPanel(0, u"Absent", 0)), "none");
  // The panel, and its four children.
  EXPECT_EQ(TheDesktop().Calls().Count("IUIAutomationElementArray::GetElement") - before, 5U);
}

TEST_F(TreePathNavigationTest, LevelZeroMayBeTheWindowItself) {
  const std::string skipping = "Skipping root window level - className matches: Dialog";
  const struct {
    TargetRecord record;
    std::string found;
    std::string line;
    int levels;
  } cases[] = {
      {RecordOf({{UIA_WindowControlTypeId, u"Dialog", 5}}), "", skipping, 0},
      {RecordOf({{UIA_WindowControlTypeId, u"Dialog", 5}, {kPanel, u"Panel", 1}}), "9", skipping, 1},
      {RecordOf({{kPanel, u"Panel", 1}, {kButton, u"", 1}}), "2",
       "Starting from level 0 - pathLength: 2, first controlType: 50033", 2},
      {RecordOf({{UIA_WindowControlTypeId, u"dialog", 1}}), "none",
       "Root window className 'Dialog' != target[0] className 'dialog' - starting from level 0", -1},
      {RecordOf({{UIA_WindowControlTypeId, u"", 1}}), "none",
       "Root window className 'Dialog' != target[0] className '' - starting from level 0", -1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Follow(c.record), c.found);
    const Lines log = Log();
    ASSERT_GT(log.size(), 3U);
    EXPECT_EQ(log[3], kTag + c.line);
    if (c.levels >= 0) {
      EXPECT_EQ(log.back(), kTag + "Tree path SUCCESS (levels: " + std::to_string(c.levels) + ", time: 0ms)");
    }
  }
  // A window that does not tell its class may still hold the level as a child.
  AddControl(dialog_, u"Dialog", 8, {110, 110, 120, 120}, standin::Behaviour::None);
  TheDesktop().Elements().SetNullString(TheDesktop().Elements().Of(dialog_), UIA_ClassNamePropertyId);
  EXPECT_EQ(Follow(RecordOf({{UIA_WindowControlTypeId, u"Dialog", 1}})), "none");
  EXPECT_EQ(Log()[3], kTag + "WARNING: Failed to get root element className");
}

TEST_F(TreePathNavigationTest, EntriesThatAreNotHandedOutHaveNoPosition) {
  const HWND second = AddControl(panel_, u"Spin", 21, {10, 10, 11, 11}, standin::Behaviour::Edit);
  AddControl(panel_, u"Spin", 22, {10, 10, 11, 11}, standin::Behaviour::Edit);
  TheDesktop().Elements().HideFromArrays(TheDesktop().Elements().Of(second));
  EXPECT_EQ(Follow(InPanel(kEdit, u"Spin", 1)), "22");
  EXPECT_EQ(Follow(InPanel(kEdit, u"Spin", 2)), "none");
  EXPECT_EQ(Follow(InPanel(kEdit, u"Spin", 0)), "22");
  ForgetLog();
  // The direct pick takes the array's own numbers.
  EXPECT_EQ(Follow(InPanel(kEdit, u"", 4)), "none");
  EXPECT_EQ(Log().back(), kTag + "Tree path FAILED at level 3: failed to get element at index 4, time: 0ms");
  EXPECT_EQ(Follow(InPanel(kEdit, u"", 5)), "22");
}

TEST_F(TreePathNavigationTest, CandidatesArriveWithOneSearchPerLevel) {
  for (int i = 0; i < 50; ++i) {
    AddControl(panel_, u"Item", 100 + i, {130, 250, 140, 260}, standin::Behaviour::None);
  }
  const TargetRecord record = InPanel(0, u"Item", 54);
  const Lines calls = CallsOf([&] { EXPECT_EQ(Follow(record), "149"); });
  const auto count = [&](const char* name) { return std::count(calls.begin(), calls.end(), name); };
  EXPECT_EQ(count("IUIAutomationElement::FindAllBuildCache"), 2);
  EXPECT_EQ(count("IUIAutomationElement::FindAll"), 0);
  EXPECT_EQ(count("IUIAutomationElement::get_CurrentClassName"), 1) << "the window's only";
  EXPECT_EQ(count("IUIAutomationElement::GetCurrentPropertyValue"), 0);
  EXPECT_LE(count("IUIAutomationElement::GetCachedPropertyValue"), 2);
}

TEST_F(TreePathNavigationTest, TheClassNameIsTheCachedOneUnlessItIsMissing) {
  const auto memo = TheDesktop().Elements().Of(WindowFromPoint({130, 200}));
  // Renamed between the search and the comparison.
  TheDesktop().Calls().After("IUIAutomationElementArray::get_Length", 2,
                             [=] { TheDesktop().Elements().SetProperty(memo, UIA_ClassNamePropertyId, u"Renamed"); });
  EXPECT_EQ(Follow(InPanel(0, u"Memo", 3)), "3");
  TheDesktop().Calls().After("IUIAutomationElementArray::get_Length", 2,
                             [=] { TheDesktop().Elements().SetProperty(memo, UIA_ClassNamePropertyId, u"Memo"); });
  EXPECT_EQ(Follow(InPanel(0, u"Memo", 3)), "none");
  TheDesktop().Elements().SetProperty(memo, UIA_ClassNamePropertyId, u"Renamed");
  TheDesktop().Elements().HideFromCache(memo);
  const auto before = TheDesktop().Calls().Count("IUIAutomationElement::get_CurrentClassName");
  EXPECT_EQ(Follow(InPanel(0, u"Renamed", 3)), "3");
  EXPECT_EQ(TheDesktop().Calls().Count("IUIAutomationElement::get_CurrentClassName") - before, 2U);
  TheDesktop().Elements().FailProperty(memo, UIA_ClassNamePropertyId);
  EXPECT_EQ(Follow(InPanel(0, u"Renamed", 3)), "none");
  TheDesktop().Elements().SetNullString(memo, UIA_ClassNamePropertyId);
  EXPECT_EQ(Follow(InPanel(0, u"Renamed", 3)), "none");
}

TEST_F(TreePathNavigationTest, WithoutACacheRequestTheLiveElementsAreAsked) {
  for (const HRESULT result : {E_FAIL, S_FALSE}) {
    TheDesktop().Faults().FailWith("IUIAutomation::CreateCacheRequest", result);
    TheDesktop().Faults().FailNth("IUIAutomation::CreateCacheRequest", 1);
    const Lines calls = CallsOf([&] { EXPECT_EQ(Follow(InPanel(kEdit, u"Edit", 2)), "4"); });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "IUIAutomationElement::FindAll"), 2);
    EXPECT_EQ(Log()[2], kTag + "WARNING: Failed to create cache request, using normal property access");
  }
  for (const char* ignored : {"IUIAutomationCacheRequest::AddProperty", "IUIAutomation::get_ControlViewCondition",
                              "IUIAutomationCacheRequest::put_TreeFilter"}) {
    TheDesktop().Faults().FailFromNth(ignored, 1);
    EXPECT_EQ(Follow(InPanel(kEdit, u"Edit", 2)), "4");
    TheDesktop().Faults().Stop();
    EXPECT_EQ(Log()[2], kTag + "Created cache request for static properties");
  }
}

TEST_F(TreePathNavigationTest, EveryFailureEndsItWithItsLine) {
  const std::string condition =
      "ERROR: Level 2 - Failed to create combined condition for ControlType: 50004, ClassName: Edit";
  const TargetRecord byBoth = InPanel(kEdit, u"Edit", 1);
  const TargetRecord byType = InPanel(kEdit, u"", 1);
  const TargetRecord byClass = InPanel(0, u"Edit", 1);
  const struct {
    const TargetRecord& record;
    std::string call;
    std::uint64_t nth;  // the third level's
    std::string failed;
    std::string gaveNothing;
  } cases[] = {
      {byBoth, "IUIAutomation::ElementFromHandle", 1, "ERROR: Failed to get root element, HRESULT: 0x80004005",
       "ERROR: Failed to get root element, HRESULT: 0x1"},
      {byClass, "IUIAutomation::CreateTrueCondition", 1,
       "ERROR: Level 2 - Failed to create true condition, HRESULT: 0x80004005",
       "ERROR: Level 2 - Failed to create true condition, HRESULT: 0x1"},
      {byBoth, "IUIAutomation::CreatePropertyCondition", 3, condition, condition},
      {byBoth, "IUIAutomation::CreatePropertyCondition", 4, condition, condition},
      {byBoth, "SysAllocString", 2, condition, condition},
      {byBoth, "IUIAutomation::CreateAndCondition", 2, condition, condition},
      {byType, "IUIAutomation::CreatePropertyCondition", 3,
       "ERROR: Level 2 - Failed to create combined condition for ControlType: 50004, ClassName: ",
       "ERROR: Level 2 - Failed to create combined condition for ControlType: 50004, ClassName: "},
      {byBoth, "IUIAutomationElement::FindAllBuildCache", 2,
       "ERROR: Level 2 - FindAll failed, HRESULT: 0x80004005, children array is null",
       "ERROR: Level 2 - FindAll failed, HRESULT: 0x1, children array is null"},
      {byBoth, "IUIAutomationElementArray::get_Length", 2,
       "ERROR: Level 2 - Failed to get children count, HRESULT: 0x80004005", ""},
      {byType, "IUIAutomationElementArray::GetElement", 2,
       "Tree path FAILED at level 3: failed to get element at index 1, time: 0ms",
       "Tree path FAILED at level 3: failed to get element at index 1, time: 0ms"},
  };
  for (const auto& c : cases) {
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
      const std::string& line = result == E_FAIL ? c.failed : c.gaveNothing;
      if (line.empty()) {
        continue;
      }
      TheDesktop().Faults().Stop();
      TheDesktop().Faults().FailWith(c.call, result);
      TheDesktop().Faults().FailNth(c.call, c.nth);
      EXPECT_EQ(Follow(c.record), "none");
      EXPECT_EQ(TheDesktop().Faults().Injected(), 1U) << c.call;
      EXPECT_EQ(Log().back(), kTag + line) << c.call;
    }
  }
}

TEST_F(TreePathNavigationTest, ChecksItsArgumentsInOrder) {
  const TargetRecord bad = EmptyRecord();
  const std::string starting = kTag + "Starting tree path navigation - pathLength: ";
  const std::string handle = Hexadecimal(dialog_);
  EXPECT_FALSE(FindElementByTreePath(dialog_, &bad));
  EXPECT_THAT(Log(), ElementsAre(starting + "0, window: 0x" + handle,
                                 "[ValidateTreePathData] ERROR: pathLength out of range: 0 (valid range: 1-20)",
                                 kTag + "ERROR: ValidateTreePathData failed"));
  EXPECT_FALSE(FindElementByTreePath(dialog_, nullptr));
  EXPECT_THAT(Log(), ElementsAre(starting + "-1, window: 0x" + handle, kTag + "ERROR: target is null"));
  EXPECT_FALSE(FindElementByTreePath(nullptr, nullptr));
  EXPECT_THAT(Log(), ElementsAre(starting + "-1, window: 0x0", kTag + "ERROR: window handle is null"));
  cleanupAutomation();
  OpenLog();
  EXPECT_FALSE(FindElementByTreePath(nullptr, &bad));
  EXPECT_THAT(Log(), ElementsAre(starting + "0, window: 0x0", kTag + "ERROR: g_pAutomation is null"));
}

TEST_F(TreePathNavigationTest, ACancelEndsItSilentlyBeforeTheNextLevel) {
  CancelByEscape();
  EXPECT_EQ(Follow(InPanel(kEdit, u"Edit", 1)), "none");
  EXPECT_EQ(Log().back(), kTag + "Skipping root window level - className matches: Dialog");
  EXPECT_EQ(TheDesktop().Calls().Count("IUIAutomationElement::FindAllBuildCache"), 0U);
  // A path that consists of the window alone leads to the window.
  EXPECT_EQ(Follow(RecordOf({{UIA_WindowControlTypeId, u"Dialog", 1}})), "");
}

TEST_F(TreePathNavigationTest, TimesAreWholeMilliseconds) {
  TheDesktop().Calls().SetCrossProcessCost(0.75);
  const auto before = TheDesktop().Clock().Now();
  EXPECT_EQ(Follow(InPanel(kEdit, u"Edit", 2)), "4");
  const auto atMost = static_cast<int>(TheDesktop().Clock().Now() - before);
  const std::string line = Log().back();
  int levels = 0;
  int time = 0;
  ASSERT_EQ(
      std::sscanf(line.c_str(), "[FindElementByTreePath] Tree path SUCCESS (levels: %d, time: %dms)", &levels, &time),
      2);
  EXPECT_GT(time, 0);
  EXPECT_LE(time, atMost);
}

}  // namespace
}  // namespace tests
