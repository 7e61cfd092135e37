// Whether a recording can be replayed on this desktop at all; asked before anything is touched.
#pragma once

#include <string>
#include <vector>

#include "host/recording/recording.h"

namespace host {

// Failure: NotReady when the desktop is locked, a window is out of reach, or steps rest on points of another screen.
// Answers with what a reader should know all the same.
std::vector<std::string> CheckReadiness(const Recording& recording, const std::string& file);

}  // namespace host
