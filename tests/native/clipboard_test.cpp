// Writing the clipboard: blocks byte for byte, the order of calls, and what each failure reports and leaves behind.
#include "clipboard/clipboard.h"

#include "tests/native/fixture.h"

namespace tests {
namespace {

std::vector<std::uint8_t> BytesOf(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return {bytes, bytes + size};
}

std::vector<std::uint8_t> BlockOf(const WideText& text) {
  return BytesOf(text.c_str(), (text.size() + 1) * sizeof(WCHAR));
}

class ClipboardTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    TheDesktop().Clipboard().Set(u"before");
  }
};

TEST_F(ClipboardTest, TextIsWrittenUnitForUnit) {
  const WideText texts[] = {u"",
                            u"a",
                            u"\xD83D",
                            u"\xDE00\xD83D text",
                            u"Gr\u00F6\u00DFe\r\n\t\u4E2D",
                            u"\xFFFF\x01",
                            WideText(100000, u'x')};
  for (const WideText& text : texts) {
    SCOPED_TRACE(testing::PrintToString(text.substr(0, 20)));
    EXPECT_EQ(setClipboardText(text.c_str()), KORVANE_OK);
    EXPECT_EQ(TheDesktop().Clipboard().Bytes("CF_UNICODETEXT"), BlockOf(text));
    EXPECT_THAT(TheDesktop().Clipboard().Formats(), ElementsAre("CF_UNICODETEXT"));
  }
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ClipboardTest, HtmlStandsBesideTheText) {
  const std::pair<const char*, std::size_t> fragments[] = {{"", 174}, {"\xC3\xA9", 176}, {"<b>9</b>!", 183}};
  for (const auto& [fragment, size] : fragments) {
    EXPECT_EQ(setClipboardTextAndHtml(u"text", fragment), KORVANE_OK);
    EXPECT_THAT(TheDesktop().Clipboard().Formats(), ElementsAre("CF_UNICODETEXT", "HTML Format"));
    EXPECT_EQ(TheDesktop().Clipboard().Bytes("CF_UNICODETEXT"), BlockOf(u"text"));
    const auto block = TheDesktop().Clipboard().Bytes("HTML Format");
    ASSERT_EQ(block.size(), size);
    EXPECT_EQ(block.back(), 0);
    EXPECT_EQ(std::string(block.begin() + 139, block.begin() + 139 + static_cast<int>(size) - 174), fragment);
  }
  EXPECT_EQ(setClipboardText(u"only text"), KORVANE_OK);
  EXPECT_THAT(TheDesktop().Clipboard().Formats(), ElementsAre("CF_UNICODETEXT"));
}

TEST_F(ClipboardTest, OrderOfCalls) {
  EXPECT_THAT(CallsOf([] { setClipboardText(u"text"); }),
              ElementsAre("GlobalAlloc", "GlobalLock", "GlobalUnlock",                              //
                          "OpenClipboard", "EmptyClipboard", "SetClipboardData", "CloseClipboard",  //
                          "OpenClipboard", "GetClipboardData", "GlobalLock", "GlobalUnlock", "CloseClipboard"));
  EXPECT_THAT(CallsOf([] { setClipboardTextAndHtml(u"text", "html"); }),
              ElementsAre("GlobalAlloc", "GlobalLock", "GlobalUnlock", "GlobalAlloc", "GlobalLock", "GlobalUnlock",  //
                          "OpenClipboard", "EmptyClipboard", "SetClipboardData", "RegisterClipboardFormatW",
                          "SetClipboardData", "CloseClipboard",  //
                          "OpenClipboard", "GetClipboardData", "GlobalLock", "GlobalUnlock", "CloseClipboard"));
}

struct Failure {
  const char* call;
  std::uint64_t nth;
  const char* details;                // "" when the call succeeds all the same
  std::optional<standin::Text> left;  // on the clipboard
};

class ClipboardFailureTest : public ClipboardTest {
 protected:
  void ExpectFailures(const std::string& name, int (*write)(), const std::vector<Failure>& failures) {
    for (const auto& [call, nth, details, left] : failures) {
      SCOPED_TRACE(name + ": " + call + " " + std::to_string(nth));
      TheDesktop().Clipboard().Set(u"before");
      TheDesktop().Faults().FailNth(call, nth);
      const int code = write();
      EXPECT_EQ(TheDesktop().Faults().Injected(), 1U);
      TheDesktop().Faults().Stop();
      if (*details == 0) {
        EXPECT_EQ(code, 0);
        EXPECT_THAT(Log(), IsEmpty());
      } else {
        EXPECT_EQ(code, KORVANE_FAILED);
        EXPECT_EQ(Log(), (Lines{"ERROR " + name + " Code:-3 Details:" + details}));
      }
      EXPECT_EQ(TheDesktop().Clipboard().Text(), left);
    }
  }
};

