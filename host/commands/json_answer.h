// What a command tells other programs.
#pragma once

#include <functional>

#include "host/base/failure.h"
#include "host/recording/record_json.h"

namespace host {

// Runs the command. When JSON is wanted, what it says goes to the error output, and one JSON document to the standard
// output at its end: what the command put into it and its exit code; the reason, too, when the command cannot go on.
ExitCode AnswerInJson(bool wanted, const char* command, const std::function<ExitCode(Json&)>& run);

}  // namespace host
