// Logs of steps that waited: what is folded, and that nothing else is.
#include "host/report/fold_log.h"

#include <gtest/gtest.h>

namespace host {
namespace {

using Lines = std::vector<std::string>;

TEST(FoldLogTest, WhatRepeatsIsToldOnceWithItsCount) {
  const struct {
    Lines lines;
    Lines folded;
  } logs[] = {
      {{}, {}},
      {{"a", "b", "a"}, {"a", "b", "a"}},
      // One more is no gain.
      {{"a", "a", "b"}, {"a", "a", "b"}},
      {{"11-18 09:05:07.045 a", "11-18 09:05:07.047 a", "11-18 09:05:07.049 a"},
       {"11-18 09:05:07.045 a", "11-18 09:05:07.049 … the line above 2 times more"}},
      {{"[09:05:07.045] x in 3ms", "y", "[09:05:07.046] x in 12ms", "y", "z"},
       {"[09:05:07.045] x in 3ms", "y", "… the 2 lines above 1 time more", "z"}},
      // A number that is no duration tells lines apart.
      {{"level 1", "level 2", "level 3"}, {"level 1", "level 2", "level 3"}},
      {{"head", "a", "b", "a", "b", "a", "b", "a"}, {"head", "a", "b", "… the 2 lines above 2 times more", "a"}},
  };
  for (const auto& log : logs) {
    EXPECT_EQ(log.folded, FoldLog(log.lines));
  }
}

TEST(FoldLogTest, ALongWaitBecomesShort) {
  Lines lines;
  for (int poll = 0; poll < 900; ++poll) {
    for (int line = 0; line < 20; ++line) {
      lines.push_back("11-18 09:05:07.045 step " + std::to_string(line) + " took " + std::to_string(poll) + "ms");
    }
  }
  EXPECT_EQ(21U, FoldLog(lines).size());
}

}  // namespace
}  // namespace host
