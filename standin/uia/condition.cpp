#include "standin/uia/condition.h"

#include <utility>

namespace standin::uia {
namespace {

class TrueCondition final : public Condition {
 public:
  using Condition::Condition;

  bool Matches(Node) const override {
    return true;
  }
};

class NumberCondition final : public Condition {
 public:
  NumberCondition(Tree& tree, PROPERTYID property, LONG number)
      : Condition(tree), property_(property), number_(number) {}

  bool Matches(Node node) const override {
    const PropertyValue value = tree_.Property(node, property_);
    return SUCCEEDED(value.result) && value.type == VT_I4 && value.number == number_;
  }

 private:
  const PROPERTYID property_;
  const LONG number_;
};

class TextCondition final : public Condition {
 public:
  TextCondition(Tree& tree, PROPERTYID property, TextView text) : Condition(tree), property_(property), text_(text) {}

  bool Matches(Node node) const override {
    const PropertyValue value = tree_.Property(node, property_);
    return SUCCEEDED(value.result) && value.type == VT_BSTR && !value.isNull && value.text == text_;
  }

 private:
  const PROPERTYID property_;
  const Text text_;
};

class AndCondition final : public Condition {
 public:
  AndCondition(Tree& tree, Condition* a, Condition* b) : Condition(tree), a_(a), b_(b) {}

  bool Matches(Node node) const override {
    return a_.Get()->Matches(node) && b_.Get()->Matches(node);
  }

 private:
  const Held<Condition> a_;
  const Held<Condition> b_;
};

}  // namespace

Condition* MakeTrueCondition(Tree& tree) {
  return new TrueCondition(tree);
}

HRESULT MakePropertyCondition(Tree& tree, PROPERTYID property, const VARIANT& value, IUIAutomationCondition** made) {
  if (value.vt == VT_I4) {
    *made = new NumberCondition(tree, property, value.lVal);
    return S_OK;
  }
  if (value.vt == VT_BSTR) {
    // A null BSTR is the platform's other empty string.
    *made = new TextCondition(tree, property, value.bstrVal == nullptr ? TextView() : TextView(value.bstrVal));
    return S_OK;
  }
  return E_INVALIDARG;
}

Condition* MakeAndCondition(Tree& tree, Condition* a, Condition* b) {
  return new AndCondition(tree, a, b);
}

}  // namespace standin::uia
