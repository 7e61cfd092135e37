#include "automation/automation_context.h"
#include "automation/target_window.h"
#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/coordinate_cache.h"
#include "resolve/find_target.h"
#include "util/cancel_monitor.h"

namespace korvane {
namespace {

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

// The target's element is given back before anything is done with its point.
Outcome FindPointToClick(const TargetRecord& target, HWND window, POINT& point) {
  const ElementPtr element = FindTargetElement(&target, window);
  if (!element) {
    return {KORVANE_NOT_FOUND, "Target element not found"};
  }
  const std::optional<POINT> found = PointToClick(*element);
  if (!found) {
    return {KORVANE_FAILED, "Failed to get clickable point"};
  }
  point = *found;
  return KORVANE_OK;
}

int ClickPoint(POINT point) {
  SetCursorPos(point.x, point.y);
  INPUT records[] = {MouseButton(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_ABSOLUTE, point),
                     MouseButton(MOUSEEVENTF_LEFTUP | MOUSEEVENTF_ABSOLUTE, point)};
  return SendAll(records) == std::size(records) ? KORVANE_OK : KORVANE_FAILED;
}

Outcome Click(const TargetRecord* target, HWND givenWindow) {
  if (CancelRequested()) {
    return KORVANE_CANCELLED;
  }
  if (target == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid target parameter"};
  }
  if (const Outcome initialized = InitializeAutomation(); !initialized.IsOk()) {
    return initialized;
  }
  const HWND window = ChooseWindow(givenWindow);
  if (window == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "No target window specified"};
  }
  if (!IsWindow(window)) {
    return {KORVANE_NOT_FOUND, "Target window not found"};
  }
  const CacheKey key(window, *target);
  if (ClickCachedPoint(key, window)) {
    return KORVANE_OK;
  }
  CountCacheMiss();
  POINT point{};
  if (const Outcome found = FindPointToClick(*target, window, point); !found.IsOk()) {
    return found;
  }
  if (target->automationId[0] != 0) {
    StoreCachedPoint(key, point);
  }
  ensureWindowFocus(window);
  return ClickPoint(point);
}

}  // namespace
}  // namespace korvane

int clickTarget(const TargetRecord* target, HWND window) noexcept {
  return korvane::AnswerExport("clickTarget", KORVANE_FAILED, [&] { return korvane::Click(target, window); });
}
