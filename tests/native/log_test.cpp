// The diagnostic log: its lines, its file, and what happens when either cannot be had.
#include <new>
#include <thread>

#include "log/diagnostic_log.h"
#include "log/export_guard.h"
#include "tests/native/allocations.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

using ::testing::EndsWith;

class LogTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    TheDesktop().Clock().SetUtcOffsetMinutes(90);
    TheDesktop().Clock().SetLocalTime({2026, 11, 3, 18, 9, 5, 7, 45});
  }

  static std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static void WriteWithEveryWriter() {
    LogLine("getTargetText: FAILED - No element found");
    LogClockLine("clock");
    LogStampedLine("stamped");
    TaggedLog("[function] ")("tagged");
    TaggedClockLog("[function] ")("clock");
    EXPECT_EQ(ReportError(-3, "InitializeAutomation", "COM initialization failed"), -3);
    EXPECT_EQ(ReportError(-2, "clickTarget"), -2);
    logAction(u"clickTarget", 0, 312);
    logActionWithTimestamp(u"step", -3, 0, 1000);
  }
};

TEST_F(LogTest, EveryWriterStampsItsLineInItsOwnForm) {
  WriteWithEveryWriter();
  EXPECT_EQ(LogBytes(),
            "11-18 09:05:07.045 getTargetText: FAILED - No element found\r\n"
            "[09:05:07.045] clock\r\n"
            "[2026-11-18 09:05:07] stamped\r\n"
            "11-18 09:05:07.045 [function] tagged\r\n"
            "[09:05:07.045] [function] clock\r\n"
            "2026-11-18 09:05:07.045 ERROR InitializeAutomation Code:-3 Details:COM initialization failed\r\n"
            "2026-11-18 09:05:07.045 ERROR clickTarget Code:-2\r\n"
            "2026-11-18 09:05:07.045 - clickTarget | Result: 0 | Duration: 312ms\r\n"
            "1970-01-01 00:00:01.000 - step | Result: -3 | Duration: 0ms\r\n");
}

TEST_F(LogTest, NumbersOfAStampArePaddedWithZeros) {
  TheDesktop().Clock().SetLocalTime({2026, 1, 5, 2, 3, 4, 5, 7});
  LogLine("a");
  LogClockLine("b");
  LogStampedLine("c");
  ReportError(-1, "d");
  logAction(u"e", 0, 0);
  EXPECT_EQ(LogBytes(),
            "01-02 03:04:05.007 a\r\n"
            "[03:04:05.007] b\r\n"
            "[2026-01-02 03:04:05] c\r\n"
            "2026-01-02 03:04:05.007 ERROR d Code:-1\r\n"
            "2026-01-02 03:04:05.007 - e | Result: 0 | Duration: 0ms\r\n");
}

TEST_F(LogTest, EachLineIsOneWriteAndOneReadingOfTheClock) {
  const auto writes = TheDesktop().Calls().Count("WriteFile");
  const auto readings =
      TheDesktop().Calls().Count("GetLocalTime") + TheDesktop().Calls().Count("GetSystemTimeAsFileTime");
  WriteWithEveryWriter();
  EXPECT_EQ(TheDesktop().Calls().Count("WriteFile") - writes, 9U);
  EXPECT_EQ(
      TheDesktop().Calls().Count("GetLocalTime") + TheDesktop().Calls().Count("GetSystemTimeAsFileTime") - readings,
      8U);
}

TEST_F(LogTest, AStampThatCannotBeConvertedLeavesTheLineOut) {
  TheDesktop().Faults().FailNth("FileTimeToLocalFileTime", 1);
  LogStampedLine("not written");
  TheDesktop().Faults().FailNth("FileTimeToSystemTime", 1);
  LogStampedLine("not written either");
  LogStampedLine("written");
  EXPECT_EQ(LogBytes(), "[2026-11-18 09:05:07] written\r\n");
}

