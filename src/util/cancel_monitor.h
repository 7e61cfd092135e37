// The thread that watches the Escape key, and the cancelled flag that it sets.
#pragma once

namespace korvane {

// Whether Escape was pressed since the monitor was last started. Never waits.
bool CancelRequested() noexcept;

// Ends the monitor, waiting at most 300 ms until it is out of our code. Does nothing when none runs.
void EndCancelMonitor() noexcept;

// The same while the library is being unloaded, under the loader's lock: when it returns, no thread is in our code.
void EndCancelMonitorAtUnload() noexcept;

}  // namespace korvane
