// The end of everything that the library keeps for the process.
#pragma once

namespace korvane {

enum class LibraryEnd {
  Cleanup,  // asked for by the host
  Unload,   // the library is being freed, under the loader's lock
};

// Ends the monitor, releases the automation object, closes the log, balances the object model's initialisation and
// clears the target window.
void ShutdownLibrary(LibraryEnd end) noexcept;

}  // namespace korvane
