// Pasting by a window message, and the paste that only types.
#include "tests/native/fixture.h"

namespace tests {
namespace {

const std::string kTag = "[pasteToTargetDirect] ";

class PasteDirectTest : public FieldTest {
 protected:
  void SetUp() override {
    FieldTest::SetUp();
    TheDesktop().Controls().SetText(edit_, u"before");
    TheDesktop().Controls().SetSelection(edit_, 2, 4);
  }

  // The lines of a paste up to the element, for the record of this test.
  Lines Opening(int mode) const {
    return {"Function entered", "Target window: " + Decimal(window_), "AutomationId: 7",
            "Mode: " + std::to_string(mode)};
  }
};

TEST_F(PasteDirectTest, WholeLog) {
  TheDesktop().Windows().SetForeground(TheDesktop().Windows().Add({.className = u"Other"}));
  EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"X\xD83D", 1), KORVANE_OK);
  EXPECT_EQ(Log(), (Lines{kTag + "Function entered", kTag + "Target window: " + Decimal(window_),
                          kTag + "AutomationId: 7", kTag + "Mode: 1"} +
                    kFoundById +
                    Lines{kTag + "Found control HWND: " + Decimal(edit_),
                          kTag + "Using EM_REPLACESEL mode (insert at cursor)", kTag + "SendMessage result: 1"}));
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"beX\xD83Dre");
  EXPECT_EQ(TheDesktop().Windows().Foreground(), window_);
  EXPECT_TRUE(TheDesktop().Input().Sent().empty());
  const auto trace = TheDesktop().Calls().Trace();
  EXPECT_EQ(trace.back().call + " " + trace.back().detail, "EM_REPLACESEL canUndo=1 units=2");
}

TEST_F(PasteDirectTest, OnlyModeOneInserts) {
  for (const int mode : {0, 2, -1, INT32_MIN}) {
    SCOPED_TRACE(mode);
    TheDesktop().Controls().SetText(edit_, u"before");
    EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"after", mode), KORVANE_OK);
    EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"after");
    EXPECT_EQ(WithPrefix(Log(), kTag),
              (Opening(mode) + Lines{"Found control HWND: " + Decimal(edit_), "Using WM_SETTEXT mode (replace all)",
                                     "SendMessage result: 1"}));
  }
  EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"", 0), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"");
}

TEST_F(PasteDirectTest, FocusesBeforeItSends) {
  Lines calls;
  EXPECT_EQ(Elapsed([&] { calls = CallsOf([&] { pasteToTargetDirect(&target_, window_, u"x", 1); }); }), 50);
  ASSERT_GE(calls.size(), 5U);
  EXPECT_THAT(Lines(calls.end() - 5, calls.end()),
              ElementsAre("IUIAutomationElement::get_CurrentNativeWindowHandle", "GetAncestor", "SetForegroundWindow",
                          "Sleep", "SendMessageW"));

  TheDesktop().Windows().RefuseForeground(-1);
  EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"refused", 0), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"refused");

  TheDesktop().Faults().FailNth("GetAncestor", 1);
  const auto focused = TheDesktop().Calls().Count("SetForegroundWindow");
  EXPECT_EQ(Elapsed([&] { EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"no top", 0), KORVANE_OK); }), 0);
  EXPECT_EQ(TheDesktop().Calls().Count("SetForegroundWindow"), focused);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"no top");
}

TEST_F(PasteDirectTest, RefusingControlIsOnlyLogged) {
  TheDesktop().Controls().RefuseText(edit_);
  for (const int mode : {0, 1}) {
    EXPECT_EQ(pasteToTargetDirect(&target_, window_, u"x", mode), KORVANE_OK);
    EXPECT_EQ(Log().back(), kTag + "SendMessage result: 0");
    EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"before");
  }
}

TEST_F(PasteDirectTest, TargetWindowStandsIn) {
  setTargetWindow(window_);
  EXPECT_EQ(pasteToTargetDirect(&target_, nullptr, u"after", 0), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"after");
  EXPECT_EQ(WithPrefix(Log(), kTag)[1], "Target window: " + Decimal(window_));
}

TEST_F(PasteDirectTest, Arguments) {
  EXPECT_EQ(pasteToTargetDirect(nullptr, nullptr, nullptr, 1), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(pasteToTargetDirect(&target_, nullptr, nullptr, 1), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(pasteToTargetDirect(&target_, nullptr, u"x", 1), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(),
            (Lines{kTag + "Function entered", "ERROR pasteToTargetDirect Code:-2 Details:Invalid target parameter",
                   kTag + "Function entered", "ERROR pasteToTargetDirect Code:-2 Details:Invalid text parameter",
                   kTag + "Function entered", kTag + "ERROR: No target window specified"}));
}

TEST_F(PasteDirectTest, NoControlNoMessage) {
  TheDesktop().Elements().Add(window_, {.name = u"Row", .automationId = u"row"});
  const auto expectNotFound = [this](const TargetRecord& target, const char* last) {
    EXPECT_EQ(pasteToTargetDirect(&target, window_, u"x", 0), KORVANE_NOT_FOUND);
    const Lines log = WithPrefix(Log(), kTag);
    EXPECT_EQ(log.size(), 5U);
    EXPECT_EQ(log.back(), last);
  };
  expectNotFound(RecordById(u"row"), "ERROR: Could not get native window handle from element");
  expectNotFound(RecordById(u"nobody"), "ERROR: Could not find target element");
  TheDesktop().Elements().FailProperty(field_, 30020);
  expectNotFound(target_, "ERROR: Could not get native window handle from element");
  cleanupAutomation();
  OpenLog();
  expectNotFound(target_, "ERROR: Could not find target element");
  EXPECT_EQ(TheDesktop().Calls().Count("SendMessageW"), 0U);
  EXPECT_EQ(TheDesktop().Calls().Count("SetForegroundWindow"), 0U);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"before");
}

class PasteSimpleTest : public FieldTest {};

TEST_F(PasteSimpleTest, TypesIntoWhateverHasTheFocus) {
  TheDesktop().Clipboard().Set(u"pasted");
  TheDesktop().User().Click(130, 130);
  const TargetRecord elsewhere = RecordById(u"nobody");
  const auto gone = reinterpret_cast<HWND>(std::uintptr_t{0xDEAD0});
  EXPECT_EQ(CallsOf([&] { EXPECT_EQ(pasteToTargetSimple(&elsewhere, gone), KORVANE_OK); }), (Lines{"SendInput"}));
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"pasted");
  setTargetWindow(window_);
  EXPECT_EQ(pasteToTargetSimple(&elsewhere, nullptr), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"pastedpasted");
  for (const std::uint32_t accepted : {0U, 3U}) {
    TheDesktop().Input().Block(accepted);
    EXPECT_EQ(pasteToTargetSimple(&elsewhere, window_), KORVANE_FAILED);
  }
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(PasteSimpleTest, Arguments) {
  EXPECT_EQ(pasteToTargetSimple(&target_, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_THAT(Log(), IsEmpty());
  EXPECT_EQ(pasteToTargetSimple(nullptr, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{"ERROR pasteToTargetSimple Code:-2 Details:Invalid target parameter"}));
  EXPECT_TRUE(TheDesktop().Input().Sent().empty());
}

}  // namespace
}  // namespace tests
