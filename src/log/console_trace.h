// Trace of the capture at the cursor, on the process's standard output.
#pragma once

// Prints by the printf rules and flushes, so that the trace stands in order beside the host's own output.
void ConsoleTrace(const char* format, ...) noexcept;

// The printf form of a handle in the trace: sixteen upper-case digits, as the platform's runtime prints a pointer.
#define KORVANE_HANDLE_FORMAT "%016llX"