TEST_F(LogTest, UnitsBeyondOneByteAreWrittenAsEscapes) {
  logAction(u"\x01 \x7f\x80\xff|\x100 \x4e2d \U0001f600 \xd83d. \xffff", 0, 0);
  EXPECT_THAT(LogBytes(), EndsWith(" - \x01 \x7f\x80\xff|\\u0100 \\u4e2d \\ud83d\\ude00 \\ud83d. \\uffff"
                                   " | Result: 0 | Duration: 0ms\r\n"));
}

// The file is text, in which a line feed is stored as CR LF whatever stands before it.
TEST_F(LogTest, LineFeedsInsideATextAreStoredAsLineEnds) {
  logAction(u"a\nb\r\nc\r", 0, 0);
  EXPECT_THAT(LogBytes(), EndsWith(" - a\r\nb\r\r\nc\r | Result: 0 | Duration: 0ms\r\n"));
}

#if defined(__x86_64__)
// On Windows a thread's floating-point unit may run with the precision of a double.
class DoublePrecision {
 public:
  DoublePrecision() {
    constexpr std::uint16_t kPrecision = 0x0300;
    constexpr std::uint16_t kDouble = 0x0200;
    __asm__ __volatile__("fnstcw %0" : "=m"(before_));
    const auto now = static_cast<std::uint16_t>((before_ & ~kPrecision) | kDouble);
    __asm__ __volatile__("fldcw %0" : : "m"(now));
  }
  ~DoublePrecision() {
    __asm__ __volatile__("fldcw %0" : : "m"(before_));
  }

 private:
  std::uint16_t before_ = 0;
};
#else
struct DoublePrecision {};
#endif

TEST_F(LogTest, OneDecimalIsRoundedAsPrintfDoes) {
  const auto check = [](int hits, int all) {
    const double rate = hits * 100.0 / all;
    char expected[32];
    std::snprintf(expected, sizeof expected, "%.1f", rate);
    const DoublePrecision precision;
    Line line;
    line.Append(OneDecimal(rate));
    ASSERT_EQ(line.Bytes(), expected) << hits << " of " << all;
  };
  check(1333, 2000);
  check(1, INT32_MAX);
  check(INT32_MAX, INT32_MAX);
  for (int all = 1; all <= 400; ++all) {
    for (int hits = 0; hits <= all; ++hits) {
      check(hits, all);
    }
  }
}

TEST_F(LogTest, NumbersAreDecimalOrLowerCaseHexadecimal) {
  LogLine(INT32_MIN, " ", INT64_MAX, " 0x", Hex(E_FAIL), " 0x", Hex(std::uint32_t{0xC36}), " 0x",
          Hex(static_cast<const void*>(nullptr)), " ", HandleNumber(reinterpret_cast<HWND>(~std::uintptr_t{0})));
  EXPECT_EQ(Log(), (Lines{"-2147483648 9223372036854775807 0x80004005 0xc36 0x0 18446744073709551615"}));
}

TEST_F(LogTest, ActionLinesTakeAnyNumbersAndTexts) {
  struct Case {
    const char16_t* action;
    int result;
    int duration;
    std::int64_t timestamp;
    std::string line;
  };
  constexpr std::int64_t kFirst = -11644473600000;  // 1601-01-01
  constexpr std::int64_t kLast = 910692730085477;   // the last instant of a file time
  const std::string none = "0000-00-00 00:00:00.000 - x | Result: 0 | Duration: 0ms";
  const Case cases[] = {
      {u"", INT32_MIN, INT32_MAX, 0, "1970-01-01 00:00:00.000 -  | Result: -2147483648 | Duration: 2147483647ms"},
      {u"a - b", 1, -1, 1795000000123, "2026-11-18 11:06:40.123 - a - b | Result: 1 | Duration: -1ms"},
      {u"x", 0, 0, -1, "1969-12-31 23:59:59.999 - x | Result: 0 | Duration: 0ms"},
      {u"x", 0, 0, kFirst, "1601-01-01 00:00:00.000 - x | Result: 0 | Duration: 0ms"},
      {u"x", 0, 0, kFirst - 1, none},
      {u"x", 0, 0, kLast + 1, none},
      {u"x", 0, 0, INT64_MIN, none},
      {u"x", 0, 0, INT64_MAX, none},
  };
  for (const Case& c : cases) {
    const std::size_t before = LogBytes().size();
    logActionWithTimestamp(c.action, c.result, c.duration, c.timestamp);
    EXPECT_EQ(LogBytes().substr(before), c.line + "\r\n");
  }
  const std::size_t before = LogBytes().size();
  logAction(nullptr, 0, 0);
  logActionWithTimestamp(nullptr, 0, 0, 0);
  EXPECT_EQ(LogBytes().size(), before);
}

