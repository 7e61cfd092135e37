#include "automation/automation_context.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/coordinate_cache.h"
#include "resolve/find_target.h"

namespace {

// Halves the extent, not the sum: on a screen left of the primary one the two round differently. In 64 bits, so that a
// hostile rectangle cannot overflow.
LONG Centre(LONG low, LONG high) {
  return static_cast<LONG>(low + (LONGLONG{high} - low) / 2);
}

POINT CentreOf(const RECT& rect) {
  return {Centre(rect.left, rect.right), Centre(rect.top, rect.bottom)};
}

int VerifyTarget(const TargetRecord* target, HWND window) {
  constexpr auto kName = "verifyTarget";
  LogLine("[verifyTarget] Called");
  if (target == nullptr || window == nullptr) {
    LogLine("[verifyTarget] ERROR: Invalid parameters");
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid parameters");
  }
  if (const int code = InitializeAutomation(); code != KORVANE_OK) {
    LogLine("[verifyTarget] ERROR: Failed to initialize automation");
    return code;
  }
  const ElementPtr element = FindTargetElement(target, window);
  if (!element) {
    LogLine("[verifyTarget] Target element not found");
    return ReportError(KORVANE_NOT_FOUND, kName, "Target element not found");
  }
  LogLine("[verifyTarget] SUCCESS: Target element found and verified");
  RECT rect{};
  if (SUCCEEDED(element->get_CurrentBoundingRectangle(&rect)) &&
      StoreCachedPoint(CacheKey(window, *target), CentreOf(rect))) {
    LogLine("[CACHE] Stored coordinates for target");
  }
  return KORVANE_OK;
}

}  // namespace

int verifyTarget(const TargetRecord* target, HWND window) noexcept {
  return GuardExport("verifyTarget", int{KORVANE_FAILED}, [&] { return VerifyTarget(target, window); });
}
