// How a step ended: the one way in which a failure travels from where it happens to the export that answers it.
#pragma once

#include <string_view>

#include "korvane/korvane.h"

namespace korvane {

// A result code and, for a failure, what the log's error line tells of it. The step that fails names both; its callers
// pass them on, and the export reports them under its own name when all that was held is given back. Looking for
// something and not finding it is no failure: such a step answers an empty value, and writes its own lines.
struct [[nodiscard]] Outcome {
  // Without details there is nothing to report: the step succeeded, or the reason stands in the log already.
  // Implicit, so that a step ends with `return KORVANE_OK` or `return {KORVANE_FAILED, "details"}`.
  constexpr Outcome(int resultCode, std::string_view reason = {}) noexcept : code(resultCode), details(reason) {}

  constexpr bool IsOk() const noexcept {
    return code == KORVANE_OK;
  }

  int code;
  std::string_view details;
};

}  // namespace korvane
