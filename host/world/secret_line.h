// A line that somebody types and nobody sees.
#pragma once

#include <optional>
#include <string>

namespace host::world {

// Asks for it in the terminal, in UTF-8 without its end; nothing where no terminal gives the program its input. The
// terminal shows what is typed again on every way out.
// Failure: Cancelled, when it is interrupted or the input ends instead.
std::optional<std::string> AskForSecret(const std::string& question);

}  // namespace host::world
