// What the companion program's care costs: the steps of a recording as a replay does them, beside the bare calls of the
// library for the same steps.
//
//   replay_benchmark RECORDING ROWS
//
// Rows of the three kinds take turns, so that a slow moment of the machine falls on all of them. On the scripted
// desktop the time is what its calls into another program cost, and the work the processor's; elsewhere both are the
// same.
#include <algorithm>
#include <chrono>
#include <iostream>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/engine/find_window.h"
#include "host/engine/run_step.h"
#include "host/recording/recording_file.h"

namespace {

using host::Recording;
using host::Step;

enum class Memory { Kept, Forgotten };

bool Succeeds(const Step& step, HWND window, const host::Variables& variables) {
  const host::WideText text = host::Wide(host::Expand(step.text, variables, step.name));
  switch (step.action) {
    case host::Action::Click:
      return clickTarget(&step.target, window) == KORVANE_OK;
    case host::Action::Paste:
      return setClipboardText(text.c_str()) == KORVANE_OK &&
             pasteToTargetWithVerifyEx(&step.target, window, 3000) == KORVANE_OK;
    case host::Action::Type:
      return clickTarget(&step.target, window) == KORVANE_OK && sendKeySequence(text.c_str(), 1) == KORVANE_OK;
    default: {
      KorvaneChar* const shown = getTargetText(&step.target, window);
      freeTextResult(shown);
      return shown != nullptr;
    }
  }
}

// The library remembers where a target was clicked last; whoever must not click another one makes it forget.
bool RunBare(const Recording& recording, HWND window, const host::Variables& variables, Memory memory) {
  bool succeeded = true;
  for (const Step& step : recording.steps) {
    if (memory == Memory::Forgotten) {
      clearElementCache();
    }
    // What the step before did takes its time to show.
    const bool waits = step.action == host::Action::Wait;
    for (int look = 0; !Succeeds(step, window, variables) && (succeeded = waits && look < 100); ++look) {
      delay(10);
    }
  }
  return succeeded;
}

bool RunCareful(const Recording& recording, host::LibraryLog& log, host::Variables variables) {
  host::StepRunner runner(recording, log, {});
  bool succeeded = true;
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    succeeded = runner.Run(i, variables).state == host::StepState::Ok && succeeded;
  }
  return succeeded;
}

struct Kind {
  const char* name;
  std::function<bool()> run;
  std::vector<double> times;  // milliseconds of a row
  std::vector<double> works;
};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

int Measure(const std::vector<std::string>& words) {
  const Recording recording = host::LoadRecording(words.at(0));
  const host::Variables variables{{"NAME", "Ada"}, {"ARTICLE", "Lamp"}};
  host::LibraryLog log("");
  const auto window = host::FindWindow(recording.windows.at(0));
  if (!window) {
    throw host::Failure(host::ExitCode::NoWindow, "the recorded window is not there");
  }
  std::vector<Kind> kinds = {
      {"library, from memory", [&] { return RunBare(recording, window->handle, variables, Memory::Kept); }, {}, {}},
      {"library, searching", [&] { return RunBare(recording, window->handle, variables, Memory::Forgotten); }, {}, {}},
      {"replay", [&] { return RunCareful(recording, log, variables); }, {}, {}}};
  for (int row = 0; row < std::stoi(words.at(1)); ++row) {
    for (Kind& kind : kinds) {
      clearElementCache();
      // Two clicks on one spot within its time would be a double click.
      delay(700);
      const double begin = host::world::Now();
      const auto start = std::chrono::steady_clock::now();
      if (!kind.run()) {
        throw host::Failure(host::ExitCode::StepFailed, std::string(kind.name) + ": a step failed");
      }
      const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
      kind.works.push_back(elapsed.count());
      kind.times.push_back(host::world::Now() - begin);
    }
  }
  for (const Kind& kind : kinds) {
    const auto steps = static_cast<double>(recording.steps.size());
    std::cout << kind.name << ": " << Median(kind.times) / steps << " ms a step, " << Median(kind.works) / steps
              << " of work, " << Median(kind.times) / Median(kinds[1].times) << " x the library that searches\n";
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    host::world::Start();
    return Measure(host::world::Arguments(count, arguments));
  } catch (const std::exception& error) {
    std::cerr << "replay_benchmark: " << error.what() << "\n";
    return 1;
  }
}
