// Processes and windows: who is whose child, what lies on top of what, and what a script does to them.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

Node* State::Find(Element element) {
  const auto node = nodes.find(element);
  return node == nodes.end() ? nullptr : &node->second;
}

Node* State::FindWindow(HWND window) {
  Node* node = Find(ElementFor(window));
  return node != nullptr && node->isWindow ? node : nullptr;
}

DWORD State::MakeProcess(TextView path) {
  const DWORD id = nextProcess += 4;
  processes[id] = {Text(path), nextThread++, true};
  return id;
}

Node& State::MakeWindow(const WindowSpec& described, DWORD process, DWORD thread) {
  Node node;
  node.id = nextWindow;
  nextWindow += 0x12;
  node.parent = FindWindow(described.parent) != nullptr ? ElementFor(described.parent) : kRootElement;
  node.z = nextZ++;
  node.rect = described.rect;
  node.isWindow = true;
  node.window = described;
  node.window.process = process;
  node.thread = thread;
  node.selectionBegin = node.selectionEnd = described.title.size();
  Find(node.parent)->children.push_back(node.id);
  return nodes[node.id] = std::move(node);
}

// The deepest element at the point, of several the topmost; 0 when there is none within.
Element State::HitTest(Element within, POINT point, bool windowsOnly) {
  const auto contains = [point](const RECT& rect) {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
  };
  const Node* node = Find(within);
  const bool isHit = node != nullptr && node->visible && !node->minimized && (node->isWindow || !windowsOnly) &&
                     (within == kRootElement || contains(node->rect));
  if (!isHit) {
    return 0;
  }
  Element best = within;
  std::uint64_t bestZ = 0;
  for (const Element child : node->children) {
    const std::uint64_t z = Find(child)->z;
    if (z < bestZ) {
      continue;
    }
    if (const Element hit = HitTest(child, point, windowsOnly)) {
      best = hit;
      bestZ = z;
    }
  }
  return best;
}

HWND State::TopLevelOf(HWND window) {
  const Node* node = FindWindow(window);
  while (node != nullptr && node->parent != kRootElement) {
    node = Find(node->parent);
  }
  return node == nullptr ? nullptr : WindowFor(node->id);
}

// Owned windows stay above their owners.
void State::Raise(HWND topLevel) {
  FindWindow(topLevel)->z = nextZ++;
  for (const Element other : Find(kRootElement)->children) {
    if (Find(other)->window.owner == topLevel) {
      Raise(WindowFor(other));
    }
  }
}

void State::Remove(Element element) {
  const Node* node = Find(element);
  if (node == nullptr || element == kRootElement) {
    return;
  }
  for (const Element child : std::vector(node->children)) {
    Remove(child);
  }
  Node& parent = *Find(node->parent);
  std::erase(parent.children, element);
  const HWND window = WindowFor(element);
  for (HWND* reference : {&focus, &foreground, &pressed}) {
    *reference = *reference == window ? nullptr : *reference;
  }
  nodes.erase(element);
  if (parent.id == kRootElement) {
    for (const Element other : std::vector(parent.children)) {
      if (Find(other) != nullptr && Find(other)->window.owner == window) {
        Remove(other);
      }
    }
  }
}

namespace {

void Shift(State& state, Element element, LONG dx, LONG dy) {
  Node& node = *state.Find(element);
  node.rect = {node.rect.left + dx, node.rect.top + dy, node.rect.right + dx, node.rect.bottom + dy};
  for (const Element child : node.children) {
    Shift(state, child, dx, dy);
  }
}

}  // namespace

// ---- Scripting ----

DWORD Windows::AddProcess(TextView executablePath) {
  const std::lock_guard guard(state_->mutex);
  return state_->MakeProcess(executablePath);
}

void Windows::ForbidOpening(DWORD process) {
  const std::lock_guard guard(state_->mutex);
  state_->processes.at(process).canBeOpened = false;
}

HWND Windows::Add(const WindowSpec& window) {
  const std::lock_guard guard(state_->mutex);
  const Node* parent = state_->FindWindow(window.parent);
  DWORD process = window.process;
  if (process == 0) {
    process = parent != nullptr ? parent->window.process : state_->MakeProcess(u"C:\\Programs\\program.exe");
  }
  const DWORD thread = parent != nullptr ? parent->thread : state_->processes.at(process).uiThread;
  return WindowFor(state_->MakeWindow(window, process, thread).id);
}

HWND Host::AddWindow(const WindowSpec& window) {
  const std::lock_guard guard(state_->mutex);
  const DWORD process = state_->MakeProcess(u"C:\\Programs\\host.exe");
  return WindowFor(state_->MakeWindow(window, process, state_->Self().id).id);
}

void Windows::Destroy(HWND window) {
  const std::lock_guard guard(state_->mutex);
  state_->Remove(ElementFor(window));
}

void Windows::MoveTo(HWND window, int x, int y) {
  const std::lock_guard guard(state_->mutex);
  if (const Node* node = state_->FindWindow(window)) {
    Shift(*state_, node->id, x - node->rect.left, y - node->rect.top);
  }
}

void Windows::SetTitle(HWND window, TextView title) {
  Controls(*state_).SetText(window, title);
}

void Windows::Minimize(HWND window) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->minimized = true;
    if (state_->foreground == window) {
      state_->foreground = nullptr;
      state_->focus = nullptr;
    }
  }
}

bool Windows::IsMinimized(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(window);
  return node != nullptr && node->minimized;
}

void Windows::BringToTop(HWND window) {
  const std::lock_guard guard(state_->mutex);
  if (state_->FindWindow(window) != nullptr) {
    state_->Raise(window);
  }
}

void Windows::SetVisible(HWND window, bool visible) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->visible = visible;
  }
}

void Windows::FailRectangle(HWND window) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->rectFails = true;
  }
}

}  // namespace standin
