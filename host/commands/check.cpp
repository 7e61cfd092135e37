#include <iostream>

#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/find_window.h"
#include "host/engine/identify.h"
#include "host/engine/library_log.h"
#include "host/recording/recording_file.h"

namespace host {

namespace {

struct Row {
  std::string answer;
  bool resolved = true;
  std::vector<Attempt> attempts;
};

Row CheckTarget(const TargetRecord& target, HWND window, LibraryLog& log) {
  Row row;
  const Resolution resolution = Resolve(target, window, log);
  for (const Identification by : kIdentifications) {
    row.attempts.push_back(TryAlone(target, window, by));
  }
  row.resolved = resolution.code == KORVANE_OK && resolution.answeredBy.has_value();
  row.answer = row.resolved ? NameOf(*resolution.answeredBy) : "NONE";
  if (row.resolved && row.attempts[static_cast<std::size_t>(*resolution.answeredBy)].another) {
    row.answer += ": ANOTHER ELEMENT";
    row.resolved = false;
  }
  row.answer += ", " + Milliseconds(resolution.milliseconds);
  return row;
}

}  // namespace

ExitCode Check(const CheckOptions& options) {
  const Recording recording = LoadRecording(options.file);
  LibraryLog log("");
  std::vector<std::optional<world::Window>> windows;
  for (const WindowName& name : recording.windows) {
    windows.push_back(AwaitWindow(name, options.timeoutMs, [] { return false; }));
  }
  ExitCode code = ExitCode::Ok;
  Table table({"step", "action", "answers", "AutomationId", "tree path", "screen point"});
  std::size_t failed = 0;
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    const std::string number = Padded(std::to_string(i + 1), 4) + step.name;
    const auto& window = windows[step.window];
    if (!window) {
      table.Add({number, WordsOf(step.action).word, "NO WINDOW", "", "", ""});
      ++failed;
    } else if (!step.hasTarget) {
      table.Add({number, WordsOf(step.action).word, "needs no target", "", "", ""});
    } else {
      const Row row = CheckTarget(step.target, window->handle, log);
      table.Add({number, WordsOf(step.action).word, row.answer, Describe(row.attempts[0]), Describe(row.attempts[1]),
                 Describe(row.attempts[2])});
      failed += row.resolved ? 0 : 1;
      code = row.resolved ? code : ExitCode::StepFailed;
    }
  }
  std::cout << table.Text() << "\n  " << recording.steps.size() << " steps, " << failed << " cannot be done\n";
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (!windows[i]) {
      std::cout.flush();
      throw Failure(ExitCode::NoWindow, options.file + ": window " + std::to_string(i + 1) + ": there is no window " +
                                            Describe(recording.windows[i]));
    }
  }
  return code;
}

}  // namespace host
