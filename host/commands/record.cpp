#include <iostream>

#include "host/base/file.h"
#include "host/base/shortcut.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/await.h"
#include "host/engine/best_identification.h"
#include "host/engine/explain.h"
#include "host/engine/find_window.h"
#include "host/engine/library_log.h"
#include "host/engine/run_step.h"
#include "host/recording/recording_file.h"

#include "host/world/program.h"

namespace host {

namespace {

std::string PointText(world::Point point) {
  return std::to_string(point.x) + "," + std::to_string(point.y);
}

// A recording as it grows.
class PointedSteps {
 public:
  // Captures what is at the point as the step's target. Failure: StepFailed, beginning with `where`
  void AddTarget(Step& step, world::Point point, std::optional<int> method, const std::string& where) {
    if (captureTargetAtPoint(&step.target, point.x, point.y) != KORVANE_OK) {
      throw Failure(ExitCode::StepFailed, where + "there is no element at " + PointText(point));
    }
    const auto window = world::WindowAt(point);
    if (!window) {
      throw Failure(ExitCode::StepFailed, where + "there is no window at " + PointText(point));
    }
    const BestIdentification best = ChooseIdentification(step.target, *window, method);
    step.target = best.record;
    step.label = best.label;
    for (const std::string& warning : best.warnings) {
      std::cout << "     note: " << where << warning << "\n";
    }
    step.hasTarget = true;
    step.window = IndexOf(*window);
  }

  void Add(Step step) {
    if (!step.hasTarget) {
      step.window = lastWindow_;
    }
    lastWindow_ = step.window;
    recording_.steps.push_back(std::move(step));
  }

  void RemoveLast() {
    recording_.steps.pop_back();
  }

  std::size_t IndexOf(const world::Window& window) {
    for (std::size_t i = 0; i < handles_.size(); ++i) {
      if (handles_[i] == window.handle) {
        return i;
      }
    }
    handles_.push_back(window.handle);
    recording_.windows.push_back(NameOf(window));
    recording_.screen = world::TheScreen();
    return handles_.size() - 1;
  }

  const Recording& Result() const {
    return recording_;
  }

 private:
  Recording recording_;
  std::vector<HWND> handles_;
  std::size_t lastWindow_ = 0;
};

// Does the steps of a script as a replay would, so that the next one finds what they bring about.
class ScriptedWork {
 public:
  ScriptedWork(const Recording& recording, const std::string& file, LibraryLog& log)
      : file_(file), runner_(recording, log, {}) {}

  // Failure: StepFailed, Cancelled
  void Do(std::size_t index, const Step& step) {
    const StepResult result = runner_.Run(index, variables_);
    if (result.state == StepState::Failed) {
      throw Failure(result.code == KORVANE_CANCELLED ? ExitCode::Cancelled : ExitCode::StepFailed,
                    Explain(result, file_));
    }
    std::cout << "  " << index + 1 << "  " << Title(step) << "\n" << std::flush;
    // The next page of a wizard may take a moment, and what is captured too early is of the page before.
    constexpr int kSettleMs = 300;
    Await(kSettleMs, [] { return false; });
  }

