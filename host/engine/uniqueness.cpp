#include "host/engine/uniqueness.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "host/engine/identify.h"
#include "host/recording/record_json.h"

namespace host {

namespace {

constexpr int kFinestStep = 12;
constexpr double kMostPoints = 1500;

int StepFor(const world::Rect& rect) {
  const double area = static_cast<double>(rect.right - rect.left) * (rect.bottom - rect.top);
  return std::max(kFinestStep, static_cast<int>(std::ceil(std::sqrt(area / kMostPoints))));
}

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
  const int step = StepFor(window.rect);
  for (int y = window.rect.top + step / 2; y < window.rect.bottom; y += step) {
    for (int x = window.rect.left + step / 2; x < window.rect.right; x += step) {
      look(x, y);
    }
  }
  look(record.x, record.y);
  return {seen.size(), same.size()};
}

}  // namespace host
