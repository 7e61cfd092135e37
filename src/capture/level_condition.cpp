#include "capture/level_condition.h"

LevelCondition CreateLevelCondition(IUIAutomation& automation, LONG controlType, const WCHAR* className) {
  ConditionPtr ofType;
  if (FAILED(automation.CreatePropertyCondition(UIA_ControlTypePropertyId, Variant(controlType).Get(),
                                                ofType.Receive())) ||
      !ofType) {
    return {{}, LevelConditionStep::ControlType};
  }
  if (className == nullptr || *className == 0) {
    return {std::move(ofType), LevelConditionStep::Complete};
  }
  ConditionPtr ofClass;
  const Variant name(className);
  if (name.Text() == nullptr ||
      FAILED(automation.CreatePropertyCondition(UIA_ClassNamePropertyId, name.Get(), ofClass.Receive())) || !ofClass) {
    return {{}, LevelConditionStep::ClassName};
  }
  ConditionPtr both;
  if (FAILED(automation.CreateAndCondition(ofType.Get(), ofClass.Get(), both.Receive())) || !both) {
    return {{}, LevelConditionStep::Combination};
  }
  return {std::move(both), LevelConditionStep::Complete};
}
