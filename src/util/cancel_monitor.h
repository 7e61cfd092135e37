// The thread that watches the Escape key, and the cancelled flag that it sets.
#pragma once

// Whether Escape was pressed since the monitor was last started. Never waits.
bool IsCancelled() noexcept;

// Ends the monitor, waiting at most 300 ms until it is out of our code. Does nothing when none runs.
void StopCancelMonitor() noexcept;

// The same while the library is being unloaded, under the loader's lock: when it returns, no thread is in our code.
void StopCancelMonitorAtUnload() noexcept;
