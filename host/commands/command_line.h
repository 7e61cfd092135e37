// The words behind the program's name: which command they ask for, with which options.
#pragma once

#include <string>
#include <vector>

namespace host {

// Does what they say, and returns the exit code. Failure: as the commands
int RunCommandLine(std::vector<std::string> words);

}  // namespace host
