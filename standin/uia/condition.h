// Conditions that a search tests its candidates with.
#pragma once

#include "standin/uia/object.h"

namespace standin::uia {

class Condition : public Object<IUIAutomationCondition> {
 public:
  explicit Condition(Tree& tree) : Object(tree, IID_IUIAutomationCondition, "IUIAutomationCondition") {}
  virtual bool Matches(Node node) const = 0;
};

// The condition that every element meets; also the control view's, as every element here belongs to it.
Condition* MakeTrueCondition(Tree& tree);
// Exact, with regard to case. E_INVALIDARG for a value that is neither a number nor a text.
HRESULT MakePropertyCondition(Tree& tree, PROPERTYID property, const VARIANT& value, IUIAutomationCondition** made);
Condition* MakeAndCondition(Tree& tree, Condition* a, Condition* b);

}  // namespace standin::uia
