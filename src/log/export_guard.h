// The edge of the library: every export that can fail answers through it, and no exception crosses it.
#pragma once

#include "log/diagnostic_log.h"
#include "log/outcome.h"

namespace korvane {

// Runs the body of an export, reports the outcome under the export's name and returns its code. Our own code throws
// only when memory is out; the export then answers `outOfMemory`.
template <class Body>
int AnswerExport(std::string_view name, int outOfMemory, Body&& body) noexcept {
  try {
    return Report(name, body());
  } catch (...) {
    return ReportError(outOfMemory, name, "Out of memory");
  }
}

}  // namespace korvane
