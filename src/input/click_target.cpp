#include "automation/automation_context.h"
#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/coordinate_cache.h"
#include "resolve/find_target.h"
#include "util/cancel_monitor.h"

namespace {

constexpr auto kName = "clickTarget";

// Clicks a point that was found before; the window must still answer. False when there is none.
bool ClickCachedPoint(const CacheKey& key, HWND window) {
  const std::optional<POINT> point = FindCachedPoint(key);
  RECT unused{};
  if (!point || !GetWindowRect(window, &unused)) {
    return false;
  }
  SetCursorPos(point->x, point->y);
  mouse_event(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
  CountCacheHit();
  LogStampedLine("[CACHE HIT] Clicked using cached coordinates");
  return true;
}

LONG Middle(LONG low, LONG high) {
  // In 64 bits, so that a hostile rectangle cannot overflow the sum.
  return static_cast<LONG>((LONGLONG{low} + high) / 2);
}

// Where the element is clicked, or none when it has neither a clickable point nor a rectangle.
std::optional<POINT> PointToClick(IUIAutomationElement& element) {
  POINT point{};
  BOOL gotClickable = FALSE;
  if (SUCCEEDED(element.GetClickablePoint(&point, &gotClickable))) {
    return point;
  }
  RECT rect{};
  if (FAILED(element.get_CurrentBoundingRectangle(&rect))) {
    return std::nullopt;
  }
  return POINT{Middle(rect.left, rect.right), Middle(rect.top, rect.bottom)};
}

int ClickPoint(POINT point) {
  SetCursorPos(point.x, point.y);
  INPUT records[] = {MouseButton(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_ABSOLUTE, point),
                     MouseButton(MOUSEEVENTF_LEFTUP | MOUSEEVENTF_ABSOLUTE, point)};
  return SendAll(records) == std::size(records) ? KORVANE_OK : KORVANE_FAILED;
}

int ClickTarget(const TargetRecord* target, HWND givenWindow) {
  if (IsCancelled()) {
    return KORVANE_CANCELLED;
  }
  if (target == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid target parameter");
  }
  if (const int code = InitializeAutomation(); code != KORVANE_OK) {
    return code;
  }
  const HWND window = ChooseWindow(givenWindow);
  if (window == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "No target window specified");
  }
  if (!IsWindow(window)) {
    return ReportError(KORVANE_NOT_FOUND, kName, "Target window not found");
  }
  const CacheKey key(window, *target);
  if (ClickCachedPoint(key, window)) {
    return KORVANE_OK;
  }
  CountCacheMiss();
  ElementPtr element = FindTargetElement(target, window);
  if (!element) {
    return ReportError(KORVANE_NOT_FOUND, kName, "Target element not found");
  }
  const std::optional<POINT> point = PointToClick(*element.Get());
  element.Reset();
  if (!point) {
    return ReportError(KORVANE_FAILED, kName, "Failed to get clickable point");
  }
  if (target->automationId[0] != 0) {
    StoreCachedPoint(key, *point);
  }
  ensureWindowFocus(window);
  return ClickPoint(*point);
}

}  // namespace

int clickTarget(const TargetRecord* target, HWND window) noexcept {
  return GuardExport(kName, int{KORVANE_FAILED}, [&] { return ClickTarget(target, window); });
}
