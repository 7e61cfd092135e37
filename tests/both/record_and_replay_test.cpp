// A field is recorded, the program is closed and opened elsewhere, and the record still leads to the field.
#include "tests/both/scenario.h"

namespace scenarios {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct Identification {
  int method;
  const char* line;
};

class IdentificationTest : public ScenarioTest, public ::testing::WithParamInterface<Identification> {};

TEST_P(IdentificationTest, FindsTheFieldAfterTheProgramMoved) {
  const auto& [method, line] = GetParam();
  TargetRecord street = Capture(order_form::kStreet, method);
  EXPECT_NE(street.hwnd, nullptr);
  EXPECT_EQ(Text(street.automationId), TEXT("102"));
  ASSERT_EQ(street.pathLength, 3);
  EXPECT_EQ(Text(street.classNames[0]), order_form::kWindowClass);
  EXPECT_EQ(Text(street.classNames[1]), order_form::kPanelClass);
  EXPECT_EQ(Text(street.classNames[2]), TEXT("Edit"));
  EXPECT_EQ(street.childIndices[2], 2);

  Reopen();
  if (method == KORVANE_METHOD_UNDECIDED) {
    // A point does not move with its window: the host takes it anew.
    const Point now = form_.CentreOf(order_form::kStreet);
    street.x = now.x;
    street.y = now.y;
  }
  EXPECT_EQ(verifyTarget(&street, form_.Window()), KORVANE_OK);
  EXPECT_THAT(Log(), HasSubstr(line));
  clearElementCache();

  ASSERT_EQ(setClipboardText(TEXT("12 Mill Lane")), KORVANE_OK);
  EXPECT_EQ(pasteToTargetWithVerifyEx(&street, form_.Window(), 1000), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kStreet), TEXT("12 Mill Lane"));
  EXPECT_EQ(form_.TextOf(order_form::kName), TEXT(""));
}

INSTANTIATE_TEST_SUITE_P(
    All, IdentificationTest,
    ::testing::Values(Identification{KORVANE_METHOD_AUTOMATION_ID, "SUCCESS with Method 0: AutomationId"},
                      Identification{KORVANE_METHOD_TREE_PATH, "SUCCESS with Method 3: Tree Path"},
                      Identification{KORVANE_METHOD_UNDECIDED, "SUCCESS with Method 2: Coordinates"}),
    [](const auto& test) {
      return test.param.method == KORVANE_METHOD_AUTOMATION_ID ? "AutomationId"
             : test.param.method == KORVANE_METHOD_TREE_PATH   ? "TreePath"
                                                               : "Point";
    });

class ReplayTest : public ScenarioTest {
 protected:
  // Pastes a text into a field and says what came of it.
  int Paste(ControlId control, const Text& text, int timeoutMs = 1000) {
    const TargetRecord record = Capture(control, KORVANE_METHOD_TREE_PATH);
    EXPECT_EQ(setClipboardText(text.c_str()), KORVANE_OK);
    return pasteToTargetWithVerifyEx(&record, form_.Window(), timeoutMs);
  }
};

TEST_F(ReplayTest, ARowWithoutAWindowIsFoundByItsPathAndItsPoint) {
  const Point row = form_.CentreOfRow(1);
  TargetRecord record{};
  ASSERT_EQ(captureTargetAtPoint(&record, row.x, row.y), KORVANE_OK);
  EXPECT_EQ(record.pathLength, 4);
  EXPECT_EQ(record.childIndices[3], 2);
  EXPECT_NE(record.hwnd, nullptr);
  EXPECT_EQ(verifyTarget(&record, form_.Window()), KORVANE_OK);
  record.identificationMethod = KORVANE_METHOD_TREE_PATH;
  KorvaneChar* text = getTargetText(&record, form_.Window());
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(Text(text), TEXT("Courier"));
  freeTextResult(text);
}

TEST_F(ReplayTest, TheCursorCaptureChoosesTheTreePath) {
  const Point point = form_.CentreOf(order_form::kCity);
  const TargetRecord city = Capture(order_form::kCity, KORVANE_METHOD_AUTOMATION_ID);
  // The click leaves the cursor on the field.
  ASSERT_EQ(clickTarget(&city, form_.Window()), KORVANE_OK);
  TargetRecord record{};
  ASSERT_EQ(captureTargetAtCursor(&record), KORVANE_OK);
  EXPECT_EQ(record.identificationMethod, KORVANE_METHOD_TREE_PATH);
  EXPECT_EQ(record.x, point.x);
  EXPECT_EQ(record.y, point.y);
  EXPECT_EQ(Text(record.automationId), TEXT("103"));
}

