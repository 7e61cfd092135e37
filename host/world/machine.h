// Where the program runs, as reports tell it.
#pragma once

#include <string>

namespace host::world {

// The machine's name on its network; empty: not known.
std::string MachineName();
// The operating system with its version.
std::string SystemName();

}  // namespace host::world
