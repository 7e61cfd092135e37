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

std::string HowToGoOn(const Run& run, std::size_t row, std::size_t step) {
  const std::string rowOption = run.name.empty() ? "" : "--row " + std::to_string(row + 1) + " ";
  return " Go on from here: the same command with " + rowOption + "--from " + std::to_string(step + 1) + ".";
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
  for (std::size_t row = options.row; row < rows.size(); ++row) {
    Variables variables = rows[row];
    Run& run = replayed.runs.emplace_back();
    run.name = rows.size() > 1 ? "row " + std::to_string(row + 1) : std::string();
    run.from = row == options.row ? options.from : 0;
    progress.runBegins(run);
    for (std::size_t i = run.from; i < recording.steps.size(); ++i) {
      progress.stepBegins(i);
      run.steps.push_back(runner.Run(i, variables));
      StepResult& result = run.steps.back();
      const ExitCode code = CodeOf(result);
      const bool ends = code == ExitCode::Cancelled || (code != ExitCode::Ok && !options.keepGoing);
      if (code != ExitCode::Ok) {
        result.explanation = ExplainFailure(result, options.file) + (ends ? HowToGoOn(run, row, i) : "");
        replayed.code = replayed.code == ExitCode::Ok || code == ExitCode::Cancelled ? code : replayed.code;
      }
      progress.stepEnds(result);
      if (ends) {
        replayed.rowsLeft = rows.size() - row - 1;
        return replayed;
      }
      // The rest of the row would act on what the failure left behind; the next row begins anew.
      if (code != ExitCode::Ok && rows.size() > 1) {
        break;
      }
    }
  }
  return replayed;
}

}  // namespace host
