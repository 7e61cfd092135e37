// The edge of the library: no exception crosses it.
#pragma once

#include <type_traits>

#include "korvane/korvane.h"
#include "log/diagnostic_log.h"

// Runs the body of an export. Our own code throws only when memory is out; the export then answers `failure`.
template <class Result, class Body>
Result GuardExport(const char* name, Result failure, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    int code = KORVANE_FAILED;
    if constexpr (std::is_same_v<Result, int>) {
      code = failure;
    }
    ReportError(code, name, "Out of memory");
    return failure;
  }
}
