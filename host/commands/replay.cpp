#include "host/engine/replay.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <utility>

#include "host/base/encoding.h"
#include "host/base/file.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/commands/json_answer.h"
#include "host/commands/progress.h"
#include "host/engine/readiness.h"
#include "host/engine/start_program.h"
#include "host/recording/recording_file.h"
#include "host/recording/secrets.h"
#include "host/report/junit.h"
#include "host/report/report.h"
#include "host/report/result_json.h"
#include "host/world/interruption.h"
#include "host/world/machine.h"

namespace host {

namespace {

std::vector<DataRow> RowsOf(const Recording& recording, const ReplayCommandOptions& options) {
  std::vector<DataRow> rows(1);
  if (!options.data.empty()) {
    const std::string bytes = ReadFile(options.data);
    rows = ParseData(options.data, options.encoding.empty() ? bytes : Decoded(options.data, bytes, options.encoding));
  }
  for (DataRow& row : rows) {
    for (const std::string& assignment : options.set) {
      SetVariable(row.values, assignment);
    }
    TakeSecrets(recording, options.set, row.values);
  }
  AskForSecrets(recording, rows);
  return rows;
}

std::size_t FirstRow(const std::vector<DataRow>& rows, const ReplayCommandOptions& options) {
  if (options.row == 0) {
    return 0;
  }
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const DataRow& row) { return row.number == options.row; });
  if (found == rows.end()) {
    throw Failure(ExitCode::Usage, "--row " + std::to_string(options.row) + ": " + options.data + " has rows " +
                                       std::to_string(rows.front().number) + " to " +
                                       std::to_string(rows.back().number));
  }
  return static_cast<std::size_t>(found - rows.begin());
}

// An output that is an input, or another output, would destroy it.
void CheckNames(const ReplayCommandOptions& options) {
  struct Named {
    const char* option;
    const std::string& name;
  };
  const Named outputs[] = {{"--report", options.report},
                           {"--junit", options.junit},
                           {"--log", options.log},
                           {"--proposals", options.proposals}};
  const auto refuseSame = [](const Named& output, const std::string& other, const std::string& what) {
    if (!output.name.empty() && !other.empty() && AreSameFile(output.name, other)) {
      throw Failure(ExitCode::Usage, std::string(output.option) + " " + output.name + ": is " + what);
    }
  };
  for (std::size_t i = 0; i < std::size(outputs); ++i) {
    refuseSame(outputs[i], options.file, "the recording itself");
    refuseSame(outputs[i], options.data, "the data itself");
    for (std::size_t other = 0; other < i; ++other) {
      refuseSame(outputs[i], outputs[other].name, std::string("also the file of ") + outputs[other].option);
    }
  }
}

// Opened before anything is clicked: a replay that ends for want of a file to write has already changed something.
struct Outputs {
  Outputs(const ReplayCommandOptions& options, const Recording& recording, const std::vector<DataRow>& rows) {
    if (!options.report.empty()) {
      report.emplace(options.report, recording, rows);
    }
    if (!options.junit.empty()) {
      junit.emplace(options.junit);
    }
    if (!options.proposals.empty()) {
      proposals.emplace(options.proposals);
    }
  }
  std::optional<ReportWriter> report;
  std::optional<OutputFile> junit;
  std::optional<OutputFile> proposals;
};

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
  if (!options.log.empty()) {
    std::cout << "  log: " << options.log << "\n";
  }
}

std::vector<std::pair<std::string, std::string>> FactsOf(const ReplayCommandOptions& options, const Secrets& secrets) {
  const world::Screen screen = world::TheScreen();
  const int percent = screen.dpi * 100 / 96;
  return {{"Command", secrets.Masked(options.commandLine)},
          {"Program", "korvane " HOST_VERSION},
          {"Machine", world::MachineName()},
          {"System", world::SystemName()},
          {"Screen", std::to_string(screen.rect.right - screen.rect.left) + " × " +
                         std::to_string(screen.rect.bottom - screen.rect.top) +
                         (percent > 0 ? ", scaled to " + std::to_string(percent) + " %" : "")}};
}

// A report that is there already is replaced when the first step begins, and not before.
Progress WithReport(const Progress& shown, ReportWriter& report, const ReplayOptions& options) {
  Progress progress = shown;
  progress.runBegins = [shown, &report, &options, begun = false](const Run& run) mutable {
    if (!std::exchange(begun, true)) {
      report.Begin(options);
    }
    report.BeginRun(run);
    shown.runBegins(run);
  };
  progress.stepEnds = [shown, &report](const StepResult& result) {
    report.Add(result);
    shown.stepEnds(result);
  };
  return progress;
}

ExitCode ReplayAndTell(const ReplayCommandOptions& options, Json& answer) {
  answer["file"] = options.file;
  const Recording recording = LoadRecording(options.file);
  const std::vector<DataRow> rows = RowsOf(recording, options);
  const std::size_t firstRow = FirstRow(rows, options);
  const auto from = static_cast<std::size_t>(options.from) - 1;
  if (from >= recording.steps.size()) {
    throw Failure(ExitCode::Usage, "--from " + std::to_string(options.from) + ": " + options.file + " has " +
                                       std::to_string(recording.steps.size()) + " steps");
  }
  for (std::size_t row = firstRow; row < rows.size(); ++row) {
    CheckVariables(recording, options.file, row == firstRow ? from : 0, rows[row].values);
  }
  CheckNames(options);
  Outputs outputs(options, recording, rows);
  // Until everything is written: whoever closes the console still gets the report of what was done.
  const world::InterruptionWatch watch;
  Secrets secrets;
  for (const DataRow& row : rows) {
    secrets.AddFrom(row.values);
  }
  LibraryLog log(options.log, secrets);
  const bool started = !options.dryRun && StartIfNeeded(recording, options.timeoutMs);
  for (const std::string& line : CheckReadiness(recording, options.file)) {
    std::cout << "  note: " << line << "\n";
  }
  const RunOptions run{options.timeoutMs, options.dryRun, !options.report.empty(), options.strict, secrets};
  const ReplayOptions replay{options.file,     run, firstRow, from, options.retries, FactsOf(options, secrets),
                             options.keepGoing};
  Progress progress = ShowProgress(recording, world::OutputIsTerminal() && !options.json);
  if (outputs.report) {
    progress = WithReport(progress, *outputs.report, replay);
  }
  const Replayed replayed = Replay(recording, rows, log, replay, progress);
  const bool stays = started && options.close && !CloseStarted(recording, options.timeoutMs);
  answer.update(ReplayToJson(recording, rows, replayed));
  // What is told does not depend on what can be written.
  Tell(replayed, options);
  if (stays) {
    std::cout << "  note: the program that was started is still open: it may be asking something\n";
  }
  if (outputs.report) {
    outputs.report->End(replayed);
    std::cout << "  report: " << options.report << "\n";
  }
  if (outputs.junit) {
    outputs.junit->Write(WriteJunit(recording, replayed, replay));
    std::cout << "  test results: " << options.junit << "\n";
  }
  if (std::getenv("GITHUB_ACTIONS") != nullptr) {
    std::cout << WriteAnnotations(replayed, replay);
  }
  if (outputs.proposals && Sum(replayed).healed > 0) {
    outputs.proposals->Write(WriteRecording(Corrected(recording, replayed)));
    std::cout << "  proposals: " << options.proposals << "\n";
  }
  return replayed.code;
}

}  // namespace

ExitCode RunReplay(const ReplayCommandOptions& options) {
  return AnswerInJson(options.json, "replay", [&](Json& answer) { return ReplayAndTell(options, answer); });
}

}  // namespace host
