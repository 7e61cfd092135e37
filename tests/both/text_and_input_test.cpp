// Reading and waiting, text by message, typing, and picking windows.
#include "tests/both/scenario.h"

namespace scenarios {
namespace {

using ::testing::HasSubstr;

class TextTest : public ScenarioTest {
 protected:
  void SetUp() override {
    ScenarioTest::SetUp();
    name_ = Capture(order_form::kName, KORVANE_METHOD_TREE_PATH);
  }

  TargetRecord name_{};
};

TEST_F(TextTest, TextByMessageReplacesOrInserts) {
  ASSERT_EQ(pasteToTargetDirect(&name_, form_.Window(), TEXT("world"), 0), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kName), TEXT("world"));
  ASSERT_EQ(clickTarget(&name_, form_.Window()), KORVANE_OK);
  ASSERT_EQ(sendKey(0x23), KORVANE_OK);  // End
  delay(100);
  ASSERT_EQ(pasteToTargetDirect(&name_, form_.Window(), TEXT("wide"), 1), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kName), TEXT("worldwide"));
}

TEST_F(TextTest, ReadsTestsAndWaits) {
  ASSERT_EQ(pasteToTargetDirect(&name_, form_.Window(), TEXT("abc"), 0), KORVANE_OK);
  KorvaneChar* text = getTargetText(&name_, form_.Window());
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(Text(text), TEXT("abc"));
  freeTextResult(text);

  const HWND window = form_.Window();
  EXPECT_EQ(isTargetEmpty(&name_, window), 0);
  EXPECT_EQ(targetContainsText(&name_, window, TEXT("abc")), 1);
  EXPECT_EQ(targetContainsText(&name_, window, TEXT("ABC")), 0);
  EXPECT_EQ(targetContainsPartialText(&name_, window, TEXT("b")), 1);
  EXPECT_EQ(targetContainsPartialText(&name_, window, TEXT("xabcx")), 1);
  EXPECT_EQ(targetContainsPartialText(&name_, window, TEXT("abd")), 0);
  EXPECT_EQ(waitForFieldChange(&name_, window, TEXT("abc"), 30), KORVANE_FAILED);

  order_form::SetTextAfter(150, order_form::kName, TEXT("changed by another program"));
  EXPECT_EQ(waitForFieldChange(&name_, window, TEXT("abc"), 5000), KORVANE_OK);
  EXPECT_EQ(waitForTargetContainsPartialText(&name_, window, TEXT("another"), 1000), KORVANE_OK);
  order_form::SetTextAfter(150, order_form::kName, TEXT("  "));
  EXPECT_EQ(waitForFieldEmpty(&name_, window, 5000), KORVANE_OK);
  order_form::SetTextAfter(150, order_form::kName, TEXT("done"));
  EXPECT_EQ(waitForTargetContainsText(&name_, window, TEXT("done"), 5000), KORVANE_OK);
}

TEST_F(TextTest, TypesASentence) {
  ASSERT_EQ(clickTarget(&name_, form_.Window()), KORVANE_OK);
  delay(100);
  // The character in the middle has no key on the layout and is left out.
  ASSERT_EQ(sendKeySequence(TEXT("Hello, World! It's \x4E2D 5."), 2), KORVANE_OK);
  EXPECT_EQ(waitForTargetContainsText(&name_, form_.Window(), TEXT("Hello, World! It's  5."), 2000), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kName), TEXT("Hello, World! It's  5."));
}

TEST_F(TextTest, ShortcutsSelectAndPaste) {
  ASSERT_EQ(pasteToTargetDirect(&name_, form_.Window(), TEXT("old"), 0), KORVANE_OK);
  ASSERT_EQ(clickTarget(&name_, form_.Window()), KORVANE_OK);
  ASSERT_EQ(setClipboardText(TEXT("new")), KORVANE_OK);
  delay(100);
  ASSERT_EQ(sendKey(KORVANE_KEY_CTRL_A), KORVANE_OK);
  ASSERT_EQ(pasteToTargetSimple(&name_, form_.Window()), KORVANE_OK);
  EXPECT_EQ(waitForTargetContainsText(&name_, form_.Window(), TEXT("new"), 2000), KORVANE_OK);
}

TEST_F(TextTest, PicksTheWindowUnderAClickThatReachesNothing) {
  const Point submit = form_.CentreOf(order_form::kSubmit);
  order_form::ClickAfter(400, submit);
  EXPECT_EQ(findWindowByClick(), form_.Window());
  delay(200);
  EXPECT_EQ(form_.TextOf(order_form::kStatus), TEXT("Ready"));

  WindowInfo info{};
  ASSERT_EQ(getWindowInfo(form_.Window(), &info), KORVANE_OK);
  EXPECT_EQ(Text(info.title), order_form::kTitle);
  EXPECT_EQ(Text(info.processName), TEXT("order_form.exe"));
  EXPECT_EQ(info.window, form_.Window());
}

TEST_F(TextTest, ActionLinesStandInTheSameLog) {
  logAction(TEXT("paste name"), KORVANE_OK, 12);
  logActionWithTimestamp(TEXT("paste name"), KORVANE_FAILED, 0, 1000);
  EXPECT_THAT(Log(), HasSubstr(" - paste name | Result: 0 | Duration: 12ms\r\n"));
  EXPECT_THAT(Log(), HasSubstr("1970-01-01 00:00:01.000 - paste name | Result: -3 | Duration: 0ms\r\n"));
}

}  // namespace
}  // namespace scenarios
