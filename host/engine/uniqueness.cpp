#include "host/engine/uniqueness.h"

#include <set>
#include <string>

#include "host/engine/identify.h"
#include "host/recording/record_json.h"

namespace host {

namespace {

constexpr int kCoarsestStep = 96;
constexpr int kFinestStep = 12;
// A capture takes 1 to 30 ms: without an end, a large window would keep the user waiting for a minute.
constexpr double kMostMilliseconds = 2000;

}  // namespace

Uniqueness CountSameAutomationId(const TargetRecord& record, const world::Window& window) {
  std::set<std::string> seen;
  std::set<std::string> same;
  const auto look = [&](int x, int y) {
    TargetRecord there{};
    const auto owner = world::WindowAt({x, y});
    if (!owner || owner->handle != window.handle || captureTargetAtPoint(&there, x, y) != KORVANE_OK) {
      return;
    }
    const std::string path = ToJson(there)["levels"].dump();
    seen.insert(path);
    if (there.automationId[0] != 0 && IsSameElement(there, record)) {
      same.insert(path);
    }
  };
  look(record.x, record.y);
  const double end = world::Now() + kMostMilliseconds;
  // From coarse to fine, so that the whole window has been looked at when the time is over.
  for (int step = kCoarsestStep; step >= kFinestStep; step /= 2) {
    for (int y = window.rect.top + step / 2; y < window.rect.bottom; y += step) {
      for (int x = window.rect.left + step / 2; x < window.rect.right; x += step) {
        if (world::Now() > end) {
          return {seen.size(), same.size()};
        }
        look(x, y);
      }
    }
  }
  return {seen.size(), same.size()};
}

}  // namespace host
