// The search condition of one tree path level, shared by capturing a path and following it.
#pragma once

#include "log/outcome.h"
#include "platform/owners.h"

namespace korvane {

// Control type equal to `controlType` and, unless `className` is empty, class name equal to it. The details of a
// failure name the part that could not be made.
Outcome CreateLevelCondition(IUIAutomation& automation, LONG controlType, const WCHAR* className,
                             ConditionPtr& condition);

}  // namespace korvane
