// What steps came to, as JSON for other programs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/replay.h"
#include "host/recording/record_json.h"

namespace host {

// null: no text could be read.
Json TextToJson(const std::optional<std::string>& text);

// One step: its state, how its target was looked for, what was seen, and the tries before.
Json ResultToJson(const StepResult& result);

// All rows with all steps, those that were not run too, and the totals.
Json ReplayToJson(const Recording& recording, const std::vector<DataRow>& rows, const Replayed& replayed);

}  // namespace host
