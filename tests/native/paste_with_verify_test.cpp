// The verified paste: its whole log, its times and polls, and every way in which it can end.
#include "tests/native/fixture.h"

namespace tests {
namespace {

const std::string kTag = "[pasteToTargetWithVerifyEx] ";
constexpr auto kReadValue = "IUIAutomationElement::GetCurrentPropertyValue";

class PasteWithVerifyTest : public FieldTest {
 protected:
  void SetUp() override {
    FieldTest::SetUp();
    TheDesktop().Clipboard().Set(u"Hello");
  }

  int Paste(int timeoutMs = 0) {
    return pasteToTargetWithVerifyEx(&target_, window_, timeoutMs);
  }

  // The paste's own lines since the last call.
  Lines PasteLog() {
    return WithPrefix(Log(), kTag);
  }

  // What every paste writes before its verification begins.
  Lines Opening(const std::string& shownText, int timeoutMs) const {
    return {"Function entered",
            "clickTarget succeeded",
            "Using target window handle: " + Decimal(window_),
            "Clipboard text retrieved: \"" + shownText + "\"",
            "SendInput succeeded - Ctrl+V sent",
            "Starting verification loop (" + std::to_string(timeoutMs) + "ms timeout)"};
  }

  void HideValue() {
    TheDesktop().Elements().SetNullString(field_, UIA_ValueValuePropertyId);
  }
  void ShowLater(double milliseconds, const char16_t* value) {
    TheDesktop().Clock().After(
        milliseconds, [this, value] { TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, value); });
  }
};

TEST_F(PasteWithVerifyTest, WholeLogOfASuccess) {
  EXPECT_EQ(pasteToTargetWithVerify(&target_, window_), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"Hello");
  EXPECT_EQ(Log(), (Lines{kTag + "Function entered"} + kFoundById +
                    Lines{kTag + "clickTarget succeeded", kTag + "Using target window handle: " + Decimal(window_),
                          kTag + "Clipboard text retrieved: \"Hello\"", kTag + "SendInput succeeded - Ctrl+V sent",
                          kTag + "Starting verification loop (150ms timeout)"} +
                    kFoundById +
                    Lines{kTag + "Expected text length: 5, partial start index: 2",
                          kTag + "VERIFICATION SUCCESS after 0ms, polls: 1"}));
}

TEST_F(PasteWithVerifyTest, WhatCountsAsShown) {
  struct Case {
    standin::Text clipboard;
    standin::Text value;  // what the field shows
    bool shown;
  };
  // clang-format off
  const Case cases[] = {
      // the second half with whatever around it, and any piece
      {u"Hello", u"Hello", true}, {u"Hello", u"llo", true}, {u"Hello", u">> Hello <<", true},
      {u"Hello", u"xlloy", true}, {u"Hello", u"He", true}, {u"", u"anything", true},
      {u"Hello", u"lo!", false}, {u"Hello", u"HELLO", false}, {u"Hello", u"Hell0", false},
      {u"1234567", u"x4567", true}, {u"1234567", u"x567", false}, {u"\xD83D\xDE00", u"\xDE00", true},
      {u"\xD83D", u"\xDE00", false}, {u"e\u0301", u"\u00E9", false},
  };
  // clang-format on
  for (const auto& [clipboard, value, shown] : cases) {
    SCOPED_TRACE(testing::PrintToString(clipboard) + " as " + testing::PrintToString(value));
    TheDesktop().Clipboard().Set(clipboard);
    TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, value);
    EXPECT_EQ(Paste(2), shown ? 0 : -3);
    EXPECT_EQ(PasteLog().back(),
              shown ? "VERIFICATION SUCCESS after 0ms, polls: 1" : "VERIFICATION FAILED after 2ms, total polls: 1");
  }
}

TEST_F(PasteWithVerifyTest, FieldThatReformats) {
  TheDesktop().Controls().OnEdited(edit_, [](HWND edit) {
    if (TheDesktop().Controls().TextOf(edit) == u"Hello") {
      TheDesktop().Controls().SetText(edit, u"[Hello]");
    }
  });
  EXPECT_EQ(Paste(), KORVANE_OK);
  EXPECT_EQ(TheDesktop().Controls().TextOf(edit_), u"[Hello]");
}

