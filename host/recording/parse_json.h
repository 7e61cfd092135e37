// The text of a recording or script as JSON.
#pragma once

#include <string>

#include "host/recording/record_json.h"

namespace host {

// Failure: BadFile, naming file, step and field, also for what JSON would let pass: a field that is there twice,
// numbers that no number can hold, and texts so deep or so long that they are no recording.
Json ParseJson(const std::string& file, const std::string& text);

}  // namespace host
