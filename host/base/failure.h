// Why a command ends early, and the exit codes of the program.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

enum class ExitCode {
  Ok = 0,
  StepFailed = 1,   // a step failed, or a target was not found
  Usage = 2,        // the command line, a variable or a row of data is wrong
  BadFile = 3,      // a file cannot be read, or is not what it should be
  NoWindow = 4,     // the recorded window is not there
  Cancelled = 5,    // with Escape
  CannotWrite = 6,  // a file cannot be written
  NotHere = 7,      // needs what this desktop does not have
  NotReady = 8,     // the desktop is locked, a window out of reach, or the screen another one
};

// Carries one clear line to the user, and the exit code.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& line) : std::runtime_error(line), code_(code) {}

  ExitCode Code() const {
    return code_;
  }

 private:
  ExitCode code_;
};

}  // namespace host
