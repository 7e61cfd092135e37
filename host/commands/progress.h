// A replay as it goes on: a bar that moves on a terminal, plain lines elsewhere.
#pragma once

#include "host/engine/replay.h"

namespace host {

Progress ShowProgress(const Recording& recording);

}  // namespace host
