// korvane: records steps in other programs' windows, checks them, does them again and reports what happened.
#include <algorithm>
#include <exception>
#include <iostream>

#include "host/commands/commands.h"
#include "host/world/world.h"

namespace {

using host::ExitCode;

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  everything was done, or found\n"
    "  1  a step failed, or a target was not found\n"
    "  2  the command line is wrong, or a variable has no value\n"
    "  3  a file cannot be read, is not what it should be, or is of a newer version\n"
    "  4  the recorded window is not there\n"
    "  5  cancelled with Escape\n"
    "  6  a file cannot be written\n"
    "  7  this desktop lacks what the command needs";

int Run(int count, char** arguments) {
  host::world::Start();
  CLI::App program("Records steps in other programs' windows, checks them, does them again and reports.", "korvane");
  const std::string about = host::world::HelpAboutThisWorld();
  program.footer(kExitCodes + (about.empty() ? "" : "\n\n" + about));
  program.require_subcommand(1);
  ExitCode code = ExitCode::Ok;
  host::AddCapture(program, code);
  host::AddRecord(program, code);
  host::AddCheck(program, code);
  host::AddReplay(program, code);
  host::AddWindow(program, code);
  host::AddLog(program, code);
  try {
    std::vector<std::string> words = host::world::Arguments(count, arguments);
    std::reverse(words.begin(), words.end());
    program.parse(words);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
  }
  return static_cast<int>(code);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return Run(count, arguments);
  } catch (const host::Failure& failure) {
    std::cout.flush();
    std::cerr << "korvane: " << failure.what() << "\n";
    return static_cast<int>(failure.Code());
  } catch (const std::exception& error) {
    std::cerr << "korvane: " << error.what() << "\n";
    return static_cast<int>(ExitCode::StepFailed);
  }
}
