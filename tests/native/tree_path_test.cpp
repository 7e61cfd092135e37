// Recording the path from a top-level window down to an element, and positions among siblings.
#include "capture/tree_path.h"

#include "automation/automation_context.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

constexpr RECT kSpot{300, 300, 320, 320};
constexpr CONTROLTYPEID kCustom = 50007;

class TreePathTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    dialog_ = AddDialog();
    ASSERT_EQ(initializeAutomation(), KORVANE_OK);
    std::memset(&record_, 0xAB, sizeof record_);
  }

  // The innermost element at the spot.
  static ElementPtr AtSpot(POINT point = {310, 310}) {
    ElementPtr element;
    EXPECT_EQ(CurrentAutomation()->ElementFromPoint(point, element.Receive()), S_OK);
    return element;
  }

  // A chain of elements without windows below the dialog, the innermost `depth` levels below it.
  void AddChain(int depth) {
    auto element = TheDesktop().Elements().Of(dialog_);
    for (int i = 1; i <= depth; ++i) {
      element = TheDesktop().Elements().Add(
          element, {.className = u"L" + standin::Text(1, static_cast<char16_t>(u'A' + i)), .rect = kSpot});
    }
  }

  HWND dialog_ = nullptr;
  TargetRecord record_;
};

TEST_F(TreePathTest, OfAControlInAWindow) {
  AddControl(dialog_, u"Edit", 7, kSpot);
  EXPECT_TRUE(BuildTreePath(AtSpot().Get(), &record_));
  EXPECT_EQ(Log(), (Lines{"[GetChildIndex] Finding index for control type: 50004, className: Edit",
                          "[GetChildIndex] Found 1 siblings with controlType=50004 and className=Edit",
                          "[GetChildIndex] Parent has 1 children matching control type 50004 and className 'Edit'",
                          "[GetChildIndex] Found target at index: 1",
                          "[GetChildIndex] Finding index for control type: 50032, className: Dialog",
                          "[GetChildIndex] Found 1 siblings with controlType=50032 and className=Dialog",
                          "[GetChildIndex] Parent has 1 children matching control type 50032 and className 'Dialog'",
                          "[GetChildIndex] Found target at index: 1",
                          "[GetChildIndex] Finding index for control type: 50033, className: #32769",
                          "[GetChildIndex] No parent element found, returning index 0",
                          "[BuildTreePath] Removed Desktop level from path",
                          "[BuildTreePath] SUCCESS: Built tree path with 2 levels (Desktop level removed)"}));
  TargetRecord expected;
  std::memset(&expected, 0xAB, sizeof expected);
  ClearTreePath(expected);
  const int method = expected.identificationMethod;
  AddLevel(expected, UIA_WindowControlTypeId, u"Dialog", 1);
  AddLevel(expected, 50004, u"Edit", 1);
  expected.identificationMethod = method;
  EXPECT_EQ(std::memcmp(&record_, &expected, sizeof record_), 0) << "nothing but the path is written";
}

TEST_F(TreePathTest, HoldsAtMostTwentyLevels) {
  const struct {
    int depth;  // below the dialog
    int levels;
    std::u16string_view outermost;
  } cases[] = {
      {0, 1, u"Dialog"},    // the dialog itself
      {17, 18, u"Dialog"},  // 18 levels and the desktop
      {18, 19, u"Dialog"},  // 19 levels and the desktop: the last path that reaches it
      {19, 20, u"Dialog"}, {20, 20, u"LB"}, {30, 20, u"LL"},
  };
  for (const auto& c : cases) {
    AddChain(c.depth);
    EXPECT_TRUE(BuildTreePath(AtSpot().Get(), &record_));
    EXPECT_EQ(record_.pathLength, c.levels) << c.depth;
    EXPECT_EQ(std::u16string_view(record_.classNames[0]), c.outermost) << c.depth;
    const bool reachesDesktop = c.depth < 19;
    EXPECT_EQ(Starting(Log(), "[BuildTreePath] SUCCESS"),
              Lines{"[BuildTreePath] SUCCESS: Built tree path with " + std::to_string(c.levels) + " levels" +
                    (reachesDesktop ? " (Desktop level removed)" : "")});
    for (int i = 0; i < KORVANE_MAX_PATH_LEVELS; ++i) {
      const bool inUse = i < c.levels;
      EXPECT_EQ(record_.controlTypes[i] != 0, inUse);
      EXPECT_EQ(record_.childIndices[i], inUse ? 1 : 0);
      const std::u16string_view whole(record_.classNames[i], KORVANE_CLASS_NAME_SIZE);
      EXPECT_EQ(whole.find_first_not_of(u'\0') != whole.npos, inUse);
    }
    if (c.depth > 0) {
      EXPECT_EQ(record_.classNames[c.levels - 1][1], static_cast<char16_t>(u'A' + c.depth));
    }
    TheDesktop().Windows().Destroy(dialog_);
    dialog_ = AddDialog();
  }
}

