// Tree views. Their items are addresses, which are numbered as they are seen.
#include <map>
#include <utility>

#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"
#include "wine_automation/locked.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

// Numbers are never given twice. Those of trees that have gone are forgotten now and then.
class ItemNumbers {
 public:
  Part NumberOf(HWND tree, LONG_PTR item) {
    if (item == 0) {
      return kControlItself;
    }
    const Locked locked(lock_);
    const auto [place, isNew] = numbers_.try_emplace({tree, item}, last_ + 1);
    const Part number = place->second;
    if (isNew) {
      items_[++last_] = {tree, item};
      if (items_.size() >= forgetAt_) {
        ForgetGone();
      }
    }
    return number;
  }

  // 0 for an item of no tree or of another one.
  LONG_PTR ItemOf(HWND tree, Part number) {
    const Locked locked(lock_);
    const auto found = items_.find(number);
    return found == items_.end() || found->second.first != tree ? 0 : found->second.second;
  }

 private:
  using Item = std::pair<HWND, LONG_PTR>;

  void ForgetGone() {
    std::erase_if(items_, [](const auto& entry) { return !IsWindow(entry.second.first); });
    std::erase_if(numbers_, [](const auto& entry) { return !IsWindow(entry.first.first); });
    forgetAt_ = items_.size() + kForgetEvery;
  }

  static constexpr std::size_t kForgetEvery = 10000;
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::map<Item, Part> numbers_;
  std::map<Part, Item> items_;
  Part last_ = 0;
  std::size_t forgetAt_ = kForgetEvery;
};

ItemNumbers theItems;

LONG_PTR Next(HWND tree, WPARAM which, LONG_PTR item) {
  return Ask(tree, TVM_GETNEXTITEM, which, item).value_or(0);
}

std::optional<UINT> StateOf(HWND tree, LONG_PTR item) {
  TVITEMW asked{};
  asked.mask = TVIF_HANDLE | TVIF_STATE | TVIF_CHILDREN;
  asked.hItem = reinterpret_cast<HTREEITEM>(item);
  asked.stateMask = TVIS_SELECTED | TVIS_EXPANDED;
  const std::optional<LONG_PTR> answer = AskWith(tree, TVM_GETITEMW, 0, asked);
  return answer && *answer != 0 ? std::optional(asked.state) : std::nullopt;
}

// As ExpandCollapseState has it: collapsed 0, expanded 1, leaf 3.
LONG ExpansionOf(HWND tree, LONG_PTR item) {
  if (Next(tree, TVGN_CHILD, item) == 0) {
    return 3;
  }
  return (StateOf(tree, item).value_or(0) & TVIS_EXPANDED) != 0 ? 1 : 0;
}

class TreeView final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kTreeType;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    const LONG_PTR item = theItems.ItemOf(control, part);
    return item != 0 && StateOf(control, item).has_value();
  }

  Part ParentOf(HWND control, Part part) const override {
    return theItems.NumberOf(control, Next(control, TVGN_PARENT, theItems.ItemOf(control, part)));
  }

  // Only what is unfolded can be seen.
  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    std::vector<Part> parts;
    LONG_PTR item = 0;
    if (parent == kControlItself) {
      item = Next(control, TVGN_ROOT, 0);
    } else if (const LONG_PTR above = theItems.ItemOf(control, parent);
               above != 0 && (StateOf(control, above).value_or(0) & TVIS_EXPANDED) != 0) {
      item = Next(control, TVGN_CHILD, above);
    }
    for (; item != 0; item = Next(control, TVGN_NEXT, item)) {
      parts.push_back(theItems.NumberOf(control, item));
    }
    return parts;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    TVHITTESTINFO hit{};
    hit.pt = InClient(control, onScreen);
    const std::optional<LONG_PTR> item = AskWith(control, TVM_HITTEST, 0, hit);
    return item && (hit.flags & (TVHT_ONITEM | TVHT_ONITEMBUTTON)) != 0 ? theItems.NumberOf(control, *item)
                                                                        : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    const LONG_PTR item = theItems.ItemOf(control, part);
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kTreeItemType);
      case UIA_NamePropertyId: {
        TVITEMW asked{};
        asked.mask = TVIF_HANDLE | TVIF_TEXT;
        asked.hItem = reinterpret_cast<HTREEITEM>(item);
        return Answered(AskItemText(control, TVM_GETITEMW, 0, asked));
      }
      case kIsSelected:
        return BoolValue((StateOf(control, item).value_or(0) & TVIS_SELECTED) != 0);
      case kExpandCollapseState:
        return NumberValue(ExpansionOf(control, item));
      default:
        return {};
    }
  }

  // The message takes the item where it then writes the rectangle.
  std::optional<RECT> PartRect(HWND control, Part part) const override {
    union {
      LONG_PTR item;
      RECT rect;
    } asked{};
    asked.item = theItems.ItemOf(control, part);
    constexpr WPARAM kTextOnly = TRUE;
    const std::optional<LONG_PTR> answer = AskWith(control, TVM_GETITEMRECT, kTextOnly, asked);
    return answer && *answer != 0 ? std::optional(OnScreen(control, asked.rect)) : std::nullopt;
  }
};

}  // namespace

const ControlClass& TreeViewClass() {
  static const TreeView treeView;
  return treeView;
}

}  // namespace wine_automation
