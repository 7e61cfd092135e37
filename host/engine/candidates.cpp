#include "host/engine/candidates.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kMost = 8;

double DistanceTo(world::Point point, const std::optional<world::Rect>& rect) {
  if (!rect) {
    return 1e9;
  }
  const double x = point.x - (rect->left + rect->right) / 2.0;
  const double y = point.y - (rect->top + rect->bottom) / 2.0;
  return x * x + y * y;
}

std::string Told(const world::Element& element) {
  const std::string id = Utf8(element.automationId);
  const std::string label = LabelOf(element);
  return NameOfType(element.controlType) + (id.empty() ? "" : " \"" + Shortened(id, 60) + "\"") +
         (label.empty() ? "" : ", labelled \"" + Shortened(label, 60) + "\"");
}

}  // namespace

std::vector<Candidate> NearestCandidates(const Sought& sought) {
  const auto root = world::ElementOfWindow(sought.window.handle);
  const TargetRecord& record = sought.record;
  if (!root || record.pathLength < 1 || record.pathLength > KORVANE_MAX_PATH_LEVELS) {
    return {};
  }
  const world::Point place = PointNow(sought);
  std::vector<std::pair<double, Candidate>> found;
  for (const world::Element& element : world::OfType(*root, record.controlTypes[record.pathLength - 1])) {
    const auto rect = world::RectOf(element);
    const std::string difference = DifferenceFrom(sought, element);
    found.push_back({DistanceTo(place, rect), {Told(element), difference, rect}});
  }
  std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  found.resize(std::min(found.size(), kMost));
  std::vector<Candidate> candidates;
  candidates.reserve(found.size());
  for (auto& [distance, candidate] : found) {
    candidates.push_back(std::move(candidate));
  }
  return candidates;
}

}  // namespace host