 private:
  std::string file_;
  StepRunner runner_;
  Variables variables_;
};

Recording RecordScript(const RecordOptions& options) {
  const std::string& file = options.script;
  const Script script = LoadScript(file);
  LibraryLog log("");
  constexpr int kWindowTimeoutMs = 3000;
  world::Point origin;
  PointedSteps recorder;
  std::optional<ScriptedWork> work;
  if (options.act) {
    work.emplace(recorder.Result(), file, log);
  }
  if (script.window) {
    const auto window = AwaitWindow(*script.window, kWindowTimeoutMs, [] { return false; });
    if (!window) {
      throw Failure(ExitCode::NoWindow, file + ": field \"window\": there is no window " + Describe(*script.window));
    }
    origin = {window->rect.left, window->rect.top};
    recorder.IndexOf(*window);
  }
  for (std::size_t i = 0; i < script.steps.size(); ++i) {
    ScriptStep scripted = script.steps[i];
    const std::string where = file + ": " + NameOf(i, scripted.step) + ": ";
    if (scripted.step.hasTarget) {
      recorder.AddTarget(scripted.step, {origin.x + scripted.at.x, origin.y + scripted.at.y}, scripted.method,
                         where + "field \"at\": ");
    } else if (recorder.Result().windows.empty()) {
      throw Failure(ExitCode::BadFile, where + "comes before any window is known: give the script a \"window\"");
    }
    recorder.Add(scripted.step);
    if (work) {
      work->Do(i, scripted.step);
    }
  }
  return recorder.Result();
}

// ---- By pointing ----

constexpr const char* kInstructions =
    "Point at an element with the mouse, and with this terminal in front press a key:\n"
    "  c click   d double click   p paste text   t type   k shortcut   w wait for text   v check text   r read into a "
    "variable\n"
    "  u take the last step back   q write the file and end\n";

const ActionWords* ActionOfKey(char key) {
  static constexpr char kKeys[] = {'c', 'd', 'p', 't', 'k', 'w', 'v', 'r'};
  for (std::size_t i = 0; i < std::size(kKeys); ++i) {
    if (kKeys[i] == key) {
      return &AllActions()[i];
    }
  }
  return nullptr;
}

std::string AskForText(const ActionWords& words) {
  for (;;) {
    std::string text = world::AskForLine(std::string("     ") + words.textField + ": ");
    if (!text.empty() && (words.action != Action::Shortcut || FindShortcut(text))) {
      return text;
    }
    if (words.action == Action::Shortcut) {
      std::cout << "     one of " << AllShortcuts() << "\n";
    }
  }
}

void RecordOne(PointedSteps& recorder, const ActionWords& words) {
  Step step;
  step.action = words.action;
  try {
    // At once: while a text is typed, the mouse may wander.
    recorder.AddTarget(step, world::Cursor(), std::nullopt, "");
  } catch (const Failure& failure) {
    std::cout << "     " << failure.what() << "\n";
    return;
  }
  if (words.textField != nullptr) {
    step.text = AskForText(words);
  }
  step.name = world::AskForLine("     name of the step: ");
  recorder.Add(step);
  std::cout << "  " << recorder.Result().steps.size() << "  " << Title(step) << "\n";
}

// Each step is in the file as soon as it is recorded.
Recording RecordByPointing(OutputFile& output) {
  std::cout << kInstructions;
  const LibraryLog log("");
  PointedSteps recorder;
  for (;;) {
    const char key = world::WaitForKey();
    if (key == 'q') {
      return recorder.Result();
    }
    if (key == 'u' && !recorder.Result().steps.empty()) {
      recorder.RemoveLast();
      std::cout << "     taken back; " << recorder.Result().steps.size() << " left\n";
    } else if (const ActionWords* const words = ActionOfKey(key)) {
      RecordOne(recorder, *words);
      output.Write(WriteRecording(recorder.Result()));
    }
  }
}

void Show(const Recording& recording, const std::string& file) {
  Table table({"step", "action", "AutomationId", "levels", "point"});
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    const std::string number = Padded(std::to_string(i + 1), 4) + step.name;
    if (step.hasTarget) {
      table.Add({number, WordsOf(step.action).word, Utf8(step.target.automationId),
                 std::to_string(step.target.pathLength), PointText({step.target.x, step.target.y})});
    } else {
      table.Add({number, WordsOf(step.action).word, "", "", ""});
    }
  }
  std::cout << table.Text() << "\n  " << file << ": " << recording.steps.size() << " steps in "
            << Describe(recording.windows.front()) << "\n";
}

}  // namespace

ExitCode Record(const RecordOptions& options) {
  if (options.point) {
    if (const auto why = world::WhyNobodyCanPoint()) {
      throw Failure(ExitCode::NotHere, "record --point needs somebody who points, but " + *why + "; use --script");
    }
  }
  if (std::error_code ignored;
      !options.force && options.from == 0 && std::filesystem::exists(PathOf(options.file), ignored)) {
    throw Failure(ExitCode::CannotWrite, options.file + ": is there already; --force replaces it");
  }
  OutputFile output(options.file);
  if (!options.start.empty()) {
    world::StartProgram(options.start);
  }
  Recording recording = !options.script.empty() ? RecordScript(options)
                        : options.point         ? RecordByPointing(output)
                                                : RecordByDoing(options, output);
  if (recording.steps.empty()) {
    throw Failure(ExitCode::StepFailed, options.file + ": no step was recorded, so nothing is written");
  }
  recording.start = options.start.empty() ? recording.start : options.start;
  output.Write(WriteRecording(recording));
  Show(recording, options.file);
  return ExitCode::Ok;
}

}  // namespace host