TEST_F(PasteWithVerifyTest, LongTextIsShownInPartAndVerifiedWhole) {
  const standin::Text head(100, u'h');
  const standin::Text text = head + standin::Text(150, u't');
  const std::string shown = std::string(100, 'h');
  TheDesktop().Clipboard().Set(text);
  EXPECT_EQ(Paste(), KORVANE_OK);
  EXPECT_EQ(PasteLog(), (Opening(shown + "...", 150) + Lines{"Expected text length: 250, partial start index: 125",
                                                             "VERIFICATION SUCCESS after 0ms, polls: 1"}));
  TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, standin::Text(124, u't') + u"...");
  EXPECT_EQ(Paste(2), KORVANE_FAILED) << "125 units of the end are looked for";
  PasteLog();

  TheDesktop().Clipboard().Set(head);
  TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, head);
  EXPECT_EQ(Paste(), KORVANE_OK);
  EXPECT_EQ(PasteLog()[3], "Clipboard text retrieved: \"" + shown + "\"");
}

TEST_F(PasteWithVerifyTest, PollsEveryTwoMillisecondsUntilTheLimit) {
  struct Case {
    int timeoutMs;
    double shownAfterMs;  // 0: never
    int code;
    double sleptMs;
    std::uint64_t polls;
    int limit;  // as logged
  };
  const Case cases[] = {
      {.timeoutMs = 0, .shownAfterMs = 0, .code = KORVANE_FAILED, .sleptMs = 150, .polls = 75, .limit = 150},
      {.timeoutMs = -7, .shownAfterMs = 0, .code = KORVANE_FAILED, .sleptMs = 150, .polls = 75, .limit = 150},
      {.timeoutMs = 40, .shownAfterMs = 0, .code = KORVANE_FAILED, .sleptMs = 40, .polls = 20, .limit = 40},
      {.timeoutMs = 41, .shownAfterMs = 0, .code = KORVANE_FAILED, .sleptMs = 42, .polls = 21, .limit = 41},
      {.timeoutMs = 1, .shownAfterMs = 0, .code = KORVANE_FAILED, .sleptMs = 2, .polls = 1, .limit = 1},
      {.timeoutMs = 0, .shownAfterMs = 29, .code = KORVANE_OK, .sleptMs = 30, .polls = 16, .limit = 150},
      {.timeoutMs = 40, .shownAfterMs = 37, .code = KORVANE_OK, .sleptMs = 38, .polls = 20, .limit = 40},
      {.timeoutMs = 40, .shownAfterMs = 39, .code = KORVANE_FAILED, .sleptMs = 40, .polls = 20, .limit = 40},
  };
  for (const auto& [timeout, shownAfter, code, slept, polls, limit] : cases) {
    SCOPED_TRACE(std::to_string(timeout) + " " + std::to_string(shownAfter));
    TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, u"other");
    if (shownAfter > 0) {
      ShowLater(shownAfter, u"Hello");
    }
    clearElementCache();
    const auto reads = TheDesktop().Calls().Count(kReadValue);
    const auto searches = TheDesktop().Calls().Count("IUIAutomation::ElementFromHandle");
    EXPECT_EQ(Elapsed([&, timeout = timeout, code = code] { EXPECT_EQ(Paste(timeout), code); }), slept);
    EXPECT_EQ(TheDesktop().Calls().Count(kReadValue) - reads, polls) << "one read each";
    EXPECT_EQ(TheDesktop().Calls().Count("IUIAutomation::ElementFromHandle") - searches, 2U) << "the click's, and one";
    const std::string times = " after " + std::to_string(static_cast<int>(slept)) + "ms, ";
    EXPECT_EQ(PasteLog(), (Opening("Hello", limit) +
                           Lines{"Expected text length: 5, partial start index: 2",
                                 code == 0 ? "VERIFICATION SUCCESS" + times + "polls: " + std::to_string(polls)
                                           : "VERIFICATION FAILED" + times + "total polls: " + std::to_string(polls)}));
  }
}

