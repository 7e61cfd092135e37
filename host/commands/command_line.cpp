#include "host/commands/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <utility>

#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/recording/recording.h"
#include "host/world/world.h"

namespace host {

namespace {

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  everything was done, or found; a healed step was, too\n"
    "  1  a step failed, or a target was not found; with --strict also a healed step\n"
    "  2  the command line is wrong, or a variable has no value\n"
    "  3  a file cannot be read, is not what it should be, or is of a newer version\n"
    "  4  the recorded window is not there\n"
    "  5  cancelled with Escape, or told to end from outside\n"
    "  6  a file cannot be written\n"
    "  7  this desktop lacks what the command needs\n"
    "  8  nothing was done: the desktop is locked, a window out of reach, or the screen another one";

struct Options {
  CaptureOptions capture;
  RecordOptions record;
  CheckOptions check;
  ReplayCommandOptions replay;
  ExportOptions exported;
  EditOptions edit;
  bool windowInJson = false;
  std::string log;
};

void AddCapture(CLI::App& program, CaptureOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("capture", "Show what a record of one element holds, and try it");
  CLI::Option_group* const where = command->add_option_group("where");
  where->add_option("--at", options.at, "The screen point X,Y")->delimiter(',')->expected(2);
  where->add_flag("--cursor", options.cursor, "The point under the mouse cursor");
  where->require_option(1);
  command->add_option("--after", options.afterSeconds, "Wait so many seconds first")->check(CLI::Range(0.0, 3600.0));
  command->add_flag("--json", options.json, "As JSON");
  command->callback([&] { code = Capture(options); });
}

void AddRecord(CLI::App& program, RecordOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("record", "Record what you do in other programs into a file");
  command->add_option("FILE", options.file, "The recording to write")->required();
  CLI::Option* const script = command->add_option("--script", options.script, "Take the steps from this file instead");
  command->add_flag("--do", options.act, "With --script: do each step, too")->needs(script);
  CLI::Option* const start =
      command->add_option("--start", options.start, "Start this program first, and whenever the recording is replayed");
  CLI::Option* const point =
      command->add_flag("--point", options.point, "Point at elements and press keys here, without using them");
  CLI::Option* const force = command->add_flag("--force", options.force, "Replace a recording that is there");
  command->add_option("--from", options.from, "Do the steps up to this one, then record more behind it")
      ->check(CLI::PositiveNumber)
      ->excludes(script)
      ->excludes(point)
      ->excludes(start)
      ->excludes(force);
  command->add_option("--hotkey", options.hotkeys, "Another hotkey, such as undo=Ctrl+F8")->excludes(script);
  command->add_flag("--no-frame", options.plain, "Show no frame around what the mouse points at");
  script->excludes(point);
  command->callback([&] { code = Record(options); });
}

void AddCheck(CLI::App& program, CheckOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("check", "Find every target of a recording without acting");
  command->add_option("FILE", options.file, "The recording")->required();
  command->add_option("--timeout", options.timeoutMs, "Milliseconds to wait for a window (3000)")
      ->check(CLI::Range(0, kLongestTimeoutMs));
  command->add_flag("--strict", options.strict, "A healed step is a failed one");
  CLI::Option* const fix =
      command->add_flag("--fix", options.fix, "Write what heals the steps into a copy, FILE.fixed.json");
  command->add_flag("--force", options.force, "With --fix: into the recording itself")->needs(fix);
  command->add_flag("--json", options.json, "Answer in JSON on the standard output");
  command->callback([&] { code = Check(options); });
}

void AddReplay(CLI::App& program, ReplayCommandOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("replay", "Do the steps of a recording");
  command->add_option("FILE", options.file, "The recording")->required();
  command->add_option("--report", options.report, "Write what happened to this HTML file");
  command->add_option("--junit", options.junit, "Write what happened to this file, as test services read it");
  command->add_option("--set", options.set, "NAME=VALUE: the value of a variable")->allow_extra_args(false);
  CLI::Option* const data =
      command->add_option("--data", options.data, "A CSV file with a run's variables in each row");
  command->add_option("--encoding", options.encoding, "The encoding of the data, such as windows-1252 (UTF-8)")
      ->needs(data);
  command->add_option("--row", options.row, "Begin with this row of the data, as its file counts: the names are row 1")
      ->check(CLI::PositiveNumber)
      ->needs(data);
  command->add_option("--from", options.from, "Begin with this step (1); later rows begin with the first")
      ->check(CLI::PositiveNumber);
  command->add_option("--timeout", options.timeoutMs, "Milliseconds to wait for windows and texts (3000)")
      ->check(CLI::Range(1, kLongestTimeoutMs));
  command
      ->add_option("--retries", options.retries, "Try a failed step again so often, unless it may be done in part (0)")
      ->check(CLI::Range(0, 100));
  command->add_option("--log", options.log, "Keep the library's log in this file");
  command->add_option("--proposals", options.proposals, "Write the recording here, with what heals its steps");
  command->add_flag("--strict", options.strict, "A healed step is a failed one");
  command->add_flag("--dry-run", options.dryRun, "Find the targets, but do nothing");
  command->add_flag("--close", options.close, "Close the program that the recording started, when all is done");
  command->add_flag("--keep-going", options.keepGoing, "After a failure go on with the next step, or the next row");
  command->add_flag("--json", options.json, "Answer in JSON on the standard output, tell the rest on the other one");
  command->callback([&] { code = RunReplay(options); });
}

void AddExport(CLI::App& program, ExportOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("export", "Write a program that does what a recording says");
  command->add_option("FILE", options.file, "The recording, which the program reads its targets from")->required();
  command->add_option("--language", options.language, "What the program is written in")
      ->required()
      ->check(CLI::IsMember(ExportLanguages()));
  command->add_option("--output", options.output, "The program's file (beside the recording, under its name)");
  command->add_flag("--force", options.force, "Replace a program that is there");
  command->callback([&] { code = Export(options); });
}

void AddEdit(CLI::App& program, EditOptions& options, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("edit", "List a recording's steps, or change one thing in them");
  command->add_option("FILE", options.file, "The recording")->required();
  CLI::Option_group* const change = command->add_option_group("change");
  change->add_option("--delete", options.remove, "Take these steps out, as in 3,4")
      ->delimiter(',')
      ->allow_extra_args(false);
  change->add_option("--move", options.move, "STEP PLACE: the step gets this number")->expected(2);
  change->add_option("--rename", options.rename, "STEP NAME: the step gets this name")->expected(2);
  CLI::Option* const repoint =
      change->add_option("--repoint", options.repoint, "The step acts on what is at the point of --at");
  change->require_option(0, 1);
  command->add_option("--at", options.at, "The screen point X,Y")->delimiter(',')->expected(2)->needs(repoint);
  command->callback([&] { code = Edit(options); });
}

void AddWindow(CLI::App& program, bool& json, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("window", "Pick a window with a click and show how it is named");
  command->add_flag("--json", json, "As JSON");
  command->callback([&] { code = PickWindow(json); });
}

void AddLog(CLI::App& program, std::string& file, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("log", "Sum up a log of the library");
  command->add_option("FILE", file, "The log")->required();
  command->callback([&] { code = ShowLog(file); });
}

// How many letters have to be put in, taken out or changed.
std::size_t Distance(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t before = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t changed = before + (left[i] == right[j] ? 0 : 1);
      before = std::exchange(row[j + 1], std::min({changed, row[j] + 1, row[j + 1] + 1}));
    }
  }
  return row.back();
}

