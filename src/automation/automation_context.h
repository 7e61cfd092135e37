// The UI Automation context of the process and the host's default window.
#pragma once

#include "platform/owners.h"

using AutomationPtr = ComPtr<IUIAutomation>;

// The caller's own reference to the automation object, or none while there is no context. An operation keeps it while
// it works, so that a cleanup on another thread cannot take the object away.
AutomationPtr CurrentAutomation();

// Makes sure that the automation object exists: 0, or -3 with the reason reported.
int InitializeAutomation() noexcept;

enum class LibraryEnd {
  Cleanup,  // asked for by the host
  Unload,   // the library is being freed, under the loader's lock
};

// Stops the monitor, releases the automation object, closes the log, balances the object model's initialisation and
// clears the target window.
void ShutdownLibrary(LibraryEnd end) noexcept;

// `window`, or the target window of the host when it is null; null when neither is set.
HWND ChooseWindow(HWND window) noexcept;
