#include "host/engine/replay.h"

#include <utility>

#include "host/engine/await.h"
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

std::string HowToGoOn(const DataRow& row, std::size_t step) {
  const std::string rowOption = row.number == 0 ? "" : "--row " + std::to_string(row.number) + " ";
  return " Go on from here: the same command with " + rowOption + "--from " + std::to_string(step + 1) + ".";
}

ExitCode CodeOf(const StepResult& result) {
  return result.state != StepState::Failed  ? ExitCode::Ok
         : result.code == KORVANE_CANCELLED ? ExitCode::Cancelled
         : result.windowGone                ? ExitCode::NoWindow
                                            : ExitCode::StepFailed;
}

// Whether another try cannot do twice what was meant once: nothing was sent to the window, as when the target was not
// there, or the step leaves the same however often it is done. All else may have happened in part: a click that answers
// a failure may have been a click.
bool MayBeTriedAgain(const StepResult& result) {
  return result.state == StepState::Failed && result.code != KORVANE_CANCELLED &&
         (!result.touched || result.step->replace);
}

StepResult RunStep(StepRunner& runner, std::size_t index, Variables& variables, const ReplayOptions& options,
                   const Progress& progress) {
  // What a program needs to get over a bad moment.
  constexpr int kPauseMs = 500;
  StepResult result = runner.Run(index, variables);
  for (int left = options.retries; left > 0 && MayBeTriedAgain(result); --left) {
    result.explanation = Explain(result, options.file);
    progress.stepIsTriedAgain(result);
    Await(kPauseMs, [] { return false; });
    std::vector<StepResult> earlier = std::move(result.earlier);
    earlier.push_back(std::move(result));
    result = runner.Run(index, variables);
    result.earlier = std::move(earlier);
  }
  return result;
}

// Pictures and lines are for whoever is told of the step as it ends: kept, they would grow with the run.
void ForgetEvidence(StepResult& result) {
  result.before.reset();
  result.picture.reset();
  result.screen.reset();
  result.lines = {};
  for (StepResult& earlier : result.earlier) {
    ForgetEvidence(earlier);
  }
}

}  // namespace

Replayed Replay(const Recording& recording, const std::vector<DataRow>& rows, LibraryLog& log,
                const ReplayOptions& options, const Progress& progress) {
  const CancelMonitor monitor;
  StepRunner runner(recording, log, options.run);
  Replayed replayed;
  const double start = world::Now();
  replayed.stepsOfRow = recording.steps.size();
  for (std::size_t row = options.row; row < rows.size(); ++row) {
    Variables variables = rows[row].values;
    Run& run = replayed.runs.emplace_back();
    run.name = rows.size() > 1 ? "row " + std::to_string(rows[row].number) : std::string();
    run.row = row;
    run.rows = rows.size();
    run.lastRow = rows.back().number;
    run.from = row == options.row ? options.from : 0;
    progress.runBegins(run);
    for (std::size_t i = run.from; i < recording.steps.size(); ++i) {
      progress.stepBegins(i);
      run.steps.push_back(RunStep(runner, i, variables, options, progress));
      StepResult& result = run.steps.back();
      const ExitCode code = CodeOf(result);
      const bool ends = code == ExitCode::Cancelled || (code != ExitCode::Ok && !options.keepGoing);
      if (code != ExitCode::Ok) {
        result.explanation = Explain(result, options.file) + (ends ? HowToGoOn(rows[row], i) : "");
        replayed.code = replayed.code == ExitCode::Ok || code == ExitCode::Cancelled ? code : replayed.code;
      }
      progress.stepEnds(result);
      ForgetEvidence(result);
      if (ends) {
        replayed.rowsLeft = rows.size() - row - 1;
        replayed.milliseconds = world::Now() - start;
        return replayed;
      }
      // The rest of the row would act on what the failure left behind; the next row begins anew.
      if (code != ExitCode::Ok && rows.size() > 1) {
        break;
      }
    }
  }
  replayed.milliseconds = world::Now() - start;
  return replayed;
}

Totals Sum(const Replayed& replayed) {
  Totals totals;
  for (const Run& run : replayed.runs) {
    totals.steps += replayed.stepsOfRow - run.from;
    for (const StepResult& result : run.steps) {
      totals.ok += result.state == StepState::Ok ? 1 : 0;
      totals.healed += result.state == StepState::Healed ? 1 : 0;
      totals.failed += result.state == StepState::Failed ? 1 : 0;
      totals.retried += result.state != StepState::Failed && !result.earlier.empty() ? 1 : 0;
    }
  }
  totals.steps += replayed.rowsLeft * replayed.stepsOfRow;
  totals.notRun = totals.steps - totals.ok - totals.healed - totals.failed;
  return totals;
}

std::string Describe(const Totals& totals) {
  return std::to_string(totals.steps) + " steps: " + std::to_string(totals.ok) + " ok, " +
         std::to_string(totals.healed) + " healed, " + std::to_string(totals.failed) + " failed, " +
         std::to_string(totals.notRun) + " not run" +
         (totals.retried > 0 ? "; " + std::to_string(totals.retried) + " not on the first try" : "");
}

Recording Corrected(const Recording& recording, const Replayed& replayed) {
  Recording corrected = recording;
  for (const Run& run : replayed.runs) {
    for (const StepResult& result : run.steps) {
      if (result.proposal) {
        corrected.steps[result.index].target = *result.proposal;
      }
    }
  }
  return corrected;
}

}  // namespace host
