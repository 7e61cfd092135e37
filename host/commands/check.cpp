#include <algorithm>
#include <filesystem>
#include <iostream>

#include "host/base/file.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/commands/json_answer.h"
#include "host/engine/find_window.h"
#include "host/engine/library_log.h"
#include "host/engine/run_step.h"
#include "host/recording/recording_file.h"
#include "host/report/result_json.h"

namespace host {

namespace {

// As a replay would find the step's target, and what each identification finds alone.
StepResult Look(const Recording& recording, std::size_t index, const std::optional<world::Window>& window) {
  StepResult result;
  result.index = index;
  result.step = &recording.steps[index];
  const Step& step = *result.step;
  if (!window) {
    result.windowGone = true;
    result.code = KORVANE_NOT_FOUND;
    result.state = StepState::Failed;
    return result;
  }
  if (!step.hasTarget) {
    result.remark = "needs no target";
    return result;
  }
  const Sought sought{step.target, step.label, recording.windows[step.window], *window};
  const double start = world::Now();
  const Aim aim = TakeAim(sought, ClicksTarget(step), false);
  result.milliseconds = world::Now() - start;
  TellFinding(aim, step, *window, result);
  result.remark = aim.refusal.empty() ? aim.remark : aim.refusal;
  result.code = aim.refusal.empty() ? KORVANE_OK : KORVANE_NOT_FOUND;
  result.state = !aim.refusal.empty()        ? StepState::Failed
                 : aim.identified.IsHealed() ? StepState::Healed
                                             : StepState::Ok;
  for (const Identification by : kIdentifications) {
    const bool known = std::any_of(result.attempts.begin(), result.attempts.end(),
                                   [by](const Attempt& attempt) { return attempt.by == by; });
    if (!known) {
      result.attempts.push_back(TryAlone(sought, by));
    }
  }
  return result;
}

std::string AnswerOf(const StepResult& result) {
  if (result.windowGone) {
    return "NO WINDOW";
  }
  if (result.state == StepState::NotRun) {
    return result.remark;
  }
  if (result.state == StepState::Failed) {
    for (const Attempt& attempt : result.attempts) {
      if (attempt.by == result.preferred && attempt.finding == Finding::Another) {
        return "ANOTHER ELEMENT";
      }
    }
    return result.foundBy ? "OUT OF REACH" : "NONE";
  }
  return NameOf(*result.foundBy) + std::string(result.state == StepState::Healed ? " (healed)" : "") + ", " +
         Milliseconds(result.milliseconds);
}

std::string DescribeAttempt(const StepResult& result, Identification by) {
  for (const Attempt& attempt : result.attempts) {
    if (attempt.by == by) {
      return Describe(attempt);
    }
  }
  return {};
}

void WriteFixed(const Recording& recording, const CheckOptions& options) {
  const auto path = PathOf(options.file);
  const std::string fixed = options.force
                                ? options.file
                                : options.file.substr(0, options.file.size() - path.extension().string().size()) +
                                      ".fixed" + path.extension().string();
  if (std::error_code ignored; !options.force && std::filesystem::exists(PathOf(fixed), ignored)) {
    throw Failure(ExitCode::CannotWrite, fixed + ": is there already; --force corrects " + options.file + " itself");
  }
  OutputFile(fixed).Write(WriteRecording(recording));
  std::cout << "  corrected: " << fixed << "\n";
}

void Tell(const Recording& recording, const std::vector<StepResult>& results) {
  Table table({"step", "action", "answers", "AutomationId", "tree path", "screen point"});
  std::string remarks;
  std::size_t failed = 0;
  std::size_t healed = 0;
  for (const StepResult& result : results) {
    const Step& step = *result.step;
    table.Add({Padded(std::to_string(result.index + 1), 4) + step.name, WordsOf(step.action).word, AnswerOf(result),
               DescribeAttempt(result, Identification::AutomationId), DescribeAttempt(result, Identification::TreePath),
               DescribeAttempt(result, Identification::ScreenPoint)});
    failed += result.state == StepState::Failed ? 1 : 0;
    healed += result.state == StepState::Healed ? 1 : 0;
    const std::string remark = result.healing.empty() ? result.remark : result.healing;
    const bool told = remark.empty() || result.state == StepState::NotRun;
    remarks += told ? "" : "  " + NameOf(result.index, step) + ": " + remark + "\n";
  }
  std::cout << table.Text() << "\n"
            << remarks << (remarks.empty() ? "" : "\n") << "  " << recording.steps.size() << " steps, " << failed
            << " cannot be done, " << healed << " healed\n";
}

ExitCode CheckAndTell(const CheckOptions& options, Json& answer) {
  answer["file"] = options.file;
  const Recording recording = LoadRecording(options.file);
  const LibraryLog log("");
  std::vector<std::optional<world::Window>> windows;
  for (const WindowName& name : recording.windows) {
    windows.push_back(AwaitWindow(name, options.timeoutMs, [] { return false; }));
  }
  Recording corrected = recording;
  std::vector<StepResult> results;
  const auto has = [&results](StepState state) {
    return std::any_of(results.begin(), results.end(), [state](const StepResult& each) { return each.state == state; });
  };
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const StepResult& result = results.emplace_back(Look(recording, i, windows[recording.steps[i].window]));
    answer["steps"].push_back(ResultToJson(result));
    corrected.steps[i].target = result.proposal.value_or(recording.steps[i].target);
  }
  Tell(recording, results);
  if (options.fix && has(StepState::Healed)) {
    WriteFixed(corrected, options);
  }
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (!windows[i]) {
      std::cout.flush();
      throw Failure(ExitCode::NoWindow, options.file + ": window " + std::to_string(i + 1) + ": there is no window " +
                                            Describe(recording.windows[i]));
    }
  }
  const bool fails = has(StepState::Failed) || (options.strict && has(StepState::Healed));
  return fails ? ExitCode::StepFailed : ExitCode::Ok;
}

}  // namespace

ExitCode Check(const CheckOptions& options) {
  return AnswerInJson(options.json, "check", [&](Json& answer) { return CheckAndTell(options, answer); });
}

}  // namespace host