TEST_F(PasteWithVerifyTest, TickCounterMayWrap) {
  TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, u"other");
  TheDesktop().Clock().SetTickCount(0xFFFFFFFF - 60);
  EXPECT_EQ(Elapsed([&] { EXPECT_EQ(Paste(), KORVANE_FAILED); }), 150);
  EXPECT_EQ(PasteLog().back(), "VERIFICATION FAILED after 150ms, total polls: 75");
}

TEST_F(PasteWithVerifyTest, PollsWithoutAValueAreLoggedSparingly) {
  const std::function<void()> absences[] = {
      [this] { HideValue(); },
      [this] { TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, u""); },
      [this] { TheDesktop().Elements().SetUnsupported(field_, UIA_ValueValuePropertyId); },
      [this] { TheDesktop().Elements().FailProperty(field_, UIA_ValueValuePropertyId); },
  };
  for (const auto& makeAbsent : absences) {
    makeAbsent();
    EXPECT_EQ(Paste(44), KORVANE_FAILED);
    EXPECT_EQ(PasteLog(),
              (Opening("Hello", 44) +
               Lines{"Expected text length: 5, partial start index: 2", "getInputTargetText returned null (poll #1)",
                     "getInputTargetText returned null (poll #10)", "getInputTargetText returned null (poll #20)",
                     "VERIFICATION FAILED after 44ms, total polls: 22"}));
  }
  TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, u"other");
  TheDesktop().Calls().After(kReadValue, 4, [this] { TheDesktop().Windows().Destroy(edit_); });
  EXPECT_EQ(Paste(24), KORVANE_FAILED);
  EXPECT_THAT(PasteLog(), testing::IsSupersetOf({"getInputTargetText returned null (poll #10)",
                                                 "VERIFICATION FAILED after 24ms, total polls: 12"}));
}

