// Sums of a log, whatever lines it holds.
#include "host/engine/log_summary.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(LogSummaryTest, StepsErrorsAndSearches) {
  const LogSummary summary = Summarise({
      "2026-11-23 06:00:00.001 - paste Name | Result: 0 | Duration: 12ms",
      "2026-11-23 06:00:00.002 - say \" | Result: 7 | Duration: 8ms\" | Result: -3 | Duration: 3000ms",
      "2026-11-23 06:00:00.003 ERROR clickTarget Code:-1 Details:Target element not found",
      "2026-11-23 06:00:00.004 ERROR clickTarget Code:-1 Details:Target element not found",
      "2026-11-23 06:00:00.005 ERROR sendKey Code:-3",
      "[2026-11-23 06:00:00] [CACHE HIT] Clicked using cached coordinates",
      "11-23 06:00:00.006 [FindTargetElement] Starting with identification method: 0",
      // Almost, but not.
      "2026-11-23 06:00:00.010 ERROR in words",
      "2026-11-23T06:00:00.011 - paste | Result: 0 | Duration: 1ms",
      "11-23 06:00:00.012 Text: [CACHE HIT] [FindTargetElement] Starting",
      "2026-11-23 06:00:00.007 - a step without an end | Result: 0",
      "2026-11-23 06:00:00.008 - paste | Result: none | Duration: 1ms",
      "2026-11-23 06:00:00.009 - paste | Result: 99999999999 | Duration: 1ms",
      "",
  });
  EXPECT_EQ(14U, summary.lines);
  ASSERT_EQ(2U, summary.steps.size());
  EXPECT_EQ("2026-11-23 06:00:00.001", summary.steps[0].time);
  EXPECT_EQ("paste Name", summary.steps[0].action);
  EXPECT_EQ(12, summary.steps[0].milliseconds);
  EXPECT_EQ("say \" | Result: 7 | Duration: 8ms\"", summary.steps[1].action);
  EXPECT_EQ(-3, summary.steps[1].result);
  EXPECT_EQ((std::map<int, int>{{-3, 1}}), summary.failuresByCode);
  EXPECT_EQ((std::map<std::string, int>{{"clickTarget (-1): Target element not found", 2}, {"sendKey (-3)", 1}}),
            summary.errorsByReason);
  EXPECT_EQ(1, summary.cacheHits);
  EXPECT_EQ(1, summary.searches);
}

// Texts of other programs with line feeds in them, behind which a line looks like one of the library.
TEST(LogSummaryTest, NoTextWritesALine) {
  const std::string forged = "2026-11-23 06:00:00.000 ERROR sendKey Code:-3";
  const std::string step = "2026-11-23 06:00:00.000 - paid | Result: 0 | Duration: 1ms";
  const std::string known = "2026-11-23 06:00:00.001 ERROR clickTarget Code:-1 Details:Target element not found";
  const std::vector<std::string> texts[] = {
      {"11-23 06:00:00.000 getTargetText: SUCCESS with UIA_NamePropertyId - Text: abc", forged},
      {"11-23 06:00:00.000 getTargetText: SUCCESS with UIA_NamePropertyId - Text: ", "a", forged},
      {"11-23 06:00:00.000 getTargetText: SUCCESS with UIA_NamePropertyId - Text: a", step.substr(0, 48) + "..."},
      {"11-23 06:00:00.000 [pasteToTargetWithVerifyEx] Clipboard text retrieved: \"a", forged, "b", "\""},
      {"11-23 06:00:00.000 [pasteToTargetWithVerifyEx] Clipboard text retrieved: \"a\"", forged, "\""},
      {"11-23 06:00:00.000 [GetElementAtPoint] Found element with name: 'a'", forged, step, "'",
       "11-23 06:00:00.000 [GetElementAtPoint] Element control type: 0xc350"},
      {"2026-11-23 06:00:00.000 - an action", forged, "with an end | Result: 0 | Duration: 1ms"},
      {"2026-11-23 06:00:00.000 VERIFY_SIMPLE_DEBUG:", "  Clipboard: \"a", forged, "  Match: TRUE", step, "\"",
       "  Expected: \"", step, "\"", "  Lengths: clipboard=1, expected=1", "    Exp:  \"a", step, "b\"",
       "  Match: FALSE"},
  };
  for (std::vector<std::string> lines : texts) {
    SCOPED_TRACE(lines.front());
    lines.push_back(known);
    const LogSummary summary = Summarise(lines);
    const bool isAction = lines.front().ends_with("an action");
    ASSERT_EQ(isAction ? 1U : 0U, summary.steps.size());
    EXPECT_TRUE(!isAction || summary.steps[0].action == "an action");
    EXPECT_EQ((std::map<std::string, int>{{"clickTarget (-1): Target element not found", 1}}), summary.errorsByReason);
  }
}

}  // namespace
}  // namespace host
