// A replay as test services read it: a JUnit file in which a row is a suite and a step a case, and annotations on the
// lines of a build's output.
#pragma once

#include <string>

#include "host/engine/replay.h"

namespace host {

// A wrong result is a failure; a window that is not there, or a replay that was cancelled, an error; what was not run
// is skipped. What healed a step stands in its output.
std::string WriteJunit(const Recording& recording, const Replayed& replayed, const ReplayOptions& options);

// One line for each failed or healed step, in the words that GitHub Actions shows beside a build.
std::string WriteAnnotations(const Replayed& replayed, const ReplayOptions& options);

}  // namespace host
