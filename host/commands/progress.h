// A replay as it goes on: a bar that moves on a terminal, plain lines elsewhere.
#pragma once

#include "host/engine/replay.h"

namespace host {

// `terminal`: whether a line can be written over.
Progress ShowProgress(const Recording& recording, bool terminal);

}  // namespace host
