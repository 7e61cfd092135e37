// Recording the chain of elements from a top-level window down to an element.
#pragma once

#include "korvane/korvane.h"
#include "platform/owners.h"

namespace korvane {

// Writes the tree path of `element` into `target`, and nothing else of the record. True when it has a level.
bool BuildTreePath(IUIAutomationElement* element, TargetRecord* target);

// Empties the tree path of a record.
void ClearTreePath(TargetRecord& target);

// The 1-based position of `element` among its parent's children of the same control type and, unless `className` is
// null or empty, the same class name; 0 when it cannot be told.
int GetChildIndex(IUIAutomationElement* element, int controlType, const WCHAR* className);

}  // namespace korvane
