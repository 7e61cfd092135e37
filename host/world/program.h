// Other programs, begun and ended as a user does.
#pragma once

#include <string>

#include "host/world/world.h"

namespace host::world {

// By a command line as the system takes it; goes on by itself. Failure: NoWindow, when there is no such program
void StartProgram(const std::string& commandLine);
// As a click on the window's close button does: the program may ask something first.
void AskToClose(HWND window);

}  // namespace host::world
