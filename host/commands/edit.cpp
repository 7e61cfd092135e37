#include <algorithm>
#include <iostream>

#include "host/base/file.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/best_identification.h"
#include "host/engine/find_window.h"
#include "host/engine/library_log.h"
#include "host/recording/recording_file.h"

namespace host {

namespace {

void List(const Recording& recording) {
  Table table({"step", "action", "text", "window", "AutomationId", "point"});
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    const TargetRecord& target = step.target;
    table.Add({Padded(std::to_string(i + 1), 4) + step.name, WordsOf(step.action).word, step.text,
               recording.windows[step.window].title, Utf8(target.automationId),
               step.hasTarget ? std::to_string(target.x) + "," + std::to_string(target.y) : ""});
  }
  std::cout << table.Text();
}

// The place of a step that the command line numbers from 1.
std::size_t PlaceOf(const EditOptions& options, const Recording& recording, const std::string& number) {
  const bool digits =
      !number.empty() && number.size() < 7 && number.find_first_not_of("0123456789") == std::string::npos;
  const std::size_t place = digits ? std::stoul(number) : 0;
  if (place < 1 || place > recording.steps.size()) {
    throw Failure(ExitCode::Usage, options.file + ": has no step " + Shortened(number, kNameColumns) + ", only 1 to " +
                                       std::to_string(recording.steps.size()));
  }
  return place - 1;
}

void Delete(const EditOptions& options, Recording& recording) {
  std::vector<std::size_t> places;
  for (const std::string& number : options.remove) {
    places.push_back(PlaceOf(options, recording, number));
  }
  // From the end, so that the numbers before stay what they were.
  std::sort(places.rbegin(), places.rend());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  if (places.size() == recording.steps.size()) {
    throw Failure(ExitCode::Usage, options.file + ": a recording without steps is none; delete the file instead");
  }
  for (const std::size_t place : places) {
    recording.steps.erase(recording.steps.begin() + static_cast<std::ptrdiff_t>(place));
  }
}

void Move(const EditOptions& options, Recording& recording) {
  const std::size_t from = PlaceOf(options, recording, options.move[0]);
  const std::size_t to = PlaceOf(options, recording, options.move[1]);
  Step step = std::move(recording.steps[from]);
  recording.steps.erase(recording.steps.begin() + static_cast<std::ptrdiff_t>(from));
  recording.steps.insert(recording.steps.begin() + static_cast<std::ptrdiff_t>(to), std::move(step));
}

// The window of that name, which is added when none has it.
std::size_t PlaceOfWindow(Recording& recording, const world::Window& window) {
  const WindowName name = NameOf(window);
  const auto known = std::find_if(recording.windows.begin(), recording.windows.end(), [&](const WindowName& each) {
    return each.title == name.title && each.className == name.className && each.process == name.process;
  });
  if (known == recording.windows.end()) {
    recording.windows.push_back(name);
    return recording.windows.size() - 1;
  }
  return static_cast<std::size_t>(known - recording.windows.begin());
}

void Repoint(const EditOptions& options, Recording& recording) {
  const std::size_t place = PlaceOf(options, recording, options.repoint);
  Step& step = recording.steps[place];
  const std::string where = options.file + ": " + NameOf(place, step) + ": ";
  if (options.at.empty()) {
    throw Failure(ExitCode::Usage, where + "--at X,Y tells where it is to point");
  }
  const world::Point point{options.at[0], options.at[1]};
  const LibraryLog log("");
  TargetRecord captured{};
  const auto window = world::WindowAt(point);
  if (!window || captureTargetAtPoint(&captured, point.x, point.y) != KORVANE_OK) {
    throw Failure(ExitCode::StepFailed,
                  where + "there is no element at " + std::to_string(point.x) + "," + std::to_string(point.y));
  }
  const BestIdentification best = ChooseIdentification(captured, *window);
  for (const std::string& warning : best.warnings) {
    std::cout << "  note: " << NameOf(place, step) << ": " << warning << "\n";
  }
  step.target = best.record;
  // Another number each time the program starts.
  step.target.hwnd = nullptr;
  step.label = best.label;
  step.hasTarget = true;
  step.window = PlaceOfWindow(recording, *window);
}

void DropUnusedWindows(Recording& recording) {
  for (std::size_t i = recording.windows.size(); i-- > 0;) {
    const auto uses = [i](const Step& step) { return step.window == i; };
    if (std::any_of(recording.steps.begin(), recording.steps.end(), uses)) {
      continue;
    }
    recording.windows.erase(recording.windows.begin() + static_cast<std::ptrdiff_t>(i));
    for (Step& step : recording.steps) {
      step.window -= step.window > i ? 1 : 0;
    }
  }
}

}  // namespace

ExitCode Edit(const EditOptions& options) {
  Recording recording = LoadRecording(options.file);
  const bool changes =
      !options.remove.empty() || !options.move.empty() || !options.rename.empty() || !options.repoint.empty();
  if (changes) {
    // Opened first: what cannot be written is told before anything is captured. What is there stays until all is
    // written.
    OutputFile output(options.file);
    if (!options.remove.empty()) {
      Delete(options, recording);
    } else if (!options.move.empty()) {
      Move(options, recording);
    } else if (!options.rename.empty()) {
      recording.steps[PlaceOf(options, recording, options.rename[0])].name = options.rename[1];
    } else {
      Repoint(options, recording);
    }
    DropUnusedWindows(recording);
    output.Write(WriteRecording(recording));
  }
  List(recording);
  return ExitCode::Ok;
}

}  // namespace host
