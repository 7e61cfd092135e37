// What a script does with edits and buttons, and asks about them.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

void Controls::SetText(HWND window, TextView text) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(window)) {
    node->window.title = text;
    node->selectionBegin = node->selectionEnd = text.size();
  }
}

Text Controls::TextOf(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(window);
  return node == nullptr ? Text() : node->window.title;
}

void Controls::SetSelection(HWND edit, std::size_t begin, std::size_t end) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(edit)) {
    node->selectionEnd = std::min(end, node->window.title.size());
    node->selectionBegin = std::min(begin, node->selectionEnd);
  }
}

void Controls::RefuseText(HWND edit) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(edit)) {
    node->refusesText = true;
  }
}

void Controls::DelayPaste(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->pasteDelay = FromMilliseconds(milliseconds);
}

void Controls::OnEdited(HWND edit, std::function<void(HWND)> action) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(edit)) {
    node->onEdited = std::move(action);
  }
}

void Controls::OnPress(HWND button, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  if (Node* node = state_->FindWindow(button)) {
    node->onPress = std::move(action);
  }
}

int Controls::Presses(HWND button) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(button);
  return node == nullptr ? 0 : node->presses;
}

int Controls::MouseDowns(HWND window) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->FindWindow(window);
  return node == nullptr ? 0 : node->mouseDowns;
}

}  // namespace standin
