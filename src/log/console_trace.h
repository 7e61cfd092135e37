// Trace of the capture at the cursor, on the process's standard output.
#pragma once

#include "log/line.h"

namespace korvane {

// Prints and flushes, so that the trace stands in order beside the host's own output.
void PrintTrace(std::string_view text) noexcept;

template <class... Pieces>
void ConsoleTrace(const Pieces&... pieces) noexcept {
  Line line;
  line.Append(pieces..., "\n");
  PrintTrace(line.Bytes());
}

}  // namespace korvane
