// A whole recording, step by step, once for each row of data.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/base/failure.h"
#include "host/engine/run_step.h"

namespace host {

struct ReplayOptions {
  std::string file;  // the recording's name, for messages
  RunOptions run;
  std::size_t row = 0;                                       // index of the first row
  std::size_t from = 0;                                      // index of its first step
  int retries = 0;                                           // how often a step that failed may be tried again
  std::vector<std::pair<std::string, std::string>> facts{};  // of the run, for the report: what, and which
  bool keepGoing = false;  // after a failure: with the next row, or with the next step when there is one row
};

struct Run {
  std::string name;     // "row 2" of a file with several, else empty
  std::size_t row = 0;  // its index, and of how many
  std::size_t rows = 1;
  int lastRow = 0;       // as the file counts
  std::size_t from = 0;  // index of the first step
  std::vector<StepResult> steps;
};

struct Replayed {
  std::vector<Run> runs;
  std::size_t rowsLeft = 0;  // not begun
  std::size_t stepsOfRow = 0;
  double milliseconds = 0;  // on the clock
  ExitCode code = ExitCode::Ok;
};

// Every step is one of the four.
struct Totals {
  std::size_t steps = 0;
  std::size_t ok = 0;
  std::size_t healed = 0;
  std::size_t failed = 0;
  std::size_t notRun = 0;
  std::size_t retried = 0;  // of the ok and healed ones: not on the first try
};
Totals Sum(const Replayed& replayed);
// "11 steps: 9 ok, 1 healed, 1 failed, 0 not run"
std::string Describe(const Totals& totals);
// The recording with the targets that healed steps propose.
Recording Corrected(const Recording& recording, const Replayed& replayed);

// What is told on the way. A result has its pictures and its lines of the log only there.
struct Progress {
  std::function<void(const Run&)> runBegins;
  std::function<void(std::size_t index)> stepBegins;
  std::function<void(const StepResult&)> stepIsTriedAgain;  // what the try before came to
  std::function<void(const StepResult&)> stepEnds;
};

// `rows` has at least one.
Replayed Replay(const Recording& recording, const std::vector<DataRow>& rows, LibraryLog& log,
                const ReplayOptions& options, const Progress& progress);

}  // namespace host
