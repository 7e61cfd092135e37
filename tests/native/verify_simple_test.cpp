// Comparing the focused field by way of the clipboard, with the debug block byte for byte.
#include "tests/native/fixture.h"

namespace tests {
namespace {

class VerifySimpleTest : public FieldTest {
 protected:
  void SetUp() override {
    FieldTest::SetUp();
    TheDesktop().User().Click(130, 130);
    ASSERT_EQ(TheDesktop().Windows().Focus(), edit_);
    TheDesktop().Clipboard().Set(u"before");
  }

  int Verify(standin::TextView shown, const char16_t* expected) {
    TheDesktop().Controls().SetText(edit_, shown);
    return verifySimple(expected, window_);
  }

  // Everything written since the last call, the leading stamp left out.
  std::string Block() {
    const std::string all = LogBytes();
    const std::string block = all.substr(std::exchange(read_, all.size()));
    return WithoutStamp(block);
  }

 private:
  std::size_t read_ = 0;
};

TEST_F(VerifySimpleTest, Matches) {
  struct Case {
    const char16_t* shown;
    const char16_t* expected;
    int code;
  };
  // clang-format off
  const Case cases[] = {
      {u"hello,world!", u"Hello, World!", 0}, {u"Hello, World!\r\n", u"Hello, World!", 0},
      {u"order 42", u"Order #42", 0}, {u"xxabcxx", u"abc", 0}, {u"abc", u"xxabcxx", 0}, {u"anything", u"  ", 0},
      {u"anything", u"", 0}, {u"#*()", u"text", 0},
      {u"a\u2013b\u4E2D\xD83D", u"ab", 0},  // beyond U+00FF nothing counts
      {u"3\u00D74", u"34", -1},             // from U+00C0 on everything does
      {u"a.b", u"ab", -1}, {u"a-b", u"ab", -1}, {u"abd", u"abc", -1}, {u"1", u"2", -1},
  };
  // clang-format on
  for (const auto& [shown, expected, code] : cases) {
    SCOPED_TRACE(testing::PrintToString(standin::Text(shown)));
    EXPECT_EQ(Verify(shown, expected), code);
    const std::string block = Block();
    EXPECT_TRUE(block.ends_with(code == 0 ? "\r\n  Match: TRUE\r\n" : "\r\n  Match: FALSE\r\n")) << block;
    EXPECT_EQ(TheDesktop().Clipboard().Text(), shown);
  }
}

// Each unit stands between two letters that are compared.
TEST_F(VerifySimpleTest, WhichUnitsCount) {
  const standin::TextView counting = u"azAZ09!,-.:?\u00C0\u00FF";
  const standin::TextView ignored = u"`{@[/; \"\t\u00BF\u0100\u2019";
  for (const bool counts : {true, false}) {
    for (const char16_t unit : counts ? counting : ignored) {
      SCOPED_TRACE(static_cast<unsigned>(unit));
      EXPECT_EQ(Verify(standin::Text(u"x") + unit + u"y", u"xy"), counts ? KORVANE_NOT_FOUND : KORVANE_OK);
    }
  }
}

// A long text is worked on in pieces: nothing is lost, repeated or joined where one begins.
TEST_F(VerifySimpleTest, LongTexts) {
  standin::Text shown;
  standin::Text normalized;
  while (shown.size() < 20'000) {
    const auto letter = static_cast<char16_t>(u'a' + shown.size() % 23);
    shown += shown.size() % 5 == 0 ? standin::Text(u" \r\n") + letter : standin::Text(1, letter);
    normalized += letter;
  }
  EXPECT_EQ(Verify(shown, normalized.c_str()), 0);
  EXPECT_NE(Block().find("identical!"), std::string::npos);
  for (const std::size_t at : {1'000U, 4'000U, 7'900U}) {
    standin::Text other = normalized;
    other[at] = u'z';
    EXPECT_EQ(Verify(shown, other.c_str()), -1);
    EXPECT_NE(Block().find("First difference at position: " + std::to_string(at) + "\r\n"), std::string::npos);
  }
}

TEST_F(VerifySimpleTest, BlocksByteForByte) {
  const std::string x150(150, 'x');
  const std::string x100 = x150.substr(0, 100);
  const standin::Text wideX150(150, u'x');
  struct Case {
    standin::Text shown;
    standin::Text expected;
    std::string block;
  };
  const Case cases[] = {
      {u"Abc\r\n \"\u4E2D\u00E9", u"ABC\u00E9",
       "  Clipboard: \"Abc\r\r\n \"\\u4e2d\xE9\"\r\n"
       "  Expected: \"ABC\xE9\"\r\n"
       "  Lengths: clipboard=9, expected=4\r\n"
       "  Normalized lengths: 4 vs 4\r\n"
       "  No character differences found - strings are identical!\r\n"
       "  Match: TRUE\r\n"},
      {u"ab cd", u"abxd",
       "  Clipboard: \"ab cd\"\r\n"
       "  Expected: \"abxd\"\r\n"
       "  Lengths: clipboard=5, expected=4\r\n"
       "  Normalized lengths: 4 vs 4\r\n"
       "  First difference at position: 2\r\n"
       "  Context (pos 0-4):\r\n"
       "    Clip: \"abcd\"\r\n"
       "    Exp:  \"abxd\"\r\n"
       "  Hex at diff pos 2: clip=0x0063 exp=0x0078\r\n"
       "  Match: FALSE\r\n"},
      {u"abc", u"abcd",
       "  Clipboard: \"abc\"\r\n"
       "  Expected: \"abcd\"\r\n"
       "  Lengths: clipboard=3, expected=4\r\n"
       "  Normalized lengths: 3 vs 4\r\n"
       "  First difference at position: 3\r\n"
       "  Context (pos 0-3):\r\n"
       "    Clip: \"abc\"\r\n"
       "    Exp:  \"abc\"\r\n"
       "  Match: TRUE\r\n"},
      {u"abcd", u"abc",
       "  Clipboard: \"abcd\"\r\n"
       "  Expected: \"abc\"\r\n"
       "  Lengths: clipboard=4, expected=3\r\n"
       "  Normalized lengths: 4 vs 3\r\n"
       "  First difference at position: 3\r\n"
       "  Context (pos 0-3):\r\n"
       "    Clip: \"abc\"\r\n"
       "    Exp:  \"abc\"\r\n"
       "  Match: TRUE\r\n"},
      // The context reaches twenty units to both sides, the preview a hundred units far.
      {wideX150 + u"0123456789abcdefghijk" + wideX150, wideX150 + u"\u00FF123456789abcdefghijk",
       "  Clipboard: \"" + x100 + "...\"\r\n" + "  Expected: \"" + x100 + "...\"\r\n" +
           "  Lengths: clipboard=321, expected=171\r\n"
           "  Normalized lengths: 321 vs 171\r\n"
           "  First difference at position: 150\r\n"
           "  Context (pos 130-170):\r\n"
           "    Clip: \"" +
           x150.substr(0, 20) + "0123456789abcdefghij\"\r\n" + "    Exp:  \"" + x150.substr(0, 20) +
           "\xFF"
           "123456789abcdefghij\"\r\n" +
           "  Hex at diff pos 150: clip=0x0030 exp=0x00ff\r\n"
           "  Match: FALSE\r\n"},
      {wideX150.substr(0, 100), wideX150.substr(0, 101),
       "  Clipboard: \"" + x100 + "\"\r\n" + "  Expected: \"" + x100 + "...\"\r\n" +
           "  Lengths: clipboard=100, expected=101\r\n"
           "  Normalized lengths: 100 vs 101\r\n"
           "  First difference at position: 100\r\n"
           "  Context (pos 80-100):\r\n"
           "    Clip: \"" +
           x150.substr(0, 20) + "\"\r\n" + "    Exp:  \"" + x150.substr(0, 20) + "\"\r\n" + "  Match: TRUE\r\n"},
  };
  for (const auto& [shown, expected, block] : cases) {
    Verify(shown, expected.c_str());
    EXPECT_EQ(Block(), "VERIFY_SIMPLE_DEBUG:\r\n" + block);
  }
}

TEST_F(VerifySimpleTest, OrderOfCallsAndTime) {
  TheDesktop().Controls().SetText(edit_, u"text");
  Lines calls;
  EXPECT_EQ(Elapsed([&] { calls = CallsOf([&] { EXPECT_EQ(verifySimple(u"text", window_), KORVANE_OK); }); }), 150);
  EXPECT_EQ(calls,
            (Lines{"OpenClipboard", "EmptyClipboard", "CloseClipboard", "SendInput", "Sleep", "SendInput", "Sleep",
                   "OpenClipboard", "GetClipboardData", "GlobalLock", "GlobalUnlock", "CloseClipboard"}));
  std::vector<std::pair<WORD, DWORD>> sent;
  for (const auto& batch : TheDesktop().Input().Batches()) {
    EXPECT_EQ(batch.size(), 4U);
    for (const INPUT& record : batch) {
      sent.emplace_back(record.ki.wVk, record.ki.dwFlags);
    }
  }
  EXPECT_EQ(sent, (std::vector<std::pair<WORD, DWORD>>{
                      {0x11, 0}, {0x41, 0}, {0x41, 2}, {0x11, 2}, {0x11, 0}, {0x43, 0}, {0x43, 2}, {0x11, 2}}));
}

TEST_F(VerifySimpleTest, FailuresAreSilentAndTriedOnce) {
  struct Case {
    const char* call;
    std::uint64_t nth;
    int code;
    std::optional<standin::Text> left;
    double sleptMs;
  };
  const Case cases[] = {
      {.call = "OpenClipboard", .nth = 1, .code = KORVANE_FAILED, .left = u"before", .sleptMs = 0},
      {.call = "EmptyClipboard", .nth = 1, .code = KORVANE_OK, .left = u"text", .sleptMs = 150},
      {.call = "SendInput", .nth = 1, .code = KORVANE_FAILED, .left = std::nullopt, .sleptMs = 0},
      {.call = "SendInput", .nth = 2, .code = KORVANE_FAILED, .left = std::nullopt, .sleptMs = 50},
      {.call = "OpenClipboard", .nth = 2, .code = KORVANE_FAILED, .left = u"text", .sleptMs = 150},
      {.call = "GetClipboardData", .nth = 1, .code = KORVANE_FAILED, .left = u"text", .sleptMs = 150},
      {.call = "GlobalLock", .nth = 1, .code = KORVANE_FAILED, .left = u"text", .sleptMs = 150},
  };
  TheDesktop().Controls().SetText(edit_, u"text");
  for (const auto& [call, nth, code, left, slept] : cases) {
    SCOPED_TRACE(std::string(call) + " " + std::to_string(nth));
    TheDesktop().Clipboard().Set(u"before");
    Block();
    TheDesktop().Faults().FailNth(call, nth);
    EXPECT_EQ(Elapsed([&, code = code] { EXPECT_EQ(verifySimple(u"text", window_), code); }), slept);
    TheDesktop().Faults().Stop();
    EXPECT_EQ(Block().empty(), code != 0);
    EXPECT_EQ(TheDesktop().Clipboard().Text(), left);
  }
  for (const std::uint32_t accepted : {1U, 3U}) {
    TheDesktop().Input().Block(accepted);
    EXPECT_EQ(verifySimple(u"text", window_), KORVANE_FAILED);
  }
  TheDesktop().Input().Accept();
  TheDesktop().Controls().SetText(edit_, u"");
  EXPECT_EQ(verifySimple(u"text", window_), KORVANE_FAILED) << "an empty field copies nothing";
}

TEST_F(VerifySimpleTest, Arguments) {
  TheDesktop().Controls().SetText(edit_, u"text");
  const Lines calls = CallsOf([&] {
    EXPECT_EQ(verifySimple(nullptr, window_), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(verifySimple(u"text", nullptr), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(verifySimple(nullptr, nullptr), KORVANE_INVALID_ARGUMENT);
  });
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_EQ(Log(), (Lines{"ERROR verifySimple Code:-2 Details:Invalid expectedText parameter",
                          "ERROR verifySimple Code:-2 Details:Invalid expectedText parameter"}));
  setTargetWindow(window_);
  EXPECT_EQ(verifySimple(u"text", nullptr), KORVANE_OK);
}

TEST_F(VerifySimpleTest, ClosedLogChangesNothing) {
  cleanupAutomation();
  EXPECT_EQ(Verify(u"text", u"TEXT"), KORVANE_OK);
  EXPECT_EQ(Verify(u"text", u"other"), KORVANE_NOT_FOUND);
  EXPECT_EQ(Block(), "");
}

}  // namespace
}  // namespace tests
