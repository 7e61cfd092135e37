// The commands of the program, each with its options. A command that has run leaves its exit code; one that cannot go
// on throws a Failure.
#pragma once

#include <CLI/CLI.hpp>

#include "host/base/failure.h"

namespace host {

void AddCapture(CLI::App& program, ExitCode& code);
void AddRecord(CLI::App& program, ExitCode& code);
void AddCheck(CLI::App& program, ExitCode& code);
void AddReplay(CLI::App& program, ExitCode& code);
void AddWindow(CLI::App& program, ExitCode& code);
void AddLog(CLI::App& program, ExitCode& code);

}  // namespace host
