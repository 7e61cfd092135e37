#include <filesystem>
#include <iostream>

#include "host/base/file.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/find_window.h"
#include "host/engine/library_log.h"
#include "host/engine/run_step.h"
#include "host/recording/recording_file.h"

namespace host {

namespace {

// As a replay would find the step's target, and what each identification finds alone.
StepResult Look(const Recording& recording, std::size_t index, const world::Window& window) {
  StepResult result;
  result.index = index;
  result.step = &recording.steps[index];
  const Step& step = *result.step;
  const Sought sought{step.target, step.label, recording.windows[step.window], window};
  const double start = world::Now();
  const Aim aim = TakeAim(sought, ClicksTarget(step), false);
  result.milliseconds = world::Now() - start;
  TellFinding(aim, step, window, sought.recorded, result);
  result.remark = aim.refusal.empty() ? aim.remark : aim.refusal;
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

}  // namespace

ExitCode Check(const CheckOptions& options) {
  const Recording recording = LoadRecording(options.file);
  const LibraryLog log("");
  std::vector<std::optional<world::Window>> windows;
  for (const WindowName& name : recording.windows) {
    windows.push_back(AwaitWindow(name, options.timeoutMs, [] { return false; }));
  }
  Table table({"step", "action", "answers", "AutomationId", "tree path", "screen point"});
  Recording corrected = recording;
  std::string remarks;
  std::size_t failed = 0;
  std::size_t healed = 0;
  std::size_t lost = 0;  // with their window
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    const std::string number = Padded(std::to_string(i + 1), 4) + step.name;
    const auto& window = windows[step.window];
    if (!window) {
      table.Add({number, WordsOf(step.action).word, "NO WINDOW", "", "", ""});
      ++lost;
      continue;
    }
    if (!step.hasTarget) {
      table.Add({number, WordsOf(step.action).word, "needs no target", "", "", ""});
      continue;
    }
    const StepResult result = Look(recording, i, *window);
    table.Add({number, WordsOf(step.action).word, AnswerOf(result),
               DescribeAttempt(result, Identification::AutomationId), DescribeAttempt(result, Identification::TreePath),
               DescribeAttempt(result, Identification::ScreenPoint)});
    failed += result.state == StepState::Failed ? 1 : 0;
    healed += result.state == StepState::Healed ? 1 : 0;
    const std::string remark = result.healing.empty() ? result.remark : result.healing;
    remarks += remark.empty() ? "" : "  " + NameOf(i, step) + ": " + remark + "\n";
    corrected.steps[i].target = result.proposal.value_or(step.target);
  }
  std::cout << table.Text() << "\n"
            << remarks << (remarks.empty() ? "" : "\n") << "  " << recording.steps.size() << " steps, " << failed + lost
            << " cannot be done, " << healed << " healed\n";
  if (options.fix && healed > 0) {
    WriteFixed(corrected, options);
  }
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (!windows[i]) {
      std::cout.flush();
      throw Failure(ExitCode::NoWindow, options.file + ": window " + std::to_string(i + 1) + ": there is no window " +
                                            Describe(recording.windows[i]));
    }
  }
  return failed > 0 || (options.strict && healed > 0) ? ExitCode::StepFailed : ExitCode::Ok;
}

}  // namespace host
