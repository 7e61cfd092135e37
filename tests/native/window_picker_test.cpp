// Picking a window with a click.
#include "tests/native/fixture.h"

namespace tests {
namespace {

class WindowPickerTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    auto& desktop = TheDesktop();
    main_ = desktop.Windows().Add({.className = u"Main", .title = u"Main", .rect = {0, 0, 700, 500}});
    dialog_ = desktop.Windows().Add(
        {.className = u"Dialog", .title = u"Dialog", .rect = {100, 100, 400, 300}, .owner = main_});
    const HWND panel = desktop.Windows().Add({.className = u"Panel", .rect = {110, 110, 390, 290}, .parent = dialog_});
    button_ = desktop.Windows().Add({.className = u"Button",
                                     .title = u"OK",
                                     .rect = {120, 120, 220, 150},
                                     .parent = panel,
                                     .behaviour = standin::Behaviour::Button});
  }

  void TearDown() override {
    EXPECT_EQ(TheDesktop().Host().HookCount(), 0);
    EXPECT_EQ(GetPropW(GetDesktopWindow(), u"MouseHook"), nullptr);
    EXPECT_EQ(TheDesktop().User().CursorShape(), "arrow");
    DesktopTest::TearDown();
  }

  void ClickLater(double milliseconds, int x, int y) {
    TheDesktop().Clock().After(milliseconds, [x, y] { TheDesktop().User().Click(x, y); });
  }

  HWND main_ = nullptr;
  HWND dialog_ = nullptr;
  HWND button_ = nullptr;
};

TEST_F(WindowPickerTest, ClickOnAButtonGivesTheTopOfTheOwnersAndPressesNothing) {
  TheDesktop().Clock().After(3, [] {
    EXPECT_EQ(TheDesktop().User().CursorShape(), "cross");
    EXPECT_EQ(TheDesktop().Host().HookCount(), 1);
    EXPECT_NE(GetPropW(GetDesktopWindow(), u"MouseHook"), nullptr);
  });
  ClickLater(5, 130, 130);
  EXPECT_EQ(Elapsed([&] { EXPECT_EQ(findWindowByClick(), main_); }), 5);
  EXPECT_EQ(TheDesktop().Controls().Presses(button_), 0);
  for (const HWND window : {main_, dialog_, button_}) {
    EXPECT_EQ(TheDesktop().Controls().MouseDowns(window), 0);
  }
  TheDesktop().User().Click(130, 130);
  EXPECT_EQ(TheDesktop().Controls().Presses(button_), 1) << "the next click is the window's again";
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(WindowPickerTest, TheClickItselfTakesTheHookAway) {
  ClickLater(5, 130, 130);
  bool looked = false;
  TheDesktop().Clock().After(5, [&looked] {
    looked = true;
    EXPECT_EQ(TheDesktop().Host().HookCount(), 0);
    EXPECT_EQ(GetPropW(GetDesktopWindow(), u"MouseHook"), nullptr);
    EXPECT_EQ(TheDesktop().User().CursorShape(), "arrow");
  });
  EXPECT_EQ(findWindowByClick(), main_);
  EXPECT_TRUE(looked);
}

TEST_F(WindowPickerTest, EachCallTakesItsOwnClick) {
  const HWND other = TheDesktop().Windows().Add({.className = u"Other", .rect = {800, 0, 900, 100}});
  ClickLater(5, 850, 50);
  EXPECT_EQ(findWindowByClick(), other);
  ClickLater(5, 5, 5);
  EXPECT_EQ(findWindowByClick(), main_);
  ClickLater(5, 950, 950);
  EXPECT_EQ(findWindowByClick(), nullptr) << "no window there, and none remembered";
}

TEST_F(WindowPickerTest, OtherMessagesAreServedWhileWaiting) {
  const auto dispatched = TheDesktop().Calls().Count("DispatchMessageW");
  for (const double at : {1.0, 2.0, 3.0}) {
    TheDesktop().Clock().After(at, [] { TheDesktop().Host().PostMessage(0x0400); });
  }
  ClickLater(5, 130, 130);
  EXPECT_EQ(findWindowByClick(), main_);
  EXPECT_EQ(TheDesktop().Calls().Count("DispatchMessageW") - dispatched, 4U) << "with the one that woke it";
}

TEST_F(WindowPickerTest, QuitEndsTheWaitAndStaysForTheHost) {
  TheDesktop().Clock().After(5, [] { TheDesktop().Host().PostQuit(7); });
  EXPECT_EQ(findWindowByClick(), nullptr);
  EXPECT_TRUE(TheDesktop().Host().QuitPending());
  MSG message{};
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
  EXPECT_EQ(message.wParam, 7U);
  TheDesktop().User().Click(130, 130);
  EXPECT_EQ(TheDesktop().Controls().Presses(button_), 1);
}

TEST_F(WindowPickerTest, Failures) {
  TheDesktop().Faults().FailNth("SetWindowsHookExW", 1);
  EXPECT_EQ(findWindowByClick(), nullptr);
  EXPECT_EQ(TheDesktop().Calls().Count("GetMessageW"), 0U);
  EXPECT_EQ(TheDesktop().Calls().Count("SetPropW"), 0U);
  TheDesktop().Faults().FailNth("GetMessageW", 1);
  EXPECT_EQ(findWindowByClick(), nullptr);
  TheDesktop().Faults().FailNth("SetPropW", 1);
  ClickLater(5, 130, 130);
  EXPECT_EQ(findWindowByClick(), main_) << "without the property the hook stays until the end";
  TheDesktop().Faults().FailNth("WindowFromPoint", 1);
  ClickLater(5, 130, 130);
  EXPECT_EQ(findWindowByClick(), nullptr);
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(WindowPickerTest, CursorOfTheHostComesBack) {
  const HCURSOR arrow = SetCursor(LoadCursorW(nullptr, IDC_CROSS));
  ClickLater(5, 130, 130);
  findWindowByClick();
  EXPECT_EQ(TheDesktop().User().CursorShape(), "cross");
  SetCursor(arrow);
}

}  // namespace
}  // namespace tests
