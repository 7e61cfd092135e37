#include "capture/level_condition.h"

namespace korvane {

Outcome CreateLevelCondition(IUIAutomation& automation, LONG controlType, const WCHAR* className,
                             ConditionPtr& condition) {
  ConditionPtr ofType;
  if (FAILED(automation.CreatePropertyCondition(UIA_ControlTypePropertyId, Variant(controlType).Get(),
                                                ofType.Receive())) ||
      !ofType) {
    return {KORVANE_FAILED, "Failed to create control type condition"};
  }
  if (className == nullptr || *className == 0) {
    condition = std::move(ofType);
    return KORVANE_OK;
  }
  ConditionPtr ofClass;
  const Variant name(className);
  if (name.Text() == nullptr ||
      FAILED(automation.CreatePropertyCondition(UIA_ClassNamePropertyId, name.Get(), ofClass.Receive())) || !ofClass) {
    return {KORVANE_FAILED, "Failed to create class name condition"};
  }
  ConditionPtr both;
  if (FAILED(automation.CreateAndCondition(ofType.Get(), ofClass.Get(), both.Receive())) || !both) {
    return {KORVANE_FAILED, "Failed to create combined condition"};
  }
  condition = std::move(both);
  return KORVANE_OK;
}

}  // namespace korvane
