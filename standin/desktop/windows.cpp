// Processes, windows and their order on the screen; focus and foreground.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

Node* Desktop::State::Find(Element element) {
  const auto node = nodes.find(element);
  return node == nodes.end() ? nullptr : &node->second;
}

Node* Desktop::State::FindWindow(HWND window) {
  Node* node = Find(ElementFor(window));
  return node != nullptr && node->isWindow ? node : nullptr;
}

Node& Desktop::State::MakeWindow(const WindowSpec& described, DWORD process, DWORD thread) {
  const Element id = nextWindow;
  nextWindow += 0x12;
  Node& node = nodes[id];
  node.id = id;
  node.parent = described.parent != nullptr ? ElementFor(described.parent) : kRootElement;
  node.isWindow = true;
  node.window = described;
  node.rect = described.rect;
  node.z = nextZ++;
  node.process = process;
  node.thread = thread;
  nodes[node.parent].children.push_back(id);
  return nodes[id];
}

bool Desktop::State::IsShown(const Node& node) {
  for (const Node* at = &node; at != nullptr && at->id != kRootElement; at = Find(at->parent)) {
    if (!at->visible || at->minimized) {
      return false;
    }
  }
  return true;
}

// The deepest element at the point: of several windows the topmost, of several parts the one made last.
Element Desktop::State::HitTest(Element within, POINT point, bool windowsOnly) {
  const Node* node = Find(within);
  if (node == nullptr || !node->visible || node->minimized ||
      (within != kRootElement && !Contains(node->rect, point))) {
    return 0;
  }
  std::vector<const Node*> candidates;
  for (const Element child : node->children) {
    if (const Node* candidate = Find(child); candidate->isWindow || !windowsOnly) {
      candidates.push_back(candidate);
    }
  }
  std::stable_sort(candidates.begin(), candidates.end(), [](const Node* a, const Node* b) { return a->z > b->z; });
  for (const Node* candidate : candidates) {
    if (const Element hit = HitTest(candidate->id, point, windowsOnly)) {
      return hit;
    }
  }
  return within;
}

HWND Desktop::State::TopLevelOf(HWND window) {
  const Node* node = FindWindow(window);
  while (node != nullptr && node->parent != kRootElement) {
    node = Find(node->parent);
  }
  return node == nullptr ? nullptr : WindowFor(node->id);
}

void Desktop::State::Activate(HWND window) {
  if (Node* node = FindWindow(window)) {
    node->z = nextZ++;
    foreground = window;
  }
}

void Desktop::State::Remove(Element element) {
  const auto entry = nodes.find(element);
  if (entry == nodes.end()) {
    return;
  }
  const std::vector<Element> children = entry->second.children;
  for (const Element child : children) {
    Remove(child);
  }
  if (Node* parent = Find(entry->second.parent)) {
    std::erase(parent->children, element);
  }
  const HWND window = WindowFor(element);
  focus = focus == window ? nullptr : focus;
  foreground = foreground == window ? nullptr : foreground;
  nodes.erase(element);
}

void Desktop::State::Shift(Element element, LONG dx, LONG dy) {
  Node* node = Find(element);
  node->rect = {node->rect.left + dx, node->rect.top + dy, node->rect.right + dx, node->rect.bottom + dy};
  for (const Element child : node->children) {
    Shift(child, dx, dy);
  }
}

// ---- Scripting ----

DWORD Desktop::AddProcess(TextView executablePath) {
  const std::lock_guard guard(state_->mutex);
  const DWORD id = state_->nextProcess += 4;
  state_->processes[id] = {Text(executablePath), state_->nextThread++, true};
  return id;
}

void Desktop::ForbidOpening(DWORD process) {
  const std::lock_guard guard(state_->mutex);
  state_->processes[process].canBeOpened = false;
}

HWND Desktop::AddWindow(const WindowSpec& window) {
  const std::lock_guard guard(state_->mutex);
  DWORD process = window.process;
  if (process == 0) {
    const Node* parent = state_->FindWindow(window.parent);
    process = parent != nullptr ? parent->process : AddProcess(u"C:\\Programs\\program.exe");
  }
  return WindowFor(state_->MakeWindow(window, process, state_->processes[process].uiThread).id);
}

HWND Desktop::AddHostWindow(const WindowSpec& window) {
  const std::lock_guard guard(state_->mutex);
  return WindowFor(state_->MakeWindow(window, AddProcess(u"C:\\Programs\\host.exe"), state_->Self().id).id);
}

void Desktop::DestroyWindow(HWND window) {
  const std::lock_guard guard(state_->mutex);
  state_->Remove(ElementFor(window));
}

void Desktop::MoveWindowTo(HWND window, int x, int y) {
  const std::lock_guard guard(state_->mutex);
  if (const Node* node = state_->FindWindow(window)) {
    state_->Shift(node->id, x - node->rect.left, y - node->rect.top);
  }
}

void Desktop::SetText(HWND window, TextView text) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    state_->SetEditText(*node, text);
  }
}

Text Desktop::TextOf(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(window);
  return node == nullptr ? Text() : node->window.title;
}

void Desktop::SetTitle(HWND window, TextView title) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->window.title = title;
  }
}

void Desktop::Minimize(HWND window) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->minimized = true;
  }
}

bool Desktop::IsMinimized(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(window);
  return node != nullptr && node->minimized;
}

void Desktop::BringToTop(HWND window) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->z = state_->nextZ++;
  }
}

void Desktop::SetVisible(HWND window, bool visible) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->visible = visible;
  }
}

void Desktop::OnPress(HWND button, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  state_->FindWindow(button)->onPress = std::move(action);
}

int Desktop::Presses(HWND button) const {
  const std::lock_guard guard(state_->mutex);
  return state_->FindWindow(button)->presses;
}

