// An abstract tree of user-interface elements, from which standin/uia makes UI Automation client objects. The scripted
// desktop and the tree of real windows each implement it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/uia.h"

namespace standin::uia {

using Text = std::basic_string<WCHAR>;
using TextView = std::basic_string_view<WCHAR>;

// Names one element for as long as it exists; 0 is none.
using Node = std::uintptr_t;

// What an element answers for one property. `result` below zero makes the whole read fail.
struct PropertyValue {
  HRESULT result = S_OK;
  // VT_EMPTY: not supported; VT_I4, VT_R8, VT_BOOL: number; VT_BSTR: text; VT_BSTR with isNull: a null string
  VARTYPE type = VT_EMPTY;
  LONG number = 0;
  Text text;
  bool isNull = false;
};

// Questions that are put to Tree::Property in addition to the platform's properties. Only `result` of the answer
// counts. A tree that does not know them answers a default PropertyValue.
inline constexpr PROPERTYID kNativeWindowHandle = 30020;  // below zero: the window handle cannot be read
inline constexpr PROPERTYID kHandedOutByArrays = -1;      // below zero: arrays count the element but do not hand it out
inline constexpr PROPERTYID kReadableFromCache = -2;      // below zero: what a search cached of it cannot be read

// What every method answers for an element that is no more.
inline constexpr HRESULT kElementNotAvailable = static_cast<HRESULT>(0x80040201);

// An element can disappear at any time: for one that no longer exists a member returns 0, an empty list or a failure.
class Tree {
 public:
  virtual ~Tree() = default;

  virtual Node Root() = 0;
  virtual bool Exists(Node node) = 0;
  virtual Node Parent(Node node) = 0;
  // In the order in which a search returns them.
  virtual std::vector<Node> Children(Node node) = 0;
  virtual Node At(POINT point) = 0;
  // 0 for a handle that names no window.
  virtual Node OfWindow(HWND window) = 0;
  // 0 for an element without a window of its own.
  virtual HWND WindowOf(Node node) = 0;
  virtual PropertyValue Property(Node node, PROPERTYID property) = 0;
  virtual HRESULT Rectangle(Node node, RECT* rect) = 0;
  virtual HRESULT ClickablePoint(Node node, POINT* point, BOOL* gotClickable) = 0;

  // ---- What a scripted desktop adds; real windows keep these as they are ----

  // Called at the entry of every client method with its name ("IUIAutomation::ElementFromPoint"); any other
  // result than S_OK is the method's answer, without any output: a failure, or a success that hands out nothing.
  virtual HRESULT Enter(const char* method);
  // Called at the end of every client method, also of one that was not let in.
  virtual void Leave();
  // Told of every client object made and destroyed, so that a leak can be named.
  virtual void Made(const void* object, const char* interfaceName);
  virtual void Destroyed(const void* object);
  // A string that the client frees with SysFreeString; null when memory is out.
  virtual BSTR NewString(TextView text);
};

// Makes the IUIAutomation object over `tree`, which outlives it. E_NOINTERFACE for any other `iid` than that of
// IUIAutomation and IUnknown.
HRESULT MakeAutomation(Tree& tree, REFIID iid, void** object);

}  // namespace standin::uia
