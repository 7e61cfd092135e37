// Elements of other programs' windows, as UI Automation shows them: what the library finds, it finds without telling
// where.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/world/world.h"

namespace host::world {

// While it lives, elements can be asked. The object model must be initialised on this thread, and one lives at a time.
class ElementAccess {
 public:
  ElementAccess();
  ElementAccess(const ElementAccess&) = delete;
  ElementAccess& operator=(const ElementAccess&) = delete;
  ~ElementAccess();

  // False: UI Automation is not there; then nothing may be asked.
  static bool IsGranted();
};

struct Element {
  std::shared_ptr<void> live;  // what this world knows it by
  // As they were when a search, or Described, asked for them.
  int controlType = 0;
  WideText className;
  WideText automationId;
};

// Asks for what is known of it: each of the three is a call into its program.
Element Described(Element element);

// These three are not described.
std::optional<Element> ElementOfWindow(HWND window);
// The deepest one at a screen point.
std::optional<Element> ElementUnder(Point point);
std::optional<Element> Parent(const Element& element);

// Children in the platform's order, of that control type and that class; 0 and empty are not compared.
std::vector<Element> Children(const Element& parent, int controlType, const WideText& className);
// All below `root` of that control type.
std::vector<Element> OfType(const Element& root, int controlType);
// All below `root` that have it.
std::vector<Element> WithAutomationId(const Element& root, const WideText& automationId);

// Whether something holds of the element or of one that it lies in, as far up as a path can reach.
template <class Condition>
bool HoldsUpwards(Element element, Condition holds) {
  for (int level = 0; level <= KORVANE_MAX_PATH_LEVELS; ++level) {
    if (holds(element)) {
      return true;
    }
    auto parent = Parent(element);
    if (!parent) {
      return false;
    }
    element = std::move(*parent);
  }
  return false;
}

bool Same(const Element& left, const Element& right);
std::optional<Rect> RectOf(const Element& element);
// Where the library would click it.
std::optional<Point> ClickPoint(const Element& element);
HWND WindowOf(const Element& element);  // null: it has none of its own
WideText NameOf(const Element& element);
// What a field holds; nothing when the element has no value.
std::optional<WideText> ValueOf(const Element& element);
// Asks what the element lies in to show it. False: it cannot be asked.
bool ScrollIntoView(const Element& element);

}  // namespace host::world