TEST_F(TreePathTest, TheDesktopLevelIsToldByItsClassAlone) {
  const struct {
    std::u16string_view desktopClass;
    CONTROLTYPEID windowType;
    bool removed;
    Lines warning;
  } cases[] = {
      {u"#32769",
       50033,
       true,
       {"[BuildTreePath] WARNING: First level after Desktop removal is not a window (controlType=50033)"}},
      {u"#32769x", 50032, false, {}},
      {u"#3276", 50032, false, {}},
  };
  for (const auto& c : cases) {
    TheDesktop().Windows().Destroy(dialog_);
    dialog_ =
        TheDesktop().Windows().Add({.className = u"Dialog", .rect = {100, 100, 500, 400}, .controlType = c.windowType});
    TheDesktop().Elements().SetProperty(TheDesktop().Elements().Root(), UIA_ClassNamePropertyId, c.desktopClass);
    EXPECT_TRUE(BuildTreePath(AtSpot().Get(), &record_));
    EXPECT_EQ(record_.pathLength, c.removed ? 1 : 2);
    const Lines log = Log();
    EXPECT_EQ(Starting(log, "[BuildTreePath] WARNING"), c.warning);
    EXPECT_EQ(Starting(log, "[BuildTreePath] Removed").size(), c.removed ? 1U : 0U);
  }
  TheDesktop().Elements().SetProperty(TheDesktop().Elements().Root(), UIA_ClassNamePropertyId, u"#32769");
  EXPECT_FALSE(BuildTreePath(AtSpot({5, 5}).Get(), &record_));
  EXPECT_EQ(record_.pathLength, 0);
  EXPECT_EQ(Starting(Log(), "[BuildTreePath]"),
            (Lines{"[BuildTreePath] Removed Desktop level from path",
                   "[BuildTreePath] WARNING: Path length is 0 after Desktop removal",
                   "[BuildTreePath] SUCCESS: Built tree path with 0 levels (Desktop level removed)"}));
}

TEST_F(TreePathTest, ARemovedLevelLeavesNothingBehind) {
  // A walk that ends below the desktop, at a window that bears its class.
  TheDesktop().Windows().Destroy(dialog_);
  dialog_ = AddDialog(u"#32769");
  AddControl(dialog_, u"Edit", 7, kSpot);
  TheDesktop().Faults().FailNth("IUIAutomationTreeWalker::GetParentElement", 4);
  EXPECT_TRUE(BuildTreePath(AtSpot().Get(), &record_));
  TargetRecord expected = record_;
  ClearTreePath(expected);
  AddLevel(expected, 50004, u"Edit", 1);
  expected.identificationMethod = record_.identificationMethod;
  EXPECT_EQ(std::memcmp(&record_, &expected, sizeof record_), 0);
}

TEST_F(TreePathTest, LongClassNamesAreCutAndThenMatchNoSibling) {
  for (const std::size_t length : {63U, 64U, 80U}) {
    AddControl(dialog_, standin::Text(length, u'c'), 0, kSpot);
    EXPECT_TRUE(BuildTreePath(AtSpot().Get(), &record_));
    EXPECT_EQ(std::u16string_view(record_.classNames[1]), standin::Text(63, u'c'));
    EXPECT_EQ(record_.childIndices[1], length == 63 ? 1 : 0);
    EXPECT_EQ(Starting(Log(), "[GetChildIndex] Target not found").size(), length == 63 ? 0U : 1U);
    TheDesktop().Windows().Destroy(dialog_);
    dialog_ = AddDialog();
  }
}

