// Result codes of the library in words.
#pragma once

#include <string>

namespace host {

// "ok", "not found", "invalid argument", "failed", "cancelled"
std::string WordsOfCode(int code);

}  // namespace host
