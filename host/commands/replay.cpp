#include "host/engine/replay.h"

#include <iostream>

#include "host/base/file.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/commands/progress.h"
#include "host/engine/readiness.h"
#include "host/recording/recording_file.h"
#include "host/report/report.h"

namespace host {

namespace {

std::vector<Variables> RowsOf(const ReplayCommandOptions& options) {
  std::vector<Variables> rows(1);
  if (!options.data.empty()) {
    rows = ParseCsv(options.data, ReadFile(options.data));
  }
  for (Variables& row : rows) {
    for (const std::string& assignment : options.set) {
      SetVariable(row, assignment);
    }
  }
  return rows;
}

void CheckProposals(const ReplayCommandOptions& options) {
  std::error_code ignored;
  if (!options.proposals.empty() &&
      std::filesystem::equivalent(PathOf(options.proposals), PathOf(options.file), ignored)) {
    throw Failure(ExitCode::Usage, "--proposals " + options.proposals + ": is the recording itself");
  }
}

void WriteProposals(const Recording& recording, const Replayed& replayed, const ReplayCommandOptions& options) {
  if (!options.proposals.empty() && Sum(replayed).healed > 0) {
    WriteFile(options.proposals, WriteRecording(Corrected(recording, replayed)));
    std::cout << "  proposals: " << options.proposals << "\n";
  }
}

// Before anything is clicked: a replay that ends for want of a folder to write to has already changed something.
void CheckReportFolder(const std::string& report) {
  const auto folder = PathOf(report).parent_path();
  std::error_code ignored;
  if (!report.empty() && !folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
    throw Failure(ExitCode::CannotWrite, report + ": cannot be written: its folder does not exist");
  }
}

void Tell(const Replayed& replayed, const ReplayCommandOptions& options) {
  for (const Run& run : replayed.runs) {
    for (const StepResult& result : run.steps) {
      if (!result.explanation.empty()) {
        std::cout << "\n" << (run.name.empty() ? "" : run.name + ": ") << result.explanation << "\n";
      }
    }
  }
  std::cout << "\n  " << Describe(Sum(replayed)) << ", in " << Milliseconds(replayed.milliseconds)
            << (options.dryRun ? "; nothing was done" : "") << "\n";
  if (replayed.rowsLeft > 0) {
    std::cout << "  rows not begun: " << replayed.rowsLeft << "\n";
  }
  if (!options.report.empty()) {
    std::cout << "  report: " << options.report << "\n";
  }
  if (!options.log.empty()) {
    std::cout << "  log: " << options.log << "\n";
  }
}

}  // namespace

ExitCode RunReplay(const ReplayCommandOptions& options) {
  const Recording recording = LoadRecording(options.file);
  const std::vector<Variables> rows = RowsOf(options);
  const auto firstRow = static_cast<std::size_t>(options.row) - 1;
  if (firstRow >= rows.size()) {
    throw Failure(ExitCode::Usage, "--row " + std::to_string(options.row) + ": " + options.data + " has " +
                                       std::to_string(rows.size()) + " rows");
  }
  const auto from = static_cast<std::size_t>(options.from) - 1;
  if (from >= recording.steps.size()) {
    throw Failure(ExitCode::Usage, "--from " + std::to_string(options.from) + ": " + options.file + " has " +
                                       std::to_string(recording.steps.size()) + " steps");
  }
  for (std::size_t row = firstRow; row < rows.size(); ++row) {
    CheckVariables(recording, options.file, row == firstRow ? from : 0, rows[row]);
  }
  CheckReportFolder(options.report);
  CheckProposals(options);
  LibraryLog log(options.log);
  for (const std::string& line : CheckReadiness(recording, options.file)) {
    std::cout << "  note: " << line << "\n";
  }
  const RunOptions run{options.timeoutMs, options.dryRun, !options.report.empty(), options.strict};
  const ReplayOptions replay{options.file, run, firstRow, from, options.keepGoing};
  const Replayed replayed = Replay(recording, rows, log, replay, ShowProgress(recording));
  if (!options.report.empty()) {
    WriteFile(options.report, WriteReport(recording, replayed, replay));
  }
  Tell(replayed, options);
  WriteProposals(recording, replayed, options);
  return replayed.code;
}

}  // namespace host
