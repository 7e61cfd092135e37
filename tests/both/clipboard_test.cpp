// What another program finds on the clipboard.
#include "tests/both/scenario.h"

namespace scenarios {
namespace {

using ::testing::HasSubstr;

class ClipboardTest : public ScenarioTest {};

TEST_F(ClipboardTest, AnotherProgramReadsTextAndHtmlByteForByte) {
  const Text text = TEXT("Bestellung \x00FC\x4E2D\xD83D\xDE00\r\nzweite Zeile");
  ASSERT_EQ(setClipboardTextAndHtml(text.c_str(), "<b>\xC3\xBC</b>"), KORVANE_OK);
  const order_form::Clipboard seen = order_form::ReadClipboard();
  EXPECT_EQ(seen.text, text);
  const std::string html =
      "Version:0.9\r\nStartHTML:0000000105\r\nEndHTML:0000000182\r\nStartFragment:0000000139\r\n"
      "EndFragment:0000000148\r\n<html><body>\r\n<!--StartFragment--><b>\xC3\xBC</b><!--EndFragment-->\r\n"
      "</body></html>";
  EXPECT_EQ(seen.html.substr(0, html.size() + 1), html + '\0');

  ASSERT_EQ(setClipboardText(TEXT("")), KORVANE_OK);
  EXPECT_EQ(order_form::ReadClipboard().text, TEXT(""));
}

TEST_F(ClipboardTest, AHeldClipboardFailsAfterThreeAttemptsAndKeepsItsContent) {
  ASSERT_EQ(setClipboardText(TEXT("before")), KORVANE_OK);
  order_form::HoldClipboard(700);
  EXPECT_EQ(setClipboardText(TEXT("after")), KORVANE_FAILED);
  EXPECT_THAT(Log(), HasSubstr("ERROR setClipboardText Code:-3 Details:Failed to open clipboard after retries"));
  delay(1200);
  EXPECT_EQ(order_form::ReadClipboard().text, TEXT("before"));
}

TEST_F(ClipboardTest, TheFocusedFieldIsComparedByCopyingIt) {
  const TargetRecord name = Capture(order_form::kName, KORVANE_METHOD_AUTOMATION_ID);
  ASSERT_EQ(setClipboardText(TEXT("Order #42")), KORVANE_OK);
  ASSERT_EQ(pasteToTargetWithVerifyEx(&name, form_.Window(), 1000), KORVANE_OK);
  EXPECT_EQ(verifySimple(TEXT("order 42"), form_.Window()), KORVANE_OK);
  EXPECT_EQ(verifySimple(TEXT("order 43"), form_.Window()), KORVANE_NOT_FOUND);
  EXPECT_THAT(Log(), HasSubstr("  Hex at diff pos 6: clip=0x0032 exp=0x0033\r\n  Match: FALSE\r\n"));
}

}  // namespace
}  // namespace scenarios