int Desktop::MouseDowns(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  return state_->FindWindow(window)->mouseDowns;
}

void Desktop::OnEdited(HWND edit, std::function<void(HWND)> action) {
  const std::lock_guard guard(state_->mutex);
  state_->FindWindow(edit)->onEdited = std::move(action);
}

HWND Desktop::Focus() const {
  const std::lock_guard guard(state_->mutex);
  return state_->focus;
}

HWND Desktop::Foreground() const {
  const std::lock_guard guard(state_->mutex);
  return state_->foreground;
}

void Desktop::SetForeground(HWND window) {
  const std::lock_guard guard(state_->mutex);
  state_->Activate(window);
}

void Desktop::RefuseForeground(int times) {
  const std::lock_guard guard(state_->mutex);
  state_->foregroundRefusals = times;
}

void Desktop::RefuseThreadAttach(bool refuse) {
  const std::lock_guard guard(state_->mutex);
  state_->attachRefused = refuse;
}

void Desktop::FailWindowRect(HWND window) {
  const std::lock_guard guard(state_->mutex);
  state_->FindWindow(window)->rectFails = true;
}

void Desktop::RefuseText(HWND edit) {
  const std::lock_guard guard(state_->mutex);
  state_->FindWindow(edit)->refusesText = true;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

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
  return node->parent != kRootElement ? WindowFor(node->parent) : node->window.owner;
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
  call->Note("ShowWindow", "command=" + std::to_string(command));
  const bool wasVisible = node->visible;
  node->visible = true;
  node->minimized = node->minimized && command != SW_RESTORE;
  return wasVisible;
}

BOOL SetForegroundWindow(HWND window) {
  STANDIN_CALL(SetForegroundWindow);
  if (call.Fails() || call->FindWindow(window) == nullptr) {
    return FALSE;
  }
  if (call->foregroundRefusals != 0) {
    call->foregroundRefusals -= call->foregroundRefusals > 0 ? 1 : 0;
    return FALSE;
  }
  call->Note("SetForegroundWindow", "");
  call->Activate(window);
  return TRUE;
}

HWND GetForegroundWindow() {
  STANDIN_CALL(GetForegroundWindow);
  return call.Fails() ? nullptr : call->foreground;
}

HWND SetActiveWindow(HWND window) {
  STANDIN_CALL(SetActiveWindow);
  const Node* node = call->FindWindow(window);
  // Only a window of the thread's own input queue becomes active.
  const bool shared =
      node != nullptr && (node->thread == call->Self().id || call->Self().attachedTo.contains(node->thread));
  if (call.Fails() || !shared) {
    return nullptr;
  }
  const HWND previous = call->foreground;
  call->Activate(window);
  return previous;
}

HWND SetFocus(HWND window) {
  STANDIN_CALL(SetFocus);
  const Node* node = call->FindWindow(window);
  const bool shared =
      node != nullptr && (node->thread == call->Self().id || call->Self().attachedTo.contains(node->thread));
  if (call.Fails() || !shared) {
    return nullptr;
  }
  const HWND previous = call->focus;
  call->focus = window;
  return previous;
}

BOOL AttachThreadInput(DWORD attach, DWORD to, BOOL attachThem) {
  STANDIN_CALL(AttachThreadInput);
  Thread& self = call->Self();
  if (!attachThem) {
    const bool wasAttached = self.attachedTo.erase(to) > 0;
    if (!wasAttached) {
      call->Misuse("detached an input queue that was not attached");
    }
    return !call.Fails() && wasAttached;
  }
  if (call.Fails() || call->attachRefused || attach != self.id || attach == to) {
    return FALSE;
  }
  self.attachedTo.insert(to);
  return TRUE;
}

DWORD GetWindowThreadProcessId(HWND window, DWORD* processId) {
  STANDIN_CALL(GetWindowThreadProcessId);
  const Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr) {
    return 0;
  }
  if (processId != nullptr) {
    *processId = node->process;
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

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  STANDIN_CALL(SendMessageW);
  Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr || node->refusesText) {
    return 0;
  }
  const auto* text = reinterpret_cast<const WCHAR*>(lParam);
  if (message == WM_SETTEXT) {
    call->Note("WM_SETTEXT", "wParam=" + std::to_string(wParam));
    call->SetEditText(*node, text);
    call->Edited(*node);
    return TRUE;
  }
  if (message == EM_REPLACESEL && node->window.behaviour == Behaviour::Edit) {
    call->Note("EM_REPLACESEL", "wParam=" + std::to_string(wParam));
    call->ReplaceSelection(*node, text);
    return 1;
  }
  return 0;
}

HWND GetDesktopWindow() {
  STANDIN_COUNTED_CALL(GetDesktopWindow);
  return WindowFor(kRootElement);
}

BOOL SetPropW(HWND window, const WCHAR* name, HANDLE value) {
  STANDIN_CALL(SetPropW);
  Node* node = call->Find(ElementFor(window));
  if (call.Fails() || node == nullptr) {
    return FALSE;
  }
  node->properties[name] = value;
  return TRUE;
}

HANDLE GetPropW(HWND window, const WCHAR* name) {
  STANDIN_CALL(GetPropW);
  const Node* node = call->Find(ElementFor(window));
  if (call.Fails() || node == nullptr || !node->properties.contains(name)) {
    return nullptr;
  }
  return node->properties.at(name);
}

HANDLE RemovePropW(HWND window, const WCHAR* name) {
  STANDIN_CALL(RemovePropW);
  Node* node = call->Find(ElementFor(window));
  if (node == nullptr || !node->properties.contains(name)) {
    return nullptr;
  }
  const HANDLE value = node->properties.at(name);
  node->properties.erase(name);
  return call.Fails() ? nullptr : value;
}

}  // extern "C"
