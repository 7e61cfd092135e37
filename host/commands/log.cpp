#include <algorithm>
#include <iostream>

#include "host/base/file.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/library_log.h"
#include "host/engine/log_summary.h"
#include "host/engine/result_words.h"

namespace host {

namespace {

void ShowSteps(const LogSummary& summary) {
  Table table({"time", "step", "result", "duration"});
  for (const LoggedStep& step : summary.steps) {
    // Waits and comparisons answer 1 for yes.
    const std::string result = step.result > 0 ? std::to_string(step.result) : WordsOfCode(step.result);
    table.Add({step.time, Shortened(step.action, 50), result, std::to_string(step.milliseconds) + " ms"});
  }
  std::cout << table.Text() << "\n";
}

void ShowTotals(const LogSummary& summary) {
  long long total = 0;
  const LoggedStep* slowest = nullptr;
  int failed = 0;
  for (const LoggedStep& step : summary.steps) {
    total += step.milliseconds;
    slowest = slowest == nullptr || step.milliseconds > slowest->milliseconds ? &step : slowest;
    failed += step.result < 0 ? 1 : 0;
  }
  std::cout << "  " << summary.lines << " lines, " << summary.steps.size() << " steps, " << failed << " failed, "
            << total << " ms\n";
  if (slowest != nullptr) {
    std::cout << "  slowest: " << Shortened(slowest->action, 50) << ", " << slowest->milliseconds << " ms\n";
  }
  std::cout << "  targets searched for: " << summary.searches
            << ", clicked from memory (cache hits): " << summary.cacheHits << "\n";
  for (const auto& [code, count] : summary.failuresByCode) {
    std::cout << "  steps that ended with " << code << " (" << WordsOfCode(code) << "): " << count << "\n";
  }
  for (const auto& [reason, count] : summary.errorsByReason) {
    std::cout << "  error " << reason << ": " << count << "\n";
  }
}

}  // namespace

ExitCode ShowLog(const std::string& file) {
  const LogSummary summary = Summarise(LogLines(ReadFile(file)));
  if (!summary.steps.empty()) {
    ShowSteps(summary);
  }
  ShowTotals(summary);
  return ExitCode::Ok;
}

}  // namespace host
