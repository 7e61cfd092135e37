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
  std::size_t from = 0;  // index of the first step
  bool keepGoing = false;
};

struct Run {
  std::string name;  // "row 2" with data, else empty
  std::vector<StepResult> steps;
};

struct Replayed {
  std::vector<Run> runs;
  ExitCode code = ExitCode::Ok;
};

// What is told on the way.
struct Progress {
  std::function<void(const Run&)> runBegins;
  std::function<void(std::size_t index)> stepBegins;
  std::function<void(const StepResult&)> stepEnds;
};

// `rows` has at least one set of values.
Replayed Replay(const Recording& recording, const std::vector<Variables>& rows, LibraryLog& log,
                const ReplayOptions& options, const Progress& progress);

}  // namespace host