TEST_F(ReplayTest, ClicksAButtonAndThenItsRememberedPoint) {
  const TargetRecord submit = Capture(order_form::kSubmit, KORVANE_METHOD_AUTOMATION_ID);
  const TargetRecord status = Capture(order_form::kStatus, KORVANE_METHOD_AUTOMATION_ID);
  ASSERT_EQ(Paste(order_form::kName, TEXT("Ada")), KORVANE_OK);
  ASSERT_EQ(clickTarget(&submit, form_.Window()), KORVANE_OK);
  EXPECT_EQ(waitForTargetContainsText(&status, form_.Window(), TEXT("Submitted: Ada / "), 2000), KORVANE_OK);

  ASSERT_EQ(Paste(order_form::kArticle, TEXT("42")), KORVANE_OK);
  ASSERT_EQ(clickTarget(&submit, form_.Window()), KORVANE_OK);
  EXPECT_THAT(Log(), HasSubstr("[CACHE HIT] Clicked using cached coordinates"));
  EXPECT_EQ(waitForTargetContainsText(&status, form_.Window(), TEXT("Submitted: Ada / 42"), 2000), KORVANE_OK);
}

TEST_F(ReplayTest, PastesLongAndForeignTexts) {
  const Text texts[] = {Repeated(TEXT("0123456789"), 25), TEXT("Zażółć gęślą jaźń 中文 \xD83D\xDE00")};
  for (const Text& text : texts) {
    const TargetRecord clear = Capture(order_form::kClear, KORVANE_METHOD_AUTOMATION_ID);
    EXPECT_EQ(Paste(order_form::kName, text), KORVANE_OK);
    EXPECT_EQ(form_.TextOf(order_form::kName), text);
    EXPECT_EQ(clickTarget(&clear, form_.Window()), KORVANE_OK);
    const TargetRecord status = Capture(order_form::kStatus, KORVANE_METHOD_AUTOMATION_ID);
    EXPECT_EQ(waitForTargetContainsText(&status, form_.Window(), TEXT("Ready"), 2000), KORVANE_OK);
  }
  EXPECT_THAT(Log(), HasSubstr("0123456789...\""));
  EXPECT_THAT(Log(), HasSubstr("\\u4e2d\\u6587"));
}

TEST_F(ReplayTest, AFieldThatReformatsIsVerifiedByWhatItKeeps) {
  // Six digits are shown as "123 456", whose second half is not what was pasted; a text of one group is.
  EXPECT_EQ(Paste(order_form::kPhone, TEXT("123")), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kPhone), TEXT("123"));
  // Two clicks on one spot within half a second would be a double click, which selects what is there.
  delay(600);
  EXPECT_EQ(Paste(order_form::kPhone, TEXT("456"), 100), KORVANE_OK);
  EXPECT_EQ(form_.TextOf(order_form::kPhone), TEXT("123 456"));
}

TEST_F(ReplayTest, AFieldThatNeverShowsTheTextTimesOut) {
  EXPECT_EQ(Paste(order_form::kSecret, TEXT("hidden"), 100), KORVANE_FAILED);
  EXPECT_EQ(form_.TextOf(order_form::kSecret), TEXT("******"));
  EXPECT_THAT(Log(), HasSubstr("VERIFICATION FAILED after "));
}

TEST_F(ReplayTest, EscapeDuringAPasteCancelsItAndWhatFollows) {
  const TargetRecord submit = Capture(order_form::kSubmit, KORVANE_METHOD_AUTOMATION_ID);
  startCancelMonitor();
  order_form::PressEscapeAfter(300);
  EXPECT_EQ(Paste(order_form::kSecret, TEXT("hidden"), 5000), KORVANE_CANCELLED);
  EXPECT_EQ(isCancelled(), 1);
  EXPECT_EQ(clickTarget(&submit, form_.Window()), KORVANE_CANCELLED);
  stopCancelMonitor();
  EXPECT_EQ(isCancelled(), 1);
  delay(200);
  startCancelMonitor();
  EXPECT_EQ(isCancelled(), 0);
  EXPECT_EQ(clickTarget(&submit, form_.Window()), KORVANE_OK);
}

TEST_F(ReplayTest, ACoveredTargetIsNotClicked) {
  const TargetRecord submit = Capture(order_form::kSubmit, KORVANE_METHOD_UNDECIDED);
  const Point point = form_.CentreOf(order_form::kSubmit);
  {
    const order_form::Cover cover({point.x - 60, point.y - 40}, 120, 80);
    EXPECT_EQ(clickTarget(&submit, form_.Window()), KORVANE_NOT_FOUND);
  }
  EXPECT_THAT(Log(), HasSubstr("Method 2: Element not in target window, releasing"));
  EXPECT_EQ(form_.TextOf(order_form::kStatus), TEXT("Ready"));
}

}  // namespace
}  // namespace scenarios
