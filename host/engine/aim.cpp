#include "host/engine/aim.h"

#include "host/engine/find_window.h"

namespace host {

namespace {

constexpr int kMostLevels = 20;

bool Contains(const world::Rect& rect, world::Point point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

std::string PlaceText(world::Point point) {
  return std::to_string(point.x) + "," + std::to_string(point.y);
}

// Whether `above` is the element or one that it lies in.
bool IsOrHolds(const world::Element& above, const world::Element& element) {
  return world::HoldsUpwards(element, [&](const world::Element& level) { return world::Same(above, level); });
}

// Whether every element that the target lies in reaches to the point, up to `last`: what scrolled out of a list or a
// panel is cut off by it.
bool IsShownAt(world::Element element, const world::Element& last, world::Point point) {
  for (int level = 0; level <= kMostLevels; ++level) {
    const auto rect = world::RectOf(element);
    if (rect && rect->right > rect->left && !Contains(*rect, point)) {
      return false;
    }
    auto parent = world::Same(element, last) ? std::nullopt : world::Parent(element);
    if (!parent) {
      return true;
    }
    element = std::move(*parent);
  }
  return true;
}

// Why a click at the point would not reach the element; empty: it would.
std::string WhyMissed(const Aim& aim, const Sought& sought) {
  const world::Element& element = *aim.identified.element;
  const world::Point point = *aim.point;
  if (aim.window == nullptr) {
    // A window in front of it is not the element's fault: whoever acts brings its own window to the front before.
    return Contains(sought.window.rect, point) ? "" : "its place " + PlaceText(point) + " is outside of the window";
  }
  const auto there = world::ElementUnder(point);
  if (!there || world::Same(*there, element)) {
    return {};
  }
  if (aim.exact) {
    return "the recorded place in it is taken by a " + NameOfType(world::Described(*there).controlType) + " now";
  }
  if (IsOrHolds(element, *there)) {
    return {};
  }
  // Some programs know less precisely what is at a point than what they consist of.
  if (IsOrHolds(*there, element) && IsShownAt(element, *there, point)) {
    return {};
  }
  return "it is out of view, or hidden: at its place " + PlaceText(point) + " is a " +
         NameOfType(world::Described(*there).controlType);
}

void Place(Aim& aim, const Sought& sought) {
  const world::Element& element = *aim.identified.element;
  const bool container = IsContainer(element.controlType) && (sought.record.x != 0 || sought.record.y != 0);
  aim.exact = aim.identified.by == Identification::ScreenPoint || container;
  if (container) {
    aim.remark = "the target is a whole " + NameOfType(element.controlType) + ": the recorded place in it counts";
  }
  aim.point = aim.exact ? PointNow(sought) : world::ClickPoint(element);
  if (!aim.point) {
    aim.refusal = "it has no place on the screen";
  } else if (const auto rect = world::RectOf(element); aim.exact && rect && !Contains(*rect, *aim.point)) {
    aim.refusal = "the recorded place " + PlaceText(*aim.point) + " is no longer in it";
  } else {
    const HWND root = world::RootAt(*aim.point);
    aim.window = BelongsTo(root, sought.window.handle) || LiesIn(element, root) ? root : nullptr;
    aim.refusal = WhyMissed(aim, sought);
  }
}

}  // namespace

bool BelongsTo(HWND window, HWND other) {
  for (int level = 0; window != nullptr && level < kMostLevels; ++level) {
    if (window == other) {
      return true;
    }
    window = world::OwnerOf(window);
  }
  return false;
}

bool ClicksTarget(const Step& step) {
  return step.hasTarget && step.action != Action::Wait && step.action != Action::Check && step.action != Action::Read;
}

Aim TakeAim(const Sought& sought, bool clicks, bool mayScroll) {
  Aim aim;
  aim.identified = Identify(sought);
  aim.refusal = aim.identified.refusal;
  if (!aim.identified.element || !clicks) {
    return aim;
  }
  Place(aim, sought);
  if (!aim.refusal.empty() && mayScroll && world::ScrollIntoView(*aim.identified.element)) {
    Place(aim, sought);
  }
  return aim;
}

}  // namespace host
