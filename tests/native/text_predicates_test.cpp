// Tests of a target's text, and the waits for them with their exact times.
#include "tests/native/fixture.h"

namespace tests {
namespace {

class TextPredicatesTest : public FieldTest {
 protected:
  // How often the field was read since the last call.
  std::uint64_t Reads() {
    const auto all = TheDesktop().Calls().Count("IUIAutomation::ElementFromHandle");
    return all - std::exchange(reads_, all);
  }

  void MakeUnreadable() {
    for (const PROPERTYID id : {30045, 30005, 30093, 30092, 30094}) {
      TheDesktop().Elements().SetUnsupported(field_, id);
    }
  }

 private:
  std::uint64_t reads_ = 0;
};

TEST_F(TextPredicatesTest, Tests) {
  const auto empty = [this](const char16_t*) { return isTargetEmpty(&target_, window_); };
  const auto equals = [this](const char16_t* text) { return targetContainsText(&target_, window_, text); };
  const auto partial = [this](const char16_t* text) { return targetContainsPartialText(&target_, window_, text); };
  struct Case {
    const char16_t* shown;
    std::function<int(const char16_t*)> test;
    const char16_t* argument;
    int result;
  };
  // clang-format off
  const Case cases[] = {
      {u"  ", empty, u"", 1}, {u" \t\r\n\v\f", empty, u"", 1}, {u" a", empty, u"", 0}, {u"a  ", empty, u"", 0},
      {u"\xD83D", empty, u"", 0}, {u"abc", equals, u"abc", 1}, {u"abc", equals, u"ABC", 0},
      {u"abc", equals, u"ab", 0}, {u"abc", equals, u"abcd", 0}, {u"abc", equals, u"", 0},
      {u"\xD83D", equals, u"\xD83D", 1}, {u"\u00E9", equals, u"e\u0301", 0}, {u"abc", partial, u"b", 1},
      {u"abc", partial, u"xabcx", 1}, {u"abc", partial, u"abd", 0}, {u"abc", partial, u"B", 0},
      {u"abc", partial, u"", 1}, {u"abc", partial, u"bcd", 0}, {u"\xD83D\xDE00", partial, u"\xDE00", 1},
  };
  // clang-format on
  for (const auto& [shown, test, argument, result] : cases) {
    SCOPED_TRACE(testing::PrintToString(standin::Text(shown)) + " " + testing::PrintToString(standin::Text(argument)));
    TheDesktop().Controls().SetText(edit_, shown);
    EXPECT_EQ(test(argument), result);
  }
  MakeUnreadable();
  EXPECT_EQ(empty(u""), KORVANE_NOT_FOUND);
  EXPECT_EQ(equals(u""), KORVANE_NOT_FOUND);
  EXPECT_EQ(partial(u""), KORVANE_NOT_FOUND);
}

TEST_F(TextPredicatesTest, NullPointersAreAnsweredWithoutAnyCall) {
  const auto* none = static_cast<const TargetRecord*>(nullptr);
  const Lines calls = CallsOf([&] {
    EXPECT_EQ(isTargetEmpty(none, window_), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(targetContainsText(none, window_, u"a"), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(targetContainsText(&target_, window_, nullptr), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(targetContainsPartialText(none, window_, u"a"), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(targetContainsPartialText(&target_, window_, nullptr), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForFieldChange(none, window_, u"a", 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForFieldChange(&target_, window_, nullptr, 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForFieldEmpty(none, window_, 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForTargetContainsText(none, window_, u"a", 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForTargetContainsText(&target_, window_, nullptr, 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForTargetContainsPartialText(none, window_, u"a", 10), KORVANE_INVALID_ARGUMENT);
    EXPECT_EQ(waitForTargetContainsPartialText(&target_, window_, nullptr, 10), KORVANE_INVALID_ARGUMENT);
  });
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

struct Wait {
  const char* name;
  const char16_t* heldAt;     // a text for which the wait ends
  const char16_t* notHeldAt;  // and one for which it does not
  std::function<int(const TargetRecord*, HWND, int)> wait;
};

const Wait kWaits[] = {
    {"change", u"new", u"old", [](auto* t, HWND w, int ms) { return waitForFieldChange(t, w, u"old", ms); }},
    {"empty", u" ", u"old", [](auto* t, HWND w, int ms) { return waitForFieldEmpty(t, w, ms); }},
    {"text", u"new", u"newer", [](auto* t, HWND w, int ms) { return waitForTargetContainsText(t, w, u"new", ms); }},
    {"partial", u"renewed", u"old",
     [](auto* t, HWND w, int ms) { return waitForTargetContainsPartialText(t, w, u"new", ms); }},
};

TEST_F(TextPredicatesTest, WaitsPollEveryTwoMillisecondsWithinTheLimit) {
  constexpr double kNever = 0;
  struct Case {
    double holdsAfterMs;  // kNever: not at all; below 0: from the start
    int limitMs;
    int code;
    double sleptMs;
    std::uint64_t reads;
  };
  const Case cases[] = {
      {-1, 10, 0, 0, 1},     {kNever, 6, -3, 6, 3},    {kNever, 5, -3, 6, 3},
      {kNever, 1, -3, 2, 1}, {kNever, 0, -3, 150, 75}, {kNever, -5, -3, 150, 75},
      {3, 10, 0, 4, 3},      {7, 10, 0, 8, 5},         {9, 10, -3, 10, 5},  // it holds at the limit, which is too late
  };
  for (const Wait& wait : kWaits) {
    for (const auto& [holdsAfter, limit, code, slept, reads] : cases) {
      SCOPED_TRACE(std::string(wait.name) + ", limit " + std::to_string(limit) + ", after " +
                   std::to_string(holdsAfter));
      TheDesktop().Controls().SetText(edit_, holdsAfter < 0 ? wait.heldAt : wait.notHeldAt);
      if (holdsAfter > 0) {
        TheDesktop().Clock().After(holdsAfter, [&] { TheDesktop().Controls().SetText(edit_, wait.heldAt); });
      }
      Reads();
      EXPECT_EQ(Elapsed([&, code = code, limit = limit] { EXPECT_EQ(wait.wait(&target_, window_, limit), code); }),
                slept);
      EXPECT_EQ(Reads(), reads);
    }
  }
}

TEST_F(TextPredicatesTest, WaitsOutlastAWrapOfTheTickCounter) {
  TheDesktop().Controls().SetText(edit_, u"old");
  for (const Wait& wait : kWaits) {
    SCOPED_TRACE(wait.name);
    TheDesktop().Clock().SetTickCount(0xFFFFFFFE);
    EXPECT_EQ(Elapsed([&] { EXPECT_EQ(wait.wait(&target_, window_, 12), KORVANE_FAILED); }), 12);
  }
}

TEST_F(TextPredicatesTest, UnreadableFieldNeitherChangesNorEmptiesNorContains) {
  MakeUnreadable();
  for (const Wait& wait : kWaits) {
    SCOPED_TRACE(wait.name);
    EXPECT_EQ(Elapsed([&] { EXPECT_EQ(wait.wait(&target_, window_, 4), KORVANE_FAILED); }), 4);
    EXPECT_EQ(Elapsed([&] { EXPECT_EQ(wait.wait(&target_, nullptr, 4), KORVANE_FAILED); }), 4);
  }
}

TEST_F(TextPredicatesTest, CancellingDoesNotEndAWait) {
  TheDesktop().Controls().SetText(edit_, u"old");
  startCancelMonitor();
  TheDesktop().User().HoldEscape(5, 60);
  EXPECT_EQ(Elapsed([&] { EXPECT_EQ(waitForTargetContainsText(&target_, window_, u"new", 100), KORVANE_FAILED); }),
            100);
  EXPECT_EQ(isCancelled(), 1);
}

}  // namespace
}  // namespace tests