TEST_F(LogTest, AClosedLogCostsNoPlatformCallAndKeepsTheCodes) {
  cleanupAutomation();
  EXPECT_THAT(CallsOf(WriteWithEveryWriter), IsEmpty());
  EXPECT_EQ(LogBytes(), "");
}

TEST_F(LogTest, LinesOfSeveralPeriodsStandInOneFile) {
  logActionWithTimestamp(u"one", 0, 0, 0);
  OpenLog();
  logActionWithTimestamp(u"two", 0, 0, 0);
  cleanupAutomation();
  logActionWithTimestamp(u"lost", 0, 0, 0);
  OpenLog();
  logActionWithTimestamp(u"three", 0, 0, 0);
  EXPECT_EQ(Log(), (Lines{"- one | Result: 0 | Duration: 0ms", "- two | Result: 0 | Duration: 0ms",
                          "- three | Result: 0 | Duration: 0ms"}));
}

TEST_F(LogTest, APathThatCannotBeOpenedClosesTheLogAndMakesNoFolder) {
  const auto path = Folder() / "missing" / "log.txt";
  EXPECT_EQ(CallsOf([&] { initializeLog(path.u16string().c_str()); }), (Lines{"CloseHandle", "CreateFileW"}));
  EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
  EXPECT_EQ(ReportError(-2, "tag"), -2);
  EXPECT_EQ(LogBytes(), "");
  OpenLog();
  ReportError(-2, "tag");
  EXPECT_EQ(Log(), (Lines{"ERROR tag Code:-2"}));
}

TEST_F(LogTest, OthersMayReadAndWriteTheFile) {
  TheDesktop().Calls().ClearTrace();
  OpenLog();
  EXPECT_EQ(TheDesktop().Calls().Trace().back().detail, "share=" + std::to_string(FILE_SHARE_READ | FILE_SHARE_WRITE));
}

TEST_F(LogTest, TheDefaultFileLiesInAFolderOfTheUser) {
  const auto file = Folder() / "Tavrin" / "automation_execution.log";
  TheDesktop().Host().SetLocalAppData(Folder().string());
  const Lines calls = CallsOf([] { initializeLog(nullptr); });
  EXPECT_EQ(calls, (Lines{"CloseHandle", "SHGetKnownFolderPath", "CoTaskMemFree", "CreateDirectoryW", "CreateFileW"}));
  logActionWithTimestamp(u"one", 0, 0, 0);
  initializeLog(u"");
  logActionWithTimestamp(u"two", 0, 0, 0);
  // A folder that cannot be made may exist already, so its result is ignored: opening the file decides.
  TheDesktop().Faults().FailNth("CreateDirectoryW", 1);
  initializeLog(nullptr);
  logActionWithTimestamp(u"three", 0, 0, 0);
  EXPECT_EQ(BytesOf(file),
            "1970-01-01 00:00:00.000 - one | Result: 0 | Duration: 0ms\r\n"
            "1970-01-01 00:00:00.000 - two | Result: 0 | Duration: 0ms\r\n"
            "1970-01-01 00:00:00.000 - three | Result: 0 | Duration: 0ms\r\n");
}

