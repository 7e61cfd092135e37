// The program that a recording names, begun for a replay and ended after it.
#pragma once

#include "host/recording/recording.h"

namespace host {

// True: it was started, because the recording's first window was not there, and that window has come. Nothing is done
// when the recording names none. Failure: NoWindow
bool StartIfNeeded(const Recording& recording, int timeoutMs);
// Asks the recording's first window to close. False: it is still there when the time is up.
bool CloseStarted(const Recording& recording, int timeoutMs);

}  // namespace host
