// The search condition of one tree path level, shared by capturing a path and following it.
#pragma once

#include "platform/owners.h"

enum class LevelConditionStep { ControlType, ClassName, Combination, Complete };

struct LevelCondition {
  ConditionPtr condition;  // none unless complete
  LevelConditionStep reached;
};

// Control type equal to `controlType` and, unless `className` is empty, class name equal to it.
LevelCondition CreateLevelCondition(IUIAutomation& automation, LONG controlType, const WCHAR* className);