TEST_F(ClipboardFailureTest, EachHasItsLineAndLeavesWhatItFound) {
  ExpectFailures("setClipboardText", [] { return setClipboardText(u"text"); },
                 {{"GlobalAlloc", 1, "Failed to allocate global memory", u"before"},
                  {"GlobalLock", 1, "Failed to lock global memory", u"before"},
                  {"EmptyClipboard", 1, "Failed to empty clipboard", u"before"},
                  {"SetClipboardData", 1, "Failed to set clipboard data", std::nullopt},
                  {"GetClipboardData", 1, "Clipboard verification failed", u"text"},
                  {"GlobalLock", 2, "Clipboard verification failed", u"text"},
                  {"OpenClipboard", 1, "", u"text"}});
  ExpectFailures("setClipboardTextAndHtml", [] { return setClipboardTextAndHtml(u"text", "html"); },
                 {{"GlobalAlloc", 1, "Failed to allocate global memory (text)", u"before"},
                  {"GlobalLock", 1, "Failed to lock global memory (text)", u"before"},
                  {"GlobalAlloc", 2, "Failed to allocate global memory (html)", u"before"},
                  {"GlobalLock", 2, "Failed to lock global memory (html)", u"before"},
                  {"EmptyClipboard", 1, "Failed to empty clipboard", u"before"},
                  {"SetClipboardData", 1, "Failed to set unicode clipboard data", std::nullopt},
                  {"RegisterClipboardFormatW", 1, "", u"text"},
                  {"SetClipboardData", 2, "", u"text"},
                  {"GetClipboardData", 1, "Clipboard verification failed", u"text"},
                  {"GlobalLock", 3, "Clipboard verification failed", u"text"}});
}

TEST_F(ClipboardTest, MissingArgumentsTouchNothing) {
  const Lines calls = CallsOf([] {
    EXPECT_EQ(setClipboardText(nullptr), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(setClipboardTextAndHtml(nullptr, "html"), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(setClipboardTextAndHtml(u"text", nullptr), KORVANE_INVALID_ARGUMENT);
  });
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_EQ(Log(), (Lines{"ERROR setClipboardText Code:-2 Details:Invalid text parameter",
                          "ERROR setClipboardTextAndHtml Code:-2 Details:Invalid parameter",
                          "ERROR setClipboardTextAndHtml Code:-2 Details:Invalid parameter"}));
  EXPECT_EQ(TheDesktop().Clipboard().Text(), u"before");
}

TEST_F(ClipboardTest, BusyClipboardIsTriedThreeTimes) {
  struct Contention {
    double heldMs;
    int code;
    double sleptMs;
    std::uint64_t opens;  // with the one of the read-back
    const char16_t* left;
  };
  for (const auto& [held, code, slept, opens, left] :
       {Contention{-1, -3, 8, 3, u"before"}, Contention{8.5, -3, 8, 3, u"before"}, Contention{7, 0, 8, 4, u"text"},
        Contention{3, 0, 4, 3, u"text"}}) {
    SCOPED_TRACE(held);
    for (const bool withHtml : {false, true}) {
      TheDesktop().Clipboard().Set(u"before");
      const auto before = TheDesktop().Calls().Count("OpenClipboard");
      TheDesktop().Clipboard().Hold(held);
      EXPECT_EQ(Elapsed([&, code = code] {
                  EXPECT_EQ(withHtml ? setClipboardTextAndHtml(u"text", "html") : setClipboardText(u"text"), code);
                }),
                slept);
      TheDesktop().Clipboard().Release();
      EXPECT_EQ(TheDesktop().Calls().Count("OpenClipboard") - before, opens);
      EXPECT_EQ(TheDesktop().Clipboard().Text(), left);
      if (code != 0) {
        EXPECT_EQ(WithPrefix(Log(), withHtml ? "ERROR setClipboardTextAndHtml " : "ERROR setClipboardText "),
                  (Lines{"Code:-3 Details:Failed to open clipboard after retries"}));
      }
    }
  }
}

TEST_F(ClipboardTest, AnotherProgramBetweenWriteAndReadBack) {
  TheDesktop().Calls().After("CloseClipboard", 1, [] { TheDesktop().Clipboard().Set(u"Text"); });
  EXPECT_EQ(setClipboardText(u"text"), KORVANE_FAILED);
  EXPECT_EQ(TheDesktop().Clipboard().Text(), u"Text");

  TheDesktop().Calls().After("CloseClipboard", 1, [] { TheDesktop().Clipboard().Hold(-1); });
  EXPECT_EQ(Elapsed([] { EXPECT_EQ(setClipboardText(u"text"), KORVANE_FAILED); }), 8);
  TheDesktop().Clipboard().Release();
  EXPECT_EQ(TheDesktop().Clipboard().Text(), u"text");
  EXPECT_EQ(Log(), (Lines{"ERROR setClipboardText Code:-3 Details:Clipboard verification failed",
                          "ERROR setClipboardText Code:-3 Details:Clipboard verification failed"}));
}

TEST_F(ClipboardTest, VerificationIsExact) {
  TheDesktop().Clipboard().Set(u"e\u0301 Text");
  EXPECT_TRUE(VerifyClipboardText(u"e\u0301 Text"));
  for (const char16_t* other : {u"\u00E9 Text", u"e\u0301 text", u"e\u0301 Tex", u"e\u0301 Text ", u""}) {
    EXPECT_FALSE(VerifyClipboardText(other)) << testing::PrintToString(WideText(other));
  }
  EXPECT_FALSE(VerifyClipboardText(nullptr));
  TheDesktop().Clipboard().Clear();
  EXPECT_FALSE(VerifyClipboardText(u""));
}

}  // namespace
}  // namespace tests