TEST_F(TreePathTest, APositionCountsSiblingsOfTheSameKind) {
  // What the platform lists under the dialog: buttons and one edit, all but the asked-for ones elsewhere.
  const standin::Text classes[] = {u"Button", u"Push", u"Button", u"", u"Button"};
  std::vector<standin::Element> buttons;
  for (int i = 0; i < 5; ++i) {
    const LONG left = 120 + 40 * i;
    buttons.push_back(TheDesktop().Elements().Add(
        dialog_, {.className = classes[i], .controlType = 50000, .rect = {left, 120, left + 30, 140}}));
  }
  TheDesktop().Elements().Add(dialog_, {.className = u"Button", .controlType = 50004, .rect = {400, 300, 410, 310}});
  const auto button = [](int i) { return AtSpot({125 + 40 * i, 130}); };
  const int positions[] = {1, 1, 2, 4, 3};  // the one without a class counts among all buttons
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(GetChildIndex(button(i).Get(), 50000, classes[i].c_str()), positions[i]) << i;
  }
  EXPECT_EQ(GetChildIndex(button(4).Get(), 50000, nullptr), 5);
  EXPECT_EQ(GetChildIndex(button(4).Get(), 50000, u"button"), 0) << "letter case counts";
  EXPECT_EQ(GetChildIndex(button(4).Get(), 50004, u"Button"), 0);
  // An array entry that cannot be read is not counted; one that cannot be compared is.
  TheDesktop().Elements().HideFromArrays(buttons[0]);
  EXPECT_EQ(GetChildIndex(button(4).Get(), 50000, u"Button"), 2);
  TheDesktop().Faults().FailNth("IUIAutomation::CompareElements", 1);
  EXPECT_EQ(GetChildIndex(button(4).Get(), 50000, u"Button"), 2);
}

TEST_F(TreePathTest, APositionSearchAsksOnceAndNamesWhatFailed) {
  AddControl(dialog_, u"Edit", 7, kSpot);
  const ElementPtr edit = AtSpot();
  const std::string finding = "[GetChildIndex] Finding index for control type: 50004, className: Edit";
  EXPECT_EQ(Starting(CallsOf([&] { GetChildIndex(edit.Get(), 50004, u"Edit"); }), "IUIAutomation"),
            (Lines{"IUIAutomation::get_ControlViewWalker", "IUIAutomationTreeWalker::GetParentElement",
                   "IUIAutomation::CreatePropertyCondition", "IUIAutomation::CreatePropertyCondition",
                   "IUIAutomation::CreateAndCondition", "IUIAutomationElement::FindAll",
                   "IUIAutomationElementArray::get_Length", "IUIAutomationElementArray::GetElement",
                   "IUIAutomation::CompareElements"}));
  ForgetLog();
  const struct {
    const char* call;
    std::uint64_t nth;
    const char* line;
  } cases[] = {
      {"IUIAutomation::get_ControlViewWalker", 1, "ERROR: Failed to get tree walker"},
      {"IUIAutomationTreeWalker::GetParentElement", 1, "No parent element found, returning index 0"},
      {"IUIAutomation::CreatePropertyCondition", 1, "ERROR: Failed to create control type condition"},
      {"IUIAutomation::CreatePropertyCondition", 2, "ERROR: Failed to create class name condition"},
      {"SysAllocString", 1, "ERROR: Failed to create class name condition"},
      {"IUIAutomation::CreateAndCondition", 1, "ERROR: Failed to create combined condition"},
      {"IUIAutomationElement::FindAll", 1, "ERROR: Failed to find children with matching control type and class name"},
      {"IUIAutomationElementArray::get_Length", 1, "ERROR: Failed to get filtered children count"},
  };
  for (const auto& c : cases) {
    // Once with a failure, and once with a success that hands out nothing.
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
      if (result == S_FALSE && std::string_view(c.call).ends_with("get_Length")) {
        continue;
      }
      TheDesktop().Faults().FailWith(c.call, result);
      TheDesktop().Faults().FailNth(c.call, c.nth);
      EXPECT_EQ(GetChildIndex(edit.Get(), 50004, u"Edit"), 0);
      EXPECT_EQ(Log(), (Lines{finding, std::string("[GetChildIndex] ") + c.line})) << c.call << result;
    }
  }
  TheDesktop().Faults().FailNth("IUIAutomationElementArray::GetElement", 1);
  EXPECT_EQ(GetChildIndex(edit.Get(), 50004, u"Edit"), 0);
  EXPECT_EQ(Log().back(), "[GetChildIndex] Target not found among siblings, returning 0");
}

