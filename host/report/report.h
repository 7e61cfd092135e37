// A replay as one HTML file that needs nothing else: steps, durations, pictures with the target marked, the log.
#pragma once

#include <string>

#include "host/engine/replay.h"

namespace host {

std::string WriteReport(const Recording& recording, const Replayed& replayed, const ReplayOptions& options);

}  // namespace host
