#include "benchmarks/windows/by_hand.h"

#include <algorithm>
#include <vector>

#include "platform/owners.h"

namespace bench {

using namespace korvane;

namespace {

constexpr int kMostLevels = 20;
constexpr DWORD kLongestWait = 1000;

std::wstring TextOf(const wchar_t* units) {
  return units == nullptr ? std::wstring() : units;
}

void Send(std::vector<INPUT> records) {
  SendInput(static_cast<UINT>(records.size()), records.data(), sizeof(INPUT));
}

INPUT Key(WORD key, DWORD flags) {
  INPUT record{};
  record.type = INPUT_KEYBOARD;
  record.ki.wVk = key;
  record.ki.dwFlags = flags;
  return record;
}

INPUT Button(DWORD flags) {
  INPUT record{};
  record.type = INPUT_MOUSE;
  record.mi.dwFlags = flags;
  return record;
}

std::wstring ReadClipboard() {
  std::wstring text;
  if (OpenClipboard(nullptr)) {
    if (const HANDLE block = GetClipboardData(CF_UNICODETEXT)) {
      if (const auto* const units = static_cast<const wchar_t*>(GlobalLock(block))) {
        text = units;
        GlobalUnlock(block);
      }
    }
    CloseClipboard();
  }
  return text;
}

}  // namespace

struct ByHand::State {
  ComPtr<IUIAutomation> automation;
  std::wstring id;

  ConditionPtr Equals(PROPERTYID property, VARIANT value) const {
    ConditionPtr condition;
    automation->CreatePropertyCondition(property, value, condition.Receive());
    return condition;
  }

  ConditionPtr HasText(PROPERTYID property, const std::wstring& text) const {
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text.c_str());
    ConditionPtr condition = Equals(property, value);
    VariantClear(&value);
    return condition;
  }

  // The position of an element among its like.
  int PositionOf(IUIAutomationElement& element, IUIAutomationElement& parent, CONTROLTYPEID controlType,
                 const std::wstring& className) const {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = controlType;
    const ConditionPtr type = Equals(UIA_ControlTypePropertyId, value);
    const ConditionPtr name = HasText(UIA_ClassNamePropertyId, className);
    ConditionPtr both;
    automation->CreateAndCondition(type.Get(), name.Get(), both.Receive());
    ComPtr<IUIAutomationElementArray> siblings;
    int count = 0;
    if (FAILED(parent.FindAll(TreeScope_Children, both.Get(), siblings.Receive())) || !siblings) {
      return 0;
    }
    siblings->get_Length(&count);
    for (int i = 0; i < count; ++i) {
      ElementPtr sibling;
      BOOL same = FALSE;
      siblings->GetElement(i, sibling.Receive());
      if (SUCCEEDED(automation->CompareElements(sibling.Get(), &element, &same)) && same) {
        return i + 1;
      }
    }
    return 0;
  }

  void BuildPath(ElementPtr element) const {
    ComPtr<IUIAutomationTreeWalker> walker;
    automation->get_ControlViewWalker(walker.Receive());
    for (int level = 0; level < kMostLevels && element; ++level) {
      CONTROLTYPEID controlType = 0;
      Bstr className;
      ElementPtr parent;
      ElementPtr next;
      element->get_CurrentControlType(&controlType);
      element->get_CurrentClassName(className.Receive());
      // The position among its like is asked of the parent, and the way up goes on from the element.
      walker->GetParentElement(element.Get(), parent.Receive());
      if (parent) {
        PositionOf(*element.Get(), *parent.Get(), controlType, TextOf(className.Get()));
      }
      walker->GetParentElement(element.Get(), next.Receive());
      element = std::move(next);
    }
  }

  ElementPtr Find(HWND window) const {
    ElementPtr root;
    ElementPtr found;
    automation->ElementFromHandle(window, root.Receive());
    if (!root) {
      return found;
    }
    const ConditionPtr hasId = HasText(UIA_AutomationIdPropertyId, id);
    // The near ones first: a search of everything below is what takes long.
    if (SUCCEEDED(root->FindFirst(TreeScope_Children, hasId.Get(), found.Receive())) && !found) {
      root->FindFirst(TreeScope_Descendants, hasId.Get(), found.Receive());
    }
    return found;
  }

  static bool Shows(IUIAutomationElement& element, const std::wstring& text) {
    Variant value;
    return SUCCEEDED(element.GetCurrentPropertyValue(UIA_ValueValuePropertyId, value.Receive())) &&
           TextOf(value.Text()).find(text) != std::wstring::npos;
  }
};

ByHand::ByHand() : state_(std::make_unique<State>()) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation,
                   reinterpret_cast<void**>(state_->automation.Receive()));
}

ByHand::~ByHand() {
  state_.reset();
  CoUninitialize();
}

bool ByHand::Capture(POINT point) {
  ElementPtr element;
  if (FAILED(state_->automation->ElementFromPoint(point, element.Receive())) || !element) {
    return false;
  }
  Bstr name;
  Bstr id;
  CONTROLTYPEID controlType = 0;
  UIA_HWND window = nullptr;
  element->get_CurrentName(name.Receive());
  element->get_CurrentControlType(&controlType);
  element->get_CurrentNativeWindowHandle(&window);
  element->get_CurrentAutomationId(id.Receive());
  element->get_CurrentNativeWindowHandle(&window);
  state_->id = TextOf(id.Get());
  state_->BuildPath(std::move(element));
  return !state_->id.empty();
}

bool ByHand::SetClipboard(const std::wstring& text) {
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes);
  std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(GlobalLock(block)));
  GlobalUnlock(block);
  if (!OpenClipboard(nullptr)) {
    GlobalFree(block);
    return false;
  }
  EmptyClipboard();
  SetClipboardData(CF_UNICODETEXT, block);
  CloseClipboard();
  return ReadClipboard() == text;
}

bool ByHand::Paste(HWND window, const std::wstring& text) {
  const ElementPtr element = IsWindow(window) ? state_->Find(window) : ElementPtr();
  POINT point{};
  BOOL clickable = FALSE;
  if (!element || FAILED(element->GetClickablePoint(&point, &clickable))) {
    return false;
  }
  if (IsWindow(window) && IsIconic(window)) {
    ShowWindow(window, SW_RESTORE);
  }
  SetForegroundWindow(window);
  GetForegroundWindow();
  SetCursorPos(point.x, point.y);
  Send({Button(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_ABSOLUTE), Button(MOUSEEVENTF_LEFTUP | MOUSEEVENTF_ABSOLUTE)});
  if (ReadClipboard() != text) {
    return false;
  }
  Send({Key(VK_CONTROL, 0), Key('V', 0), Key('V', KEYEVENTF_KEYUP), Key(VK_CONTROL, KEYEVENTF_KEYUP)});
  const ElementPtr watched = state_->Find(window);
  for (const DWORD start = GetTickCount(); watched && GetTickCount() - start < kLongestWait; Sleep(2)) {
    if (State::Shows(*watched.Get(), text)) {
      return true;
    }
  }
  return false;
}

}  // namespace bench
