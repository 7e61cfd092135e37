#include "host/engine/replay.h"

#include "host/engine/explain.h"

namespace host {

namespace {

// Escape counts from here on.
struct CancelMonitor {
  CancelMonitor() {
    startCancelMonitor();
  }
  CancelMonitor(const CancelMonitor&) = delete;
  CancelMonitor& operator=(const CancelMonitor&) = delete;
  ~CancelMonitor() {
    stopCancelMonitor();
  }
};

std::string ExplainFailure(const StepResult& result, const std::string& file) {
  std::vector<Attempt> alone;
  if (result.code == KORVANE_NOT_FOUND && result.window) {
    for (const Identification by : kIdentifications) {
      alone.push_back(TryAlone(result.step->target, result.window->handle, by));
    }
  }
  return Explain(result, alone, file);
}

ExitCode CodeOf(const StepResult& result) {
  return result.code == KORVANE_OK          ? ExitCode::Ok
         : result.code == KORVANE_CANCELLED ? ExitCode::Cancelled
         : result.windowGone                ? ExitCode::NoWindow
                                            : ExitCode::StepFailed;
}

}  // namespace

Replayed Replay(const Recording& recording, const std::vector<Variables>& rows, LibraryLog& log,
                const ReplayOptions& options, const Progress& progress) {
  const CancelMonitor monitor;
  StepRunner runner(recording, log, options.run);
  Replayed replayed;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    Variables variables = rows[row];
    Run& run = replayed.runs.emplace_back();
    run.name = rows.size() > 1 ? "row " + std::to_string(row + 1) : std::string();
    progress.runBegins(run);
    for (std::size_t i = options.from; i < recording.steps.size(); ++i) {
      progress.stepBegins(i);
      run.steps.push_back(runner.Run(i, variables));
      StepResult& result = run.steps.back();
      const ExitCode code = CodeOf(result);
      if (code != ExitCode::Ok) {
        result.explanation = ExplainFailure(result, options.file);
        replayed.code = replayed.code == ExitCode::Ok || code == ExitCode::Cancelled ? code : replayed.code;
      }
      progress.stepEnds(result);
      if (code == ExitCode::Cancelled || (code != ExitCode::Ok && !options.keepGoing)) {
        return replayed;
      }
    }
  }
  return replayed;
}

}  // namespace host
