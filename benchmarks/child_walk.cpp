#include "benchmarks/child_walk.h"

namespace bench {

using namespace korvane;

namespace {

bool Fits(IUIAutomationElement& element, const TargetRecord& target, int level) {
  CONTROLTYPEID controlType = 0;
  Bstr className;
  const bool isRead = SUCCEEDED(element.get_CurrentControlType(&controlType)) &&
                      SUCCEEDED(element.get_CurrentClassName(className.Receive())) && className;
  return isRead && controlType == target.controlTypes[level] &&
         ViewOf(className.Get()) == ViewWithin(target.classNames[level]);
}

ElementPtr FindChild(IUIAutomationTreeWalker& walker, IUIAutomationElement& parent, const TargetRecord& target,
                     int level) {
  int position = 0;
  ElementPtr child;
  walker.GetFirstChildElement(&parent, child.Receive());
  while (child) {
    if (Fits(*child.Get(), target, level) && ++position == target.childIndices[level]) {
      return child;
    }
    ElementPtr next;
    walker.GetNextSiblingElement(child.Get(), next.Receive());
    child = std::move(next);
  }
  return {};
}

}  // namespace

ElementPtr FindByWalkingChildren(IUIAutomation& automation, HWND window, const TargetRecord& target) {
  ElementPtr current;
  ComPtr<IUIAutomationTreeWalker> walker;
  if (FAILED(automation.ElementFromHandle(window, current.Receive())) ||
      FAILED(automation.get_ControlViewWalker(walker.Receive()))) {
    return {};
  }
  for (int level = 1; level < target.pathLength && current; ++level) {
    current = FindChild(*walker.Get(), *current.Get(), target, level);
  }
  return current;
}

}  // namespace bench
