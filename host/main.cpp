// korvane: records steps in other programs' windows, checks them, does them again and reports what happened.
#include <exception>
#include <iostream>

#include "host/base/console.h"
#include "host/base/failure.h"
#include "host/commands/command_line.h"
#include "host/world/world.h"

namespace {

int Run(int count, char** arguments) {
  try {
    host::world::Start();
    return host::RunCommandLine(host::world::Arguments(count, arguments));
  } catch (const host::Failure& failure) {
    std::cerr << "korvane: " << failure.what() << "\n";
    return static_cast<int>(failure.Code());
  } catch (const std::exception& error) {
    std::cerr << "korvane: " << error.what() << "\n";
    return static_cast<int>(host::ExitCode::StepFailed);
  }
}

}  // namespace

int main(int count, char** arguments) {
  const host::Console console;
  const int code = Run(count, arguments);
  if (!host::Console::Flush() && code == 0) {
    std::cerr << "korvane: not everything that was said could be written\n";
    return static_cast<int>(host::ExitCode::CannotWrite);
  }
  return code;
}
