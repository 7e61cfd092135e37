// The platform functions that ask for windows, and the properties that windows carry.
#include "standin/desktop/state.h"

using namespace standin;

extern "C" {

HWND WindowFromPoint(POINT point) {
  STANDIN_CALL(WindowFromPoint);
  const Element hit = call.Fails() ? 0 : call->HitTest(kRootElement, point, true);
  return hit == kRootElement ? nullptr : WindowFor(hit);
}

HWND GetParent(HWND window) {
  STANDIN_CALL(GetParent);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return nullptr;
  }
  return node->parent == kRootElement ? node->window.owner : WindowFor(node->parent);
}

HWND GetAncestor(HWND window, UINT which) {
  STANDIN_CALL(GetAncestor);
  return call.Fails() || which != GA_ROOT ? nullptr : call->TopLevelOf(window);
}

BOOL IsWindow(HWND window) {
  STANDIN_CALL(IsWindow);
  return !call.Fails() && call->FindWindow(window) != nullptr;
}

BOOL GetWindowRect(HWND window, RECT* rect) {
  STANDIN_CALL(GetWindowRect);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr || node->rectFails) {
    return FALSE;
  }
  *rect = node->rect;
  return TRUE;
}

BOOL IsIconic(HWND window) {
  STANDIN_CALL(IsIconic);
  const Node* node = call->FindWindow(window);
  return !call.Fails() && node != nullptr && node->minimized;
}

BOOL ShowWindow(HWND window, int command) {
  STANDIN_CALL(ShowWindow);
  Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return FALSE;
  }
  call->Note("ShowWindow", "command=", command);
  const bool wasVisible = node->visible;
  node->visible = true;
  node->minimized = node->minimized && command != SW_RESTORE;
  return wasVisible;
}

DWORD GetWindowThreadProcessId(HWND window, DWORD* processId) {
  STANDIN_CALL(GetWindowThreadProcessId);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return 0;
  }
  if (processId != nullptr) {
    *processId = node->window.process;
  }
  return node->thread;
}

int GetWindowTextW(HWND window, WCHAR* text, int size) {
  STANDIN_CALL(GetWindowTextW);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr || size < 1) {
    return 0;
  }
  const std::size_t length = node->window.title.copy(text, static_cast<std::size_t>(size) - 1);
  text[length] = 0;
  return static_cast<int>(length);
}

HWND GetDesktopWindow() {
  STANDIN_COUNTED_CALL(GetDesktopWindow);
  return WindowFor(kRootElement);
}

BOOL SetPropW(HWND window, const WCHAR* name, HANDLE value) {
  STANDIN_CALL(SetPropW);
  Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return FALSE;
  }
  node->properties[name] = value;
  return TRUE;
}

HANDLE GetPropW(HWND window, const WCHAR* name) {
  STANDIN_CALL(GetPropW);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return nullptr;
  }
  const auto property = node->properties.find(TextView(name));
  return property == node->properties.end() ? nullptr : property->second;
}

HANDLE RemovePropW(HWND window, const WCHAR* name) {
  STANDIN_CALL(RemovePropW);
  Node* node = call->FindWindow(window);
  if (node == nullptr) {
    return nullptr;
  }
  const auto property = node->properties.find(TextView(name));
  if (property == node->properties.end()) {
    return nullptr;
  }
  const HANDLE value = property->second;
  node->properties.erase(property);
  return call.Fails() ? nullptr : value;
}

}  // extern "C"