TEST_F(PasteWithVerifyTest, TargetWindowStandsIn) {
  EXPECT_EQ(pasteToTargetWithVerify(&target_, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{kTag + "Function entered", "ERROR clickTarget Code:-2 Details:No target window specified",
                          kTag + "clickTarget failed with code: -2"}));
  setTargetWindow(window_);
  EXPECT_EQ(pasteToTargetWithVerify(&target_, nullptr), KORVANE_OK);
  EXPECT_EQ(PasteLog()[2], "Using target window handle: " + Decimal(window_));

  TheDesktop().Calls().After("SetCursorPos", 1, [] { setTargetWindow(nullptr); });
  EXPECT_EQ(pasteToTargetWithVerify(&target_, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(PasteLog(), (Lines{"Function entered", "clickTarget succeeded", "ERROR: No target window specified"}));
}

TEST_F(PasteWithVerifyTest, ClickThatFails) {
  EXPECT_EQ(pasteToTargetWithVerify(nullptr, window_), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), (Lines{kTag + "Function entered",
                          "ERROR pasteToTargetWithVerifyEx Code:-2 Details:Invalid target parameter"}));
  const TargetRecord nobody = EmptyRecord();
  EXPECT_EQ(pasteToTargetWithVerify(&nobody, window_), KORVANE_NOT_FOUND);
  EXPECT_EQ(PasteLog().back(), "clickTarget failed with code: -1");
  TheDesktop().Input().Block(0);
  EXPECT_EQ(Paste(), KORVANE_FAILED);
  EXPECT_EQ(PasteLog().back(), "clickTarget failed with code: -3");
  EXPECT_EQ(TheDesktop().Calls().Count("OpenClipboard"), 0U);
}

TEST_F(PasteWithVerifyTest, ClipboardWithoutText) {
  const std::string first = "First clipboard check failed, waiting 4ms and retrying...";
  struct Case {
    const char* name;
    std::function<void()> arrange;
    int code;
    double sleptMs;
    std::uint64_t opens;
  };
  auto& desktop = TheDesktop();
  const Case cases[] = {
      {.name = "held",
       .arrange = [&] { desktop.Clipboard().Hold(-1); },
       .code = KORVANE_FAILED,
       .sleptMs = 20,
       .opens = 6},
      {.name = "held for 10 ms",
       .arrange = [&] { desktop.Clipboard().Hold(10); },
       .code = KORVANE_OK,
       .sleptMs = 12,
       .opens = 4},
      {.name = "first lock fails",
       .arrange = [&] { desktop.Faults().FailNth("GlobalLock", 1); },
       .code = KORVANE_OK,
       .sleptMs = 4,
       .opens = 2},
      {.name = "first data fails",
       .arrange = [&] { desktop.Faults().FailNth("GetClipboardData", 1); },
       .code = KORVANE_OK,
       .sleptMs = 4,
       .opens = 2},
      {.name = "first memory fails",
       .arrange = [&] { desktop.Faults().FailNth("CoTaskMemAlloc", 1); },
       .code = KORVANE_OK,
       .sleptMs = 4,
       .opens = 2},
      {.name = "memory fails",
       .arrange = [&] { desktop.Faults().FailFromNth("CoTaskMemAlloc", 1); },
       .code = KORVANE_FAILED,
       .sleptMs = 4,
       .opens = 2},
      {.name = "empty",
       .arrange = [&] { desktop.Clipboard().Clear(); },
       .code = KORVANE_FAILED,
       .sleptMs = 4,
       .opens = 2},
  };
  for (const auto& [name, arrange, code, slept, opens] : cases) {
    SCOPED_TRACE(name);
    desktop.Controls().SetText(edit_, u"");
    desktop.Clipboard().Set(u"Hello");
    const auto opened = desktop.Calls().Count("OpenClipboard");
    arrange();
    EXPECT_EQ(Elapsed([&, code = code] { EXPECT_EQ(Paste(), code); }), slept);
    desktop.Faults().Stop();
    desktop.Clipboard().Release();
    EXPECT_EQ(desktop.Calls().Count("OpenClipboard") - opened, opens);
    EXPECT_EQ(desktop.Controls().TextOf(edit_), code == 0 ? u"Hello" : u"") << "keys are typed only for a text";
    const Lines log = PasteLog();
    ASSERT_GE(log.size(), 5U);
    EXPECT_EQ(log[3], first);
    EXPECT_EQ(log[4], code == 0 ? "Clipboard text available after retry" : "ERROR: No text in clipboard after retry");
  }
}

TEST_F(PasteWithVerifyTest, KeysThatAreRefused) {
  for (const std::uint32_t accepted : {0U, 1U, 2U, 3U}) {
    SCOPED_TRACE(accepted);
    TheDesktop().Input().Accept();
    clearElementCache();  // so that the click goes through SendInput
    TheDesktop().Calls().After("SendInput", 1, [accepted] { TheDesktop().Input().Block(accepted); });
    EXPECT_EQ(Paste(), KORVANE_FAILED);
    EXPECT_EQ(PasteLog().back(), "SendInput failed - expected 4, got: " + std::to_string(accepted));
    EXPECT_FALSE(TheDesktop().Input().IsDown(VK_CONTROL));
    EXPECT_FALSE(TheDesktop().Input().IsDown('V'));
  }
}

TEST_F(PasteWithVerifyTest, ElementGoneAfterTheKeys) {
  TheDesktop().Calls().After("SendInput", 2, [this] { TheDesktop().Windows().Destroy(edit_); });
  EXPECT_EQ(Paste(), KORVANE_NOT_FOUND);
  EXPECT_EQ(PasteLog(), (Opening("Hello", 150) + Lines{"ERROR: Could not find target element for verification"}));
}

TEST_F(PasteWithVerifyTest, EscapeEndsThePastingSilently) {
  TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, u"other");
  startCancelMonitor();
  TheDesktop().User().HoldEscape(35, 20);
  EXPECT_EQ(Elapsed([&] { EXPECT_EQ(Paste(), KORVANE_CANCELLED); }), 40)
      << "the monitor looks every 10 ms, the paste every 2 ms";
  EXPECT_EQ(PasteLog(), (Opening("Hello", 150) + Lines{"Expected text length: 5, partial start index: 2"}));

  const auto opened = TheDesktop().Calls().Count("OpenClipboard");
  EXPECT_EQ(Paste(), KORVANE_CANCELLED);
  EXPECT_EQ(Log(), (Lines{kTag + "Function entered", kTag + "clickTarget failed with code: -4"}));
  EXPECT_EQ(TheDesktop().Calls().Count("OpenClipboard"), opened);
}

}  // namespace
}  // namespace tests