TEST_F(TreePathTest, WithoutClassNameThePositionGoesByControlTypeAlone) {
  AddControl(dialog_, u"Edit", 7, kSpot);
  EXPECT_EQ(GetChildIndex(AtSpot().Get(), 50004, nullptr), 1);
  EXPECT_EQ(Log(), (Lines{"[GetChildIndex] Finding index for control type: 50004, className: (null)",
                          "[GetChildIndex] Empty/null className, using controlType-only condition",
                          "[GetChildIndex] Found 1 siblings with controlType=50004 and className=(null)",
                          "[GetChildIndex] Parent has 1 children matching control type 50004 and className '(null)'",
                          "[GetChildIndex] Found target at index: 1"}));
  EXPECT_EQ(GetChildIndex(AtSpot().Get(), -7, u""), 0);
  EXPECT_EQ(Log(), (Lines{"[GetChildIndex] Finding index for control type: -7, className: ",
                          "[GetChildIndex] Empty/null className, using controlType-only condition",
                          "[GetChildIndex] Found 0 siblings with controlType=-7 and className=",
                          "[GetChildIndex] Parent has 0 children matching control type -7 and className ''",
                          "[GetChildIndex] Target not found among siblings, returning 0"}));
}

TEST_F(TreePathTest, OddArguments) {
  EXPECT_FALSE(BuildTreePath(nullptr, &record_));
  EXPECT_FALSE(BuildTreePath(AtSpot().Get(), nullptr));
  EXPECT_THAT(Log(), IsEmpty());
  EXPECT_EQ(record_.pathLength, static_cast<int>(0xABABABAB)) << "untouched";
  EXPECT_EQ(GetChildIndex(nullptr, 1, u"x"), 0);
  EXPECT_EQ(Log(), (Lines{"[GetChildIndex] ERROR: Invalid parameters"}));
}

TEST_F(TreePathTest, AFailingLevelStaysEmptyAndAFailingParentEndsTheWalk) {
  AddChain(3);
  const ElementPtr element = AtSpot();
  const auto innermost = [&] { return record_.pathLength - 1; };
  TheDesktop().Faults().FailNth("IUIAutomationElement::get_CurrentControlType", 1);
  EXPECT_TRUE(BuildTreePath(element.Get(), &record_));
  EXPECT_EQ(record_.pathLength, 4);
  EXPECT_EQ(record_.controlTypes[innermost()], 0);
  EXPECT_EQ(record_.childIndices[innermost()], 0);

  TheDesktop().Faults().FailNth("IUIAutomationElement::get_CurrentClassName", 1);
  EXPECT_TRUE(BuildTreePath(element.Get(), &record_));
  EXPECT_EQ(record_.pathLength, 4);
  EXPECT_EQ(record_.controlTypes[innermost()], kCustom);
  EXPECT_EQ(record_.classNames[innermost()][0], 0);
  EXPECT_EQ(record_.childIndices[innermost()], 1);

  // Each level asks for a parent twice: for its position, and to go on. The fourth is the second level's step.
  ForgetLog();
  TheDesktop().Faults().FailNth("IUIAutomationTreeWalker::GetParentElement", 4);
  EXPECT_TRUE(BuildTreePath(element.Get(), &record_));
  EXPECT_EQ(record_.pathLength, 2);
  EXPECT_EQ(std::u16string_view(record_.classNames[0]), u"LC");
  EXPECT_EQ(std::u16string_view(record_.classNames[1]), u"LD");
  EXPECT_EQ(Log().back(), "[BuildTreePath] SUCCESS: Built tree path with 2 levels");

  for (const HRESULT result : {E_FAIL, S_FALSE}) {
    TheDesktop().Faults().FailWith("IUIAutomation::get_ControlViewWalker", result);
    TheDesktop().Faults().FailNth("IUIAutomation::get_ControlViewWalker", 1);
    EXPECT_FALSE(BuildTreePath(element.Get(), &record_));
    EXPECT_EQ(record_.pathLength, 0);
    EXPECT_EQ(Log(), (Lines{"[BuildTreePath] FAILED: Unable to get tree walker"}));
  }
}

}  // namespace
}  // namespace tests