[[noreturn]] void RefuseWord(const std::string& word, const std::string& what, const std::vector<std::string>& known) {
  const auto nearest = std::min_element(known.begin(), known.end(), [&](const auto& left, const auto& right) {
    return Distance(word, left) < Distance(word, right);
  });
  constexpr std::size_t kMostChanges = 3;
  const bool similar = nearest != known.end() && Distance(word, *nearest) <= std::min(kMostChanges, word.size() / 2);
  throw Failure(ExitCode::Usage, "\"" + Shortened(word, 60) + "\" is no " + what +
                                     (similar ? "; did you mean \"" + *nearest + "\"?" : ""));
}

// Unknown words are named with the nearest one that is known.
void CheckWords(const CLI::App& program, const std::vector<std::string>& words) {
  std::vector<std::string> commands{"help"};
  const CLI::App* command = nullptr;
  for (const CLI::App* each : program.get_subcommands([](const CLI::App*) { return true; })) {
    commands.push_back(each->get_name());
    command = !words.empty() && words[0] == each->get_name() ? each : command;
  }
  if (words.empty()) {
    throw Failure(ExitCode::Usage, "say what to do; `korvane help` tells what there is");
  }
  if (command == nullptr && !words[0].starts_with("-")) {
    RefuseWord(words[0], "command", commands);
  }
  const CLI::App& owner = command == nullptr ? program : *command;
  std::vector<std::string> options;
  for (const CLI::Option* option : owner.get_options({})) {
    for (const std::string& name : option->get_lnames()) {
      options.push_back("--" + name);
    }
  }
  // Options of groups, of which one is to be given, are kept apart.
  for (const CLI::App* group : owner.get_subcommands([](const CLI::App* each) { return each->get_name().empty(); })) {
    for (const CLI::Option* option : group->get_options({})) {
      options.push_back("--" + option->get_lnames().front());
    }
  }
  for (const std::string& word : words) {
    const std::string name = word.substr(0, word.find('='));
    if (name.starts_with("--") && name.size() > 2 && std::find(options.begin(), options.end(), name) == options.end()) {
      RefuseWord(name, command == nullptr ? "option" : "option of " + command->get_name(), options);
    }
  }
}

}  // namespace

int RunCommandLine(std::vector<std::string> words) {
  if (!words.empty() && words[0] == "help") {
    words.erase(words.begin());
    words.resize(std::min<std::size_t>(words.size(), 1));
    words.emplace_back("--help");
  }
  CLI::App program("Records steps in other programs' windows, checks them, does them again and reports.", "korvane");
  const std::string about = world::HelpAboutThisWorld();
  program.footer(kExitCodes + (about.empty() ? "" : "\n\n" + about));
  program.set_version_flag("--version", "korvane " HOST_VERSION);
  Options options;
  ExitCode code = ExitCode::Ok;
  AddCapture(program, options.capture, code);
  AddRecord(program, options.record, code);
  AddCheck(program, options.check, code);
  AddReplay(program, options.replay, code);
  AddExport(program, options.exported, code);
  AddEdit(program, options.edit, code);
  AddWindow(program, options.windowInJson, code);
  AddLog(program, options.log, code);
  CheckWords(program, words);
  const std::string first = words[0];
  options.replay.commandLine = "korvane";
  for (const std::string& word : words) {
    options.replay.commandLine += " " + (word.find_first_of(" \t\"'") == std::string::npos ? word : "\"" + word + "\"");
  }
  try {
    // It takes the last word first.
    std::reverse(words.begin(), words.end());
    program.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      return program.exit(error);
    }
    throw Failure(ExitCode::Usage, std::string(error.what()) + "; `korvane help " + first + "` tells more");
  }
  return static_cast<int>(code);
}

}  // namespace host
