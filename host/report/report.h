// A replay as one HTML file that needs nothing else: steps, durations, pictures with the target marked, the log,
// and where it was run.
#pragma once

#include <string>

#include "host/engine/replay.h"

namespace host {

std::string WriteReport(const Recording& recording, const std::vector<DataRow>& rows, const Replayed& replayed,
                        const ReplayOptions& options);

}  // namespace host
