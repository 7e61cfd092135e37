// Recording while somebody works: what is told of it, the hotkeys, and going on behind a step.
#include <algorithm>
#include <array>
#include <iostream>

#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/commands/progress.h"
#include "host/engine/library_log.h"
#include "host/engine/replay.h"
#include "host/engine/start_program.h"
#include "host/recorder/recorder.h"
#include "host/recording/recording_file.h"
#include "host/recording/variables.h"
#include "host/world/interruption.h"

namespace host {

namespace {

struct HotkeyWords {
  RecorderCommand command;
  const char* name;
  const char* keys;  // unless the command line says otherwise; with Ctrl and Alt they would type on some layouts
  const char* meaning;
};
constexpr std::array kHotkeys = {
    HotkeyWords{RecorderCommand::CheckNext, "check", "Ctrl+Shift+F5", "the next click says what is checked"},
    HotkeyWords{RecorderCommand::WaitNext, "wait", "Ctrl+Shift+F6", "the next click says what is waited for"},
    HotkeyWords{RecorderCommand::ReadNext, "read", "Ctrl+Shift+F7", "the next click says what is read"},
    HotkeyWords{RecorderCommand::Undo, "undo", "Ctrl+Shift+F8", "takes the last step back"},
    HotkeyWords{RecorderCommand::Pause, "pause", "Ctrl+Shift+F9", "records nothing until it is pressed again"},
    HotkeyWords{RecorderCommand::End, "end", "Ctrl+Shift+F10", "ends; so does Ctrl+C here"},
};

// Failure: Usage
std::array<std::string, kHotkeys.size()> KeysOf(const std::vector<std::string>& changes) {
  std::array<std::string, kHotkeys.size()> keys;
  std::transform(kHotkeys.begin(), kHotkeys.end(), keys.begin(), [](const HotkeyWords& words) { return words.keys; });
  for (const std::string& change : changes) {
    const auto equals = change.find('=');
    const auto* const words = std::find_if(kHotkeys.begin(), kHotkeys.end(), [&](const HotkeyWords& each) {
      return EqualsIgnoringCase(each.name, change.substr(0, equals));
    });
    const auto codes = equals == std::string::npos ? std::nullopt : FindShortcut(change.substr(equals + 1));
    if (words == kHotkeys.end() || !codes) {
      throw Failure(ExitCode::Usage, "--hotkey " + Shortened(change, kNameColumns) +
                                         ": must be check, wait, read, undo, pause or end, = and keys such as Ctrl+F8");
    }
    keys[static_cast<std::size_t>(words - kHotkeys.begin())] = *NameOfShortcut(*codes);
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (std::find(keys.begin() + static_cast<std::ptrdiff_t>(i) + 1, keys.end(), keys[i]) != keys.end()) {
      throw Failure(ExitCode::Usage, "--hotkey: " + keys[i] + " has two meanings");
    }
  }
  return keys;
}

std::string Entered(const Step& step) {
  return WordsOf(step.action).textField == nullptr || step.action == Action::Shortcut
             ? ""
             : "  \"" + Shortened(step.text, kNameColumns) + "\"";
}

void Tell(std::size_t index, const Step& step, const std::vector<std::string>& warnings) {
  std::cout << "  " << index + 1 << "  " << Title(step) << Entered(step) << "\n";
  for (const std::string& warning : warnings) {
    std::cout << "     note: " << warning << "\n";
  }
  std::cout << std::flush;
}

void TellDelays(std::vector<double> delays) {
  if (delays.empty()) {
    return;
  }
  const auto middle = delays.begin() + static_cast<std::ptrdiff_t>(delays.size() / 2);
  std::nth_element(delays.begin(), middle, delays.end());
  std::cout << "  clicks waited " << Milliseconds(*middle) << " until their target was known (at most "
            << Milliseconds(*std::max_element(delays.begin(), delays.end())) << ")\n";
}

// The recording, with its first steps done. Failure: StepFailed and others, when they cannot be.
Recording DoneUpTo(const RecordOptions& options) {
  Recording recording = LoadRecording(options.file);
  const auto from = static_cast<std::size_t>(options.from);
  if (from > recording.steps.size()) {
    throw Failure(ExitCode::Usage, "--from " + std::to_string(from) + ": " + options.file + " has " +
                                       std::to_string(recording.steps.size()) + " steps");
  }
  Recording first = recording;
  first.steps.resize(from);
  std::vector<DataRow> rows(1);
  TakeSecrets(first, {}, rows.front().values);
  AskForSecrets(first, rows);
  CheckVariables(first, options.file, 0, rows.front().values);
  LibraryLog log("");
  StartIfNeeded(first, RunOptions().timeoutMs);
  ReplayOptions replay;
  replay.file = options.file;
  const Replayed replayed = Replay(first, rows, log, replay, ShowProgress(first, false));
  if (replayed.code != ExitCode::Ok) {
    throw Failure(replayed.code, options.file + ": a step before that place failed, so nothing is recorded behind it");
  }
  return recording;
}

}  // namespace

Recording RecordByDoing(const RecordOptions& options, OutputFile& output) {
  const auto keys = KeysOf(options.hotkeys);
  std::vector<RecorderHotkey> hotkeys;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    hotkeys.push_back({kHotkeys[i].command, world::ChordOf(*FindShortcut(keys[i]))});
  }
  Recording begun = options.from == 0 ? Recording() : DoneUpTo(options);
  begun.start = options.start.empty() ? begun.start : options.start;
  const LibraryLog log("");
  const world::InterruptionWatch interruption;
  std::optional<Recorder> recorder;
  // Each step is in the file as soon as it is recorded.
  const auto keep = [&] {
    if (!recorder->Result().steps.empty()) {
      output.Write(WriteRecording(recorder->Result()));
    }
  };
  recorder.emplace(
      std::move(begun), static_cast<std::size_t>(options.from), std::move(hotkeys), !options.plain,
      RecorderListener{[&](std::size_t index, const Step& step, const std::vector<std::string>& warnings) {
                         Tell(index, step, warnings);
                         keep();
                       },
                       [&](std::size_t left) {
                         std::cout << "     taken back; " << left << " left\n" << std::flush;
                         keep();
                       },
                       [](const std::string& line) { std::cout << "     " << line << "\n"
                                                               << std::flush; }});
  std::cout << "Work as always: each click, text and key becomes a step. Hotkeys:\n";
  for (std::size_t i = 0; i < keys.size(); ++i) {
    std::cout << "  " << Padded(keys[i], 16) << kHotkeys[i].meaning << "\n";
  }
  std::cout << std::flush;
  recorder->Run(world::IsInterrupted);
  TellDelays(recorder->Delays());
  return recorder->Result();
}

}  // namespace host