TEST_F(LogTest, WithoutADefaultFolderTheLogStaysClosed) {
  TheDesktop().Host().SetLocalAppData(std::nullopt);
  initializeLog(nullptr);
  EXPECT_FALSE(LogIsOpen());
  // One folder is made, never its parents.
  TheDesktop().Host().SetLocalAppData((Folder() / "absent").string());
  initializeLog(nullptr);
  EXPECT_FALSE(LogIsOpen());
  EXPECT_FALSE(std::filesystem::exists(Folder() / "absent"));
}

TEST_F(LogTest, ALostWriteLosesItsLineOnly) {
  TheDesktop().Faults().FailNth("WriteFile", 2);
  EXPECT_EQ(ReportError(-1, "first"), -1);
  EXPECT_EQ(ReportError(-1, "second"), -1);
  EXPECT_EQ(ReportError(-1, "third"), -1);
  EXPECT_EQ(Log(), (Lines{"ERROR first Code:-1", "ERROR third Code:-1"}));
}

TEST_F(LogTest, LongLinesAreWholeAndWithoutMemoryCutButEnded) {
  const std::string narrow(5000, 'n');
  LogLine("x", narrow);
  EXPECT_EQ(Log(), Lines{"x" + narrow});
  for (const std::size_t length : {std::size_t{900}, std::size_t{1100}, std::size_t{100000}}) {
    for (const char16_t unit : {u'a', u'\x4e2d'}) {
      const std::u16string text(length, unit);
      logAction(text.c_str(), 0, 0);
      std::string shown;
      for (std::size_t i = 0; i < length; ++i) {
        shown += unit == u'a' ? "a" : "\\u4e2d";
      }
      EXPECT_EQ(Log(), Lines{"- " + shown + " | Result: 0 | Duration: 0ms"});

      const std::size_t before = LogBytes().size();
      allocations::FailFromNth(1);
      logAction(text.c_str(), 0, 0);
      allocations::StopFailing();
      const std::string cut = LogBytes().substr(before);
      EXPECT_LE(cut.size(), 1024U);
      EXPECT_GT(cut.size(), 900U);
      EXPECT_THAT(cut, EndsWith("\r\n"));
      ForgetLog();
    }
  }
}

TEST_F(LogTest, AnExportReportsUnderItsNameWhatItsBodyTells) {
  EXPECT_EQ(AnswerExport("noMemory", -1, []() -> Outcome { throw std::bad_alloc(); }), -1);
  EXPECT_EQ(AnswerExport("told", -1, []() -> Outcome { return {-3, "Details"}; }), -3);
  EXPECT_EQ(AnswerExport("reportedBefore", -1, []() -> Outcome { return -2; }), -2);
  EXPECT_EQ(AnswerExport("held", -1, []() -> Outcome { return 1; }), 1);
  EXPECT_EQ(Log(), (Lines{"ERROR noMemory Code:-1 Details:Out of memory", "ERROR told Code:-3 Details:Details"}));
}

TEST_F(LogTest, LinesOfSeveralThreadsNeverMix) {
  constexpr int kThreads = 4;
  constexpr int kLines = 100;
  TheDesktop().Clock().UseRealTime();
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      const std::u16string text(1500, static_cast<char16_t>(u'a' + i));
      for (int line = 0; line < kLines; ++line) {
        logAction(text.c_str(), i, line);
      }
    });
  }
  std::thread reopening([this] {
    for (int i = 0; i < 20; ++i) {
      OpenLog();
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  reopening.join();
  for (const std::string& line : Log()) {
    const std::size_t text = line.find_first_not_of("- ");
    const char letter = line[text];
    EXPECT_EQ(line.find_first_not_of(letter, text), text + 1500);
    EXPECT_THAT(line, ::testing::HasSubstr(" | Result: " + std::to_string(letter - 'a') + " |"));
  }
}

}  // namespace
}  // namespace tests
