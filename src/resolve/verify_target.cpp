#include "automation/automation_context.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/coordinate_cache.h"
#include "resolve/find_target.h"

namespace korvane {
namespace {

constexpr TaggedLog LogVerifyTargetLine("[verifyTarget] ");

// Halves the extent, not the sum: on a screen left of the primary one the two round differently. In 64 bits, so that a
// hostile rectangle cannot overflow.
LONG Centre(LONG low, LONG high) {
  return static_cast<LONG>(low + (LONGLONG{high} - low) / 2);
}

POINT CentreOf(const RECT& rect) {
  return {Centre(rect.left, rect.right), Centre(rect.top, rect.bottom)};
}

Outcome Verify(const TargetRecord* target, HWND window) {
  LogVerifyTargetLine("Called");
  if (target == nullptr || window == nullptr) {
    LogVerifyTargetLine("ERROR: Invalid parameters");
    return {KORVANE_INVALID_ARGUMENT, "Invalid parameters"};
  }
  if (const Outcome initialized = InitializeAutomation(); !initialized.IsOk()) {
    LogVerifyTargetLine("ERROR: Failed to initialize automation");
    return initialized;
  }
  const ElementPtr element = FindTargetElement(target, window);
  if (!element) {
    LogVerifyTargetLine("Target element not found");
    return {KORVANE_NOT_FOUND, "Target element not found"};
  }
  LogVerifyTargetLine("SUCCESS: Target element found and verified");
  RECT rect{};
  if (SUCCEEDED(element->get_CurrentBoundingRectangle(&rect)) &&
      StoreCachedPoint(CacheKey(window, *target), CentreOf(rect))) {
    LogLine("[CACHE] Stored coordinates for target");
  }
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int verifyTarget(const TargetRecord* target, HWND window) noexcept {
  return korvane::AnswerExport("verifyTarget", KORVANE_FAILED, [&] { return korvane::Verify(target, window); });
}
