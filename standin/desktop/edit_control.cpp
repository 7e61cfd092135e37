// A text field: text, caret and selection, and what keys and messages do to them.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr WORD kBackspace = 0x08;
constexpr WORD kEnter = 0x0D;
constexpr WORD kDelete = 0x2E;
constexpr unsigned kShift = 1;
constexpr unsigned kControl = 2;

void SelectAll(Node& edit) {
  edit.selectionBegin = 0;
  edit.selectionEnd = edit.window.title.size();
}

void CopySelection(State& state, const Node& edit) {
  if (edit.selectionEnd > edit.selectionBegin && state.ClipboardIsFree()) {
    state.PutOnClipboard(edit.window.title.substr(edit.selectionBegin, edit.selectionEnd - edit.selectionBegin));
  }
}

void Paste(State& state, Node& edit) {
  std::optional<Text> pasted = state.ClipboardIsFree() ? state.TextOnClipboard() : std::nullopt;
  if (!pasted || edit.window.readOnly) {
    return;
  }
  if (!edit.window.multiLine) {
    pasted->resize(std::min(pasted->size(), pasted->find_first_of(u"\r\n")));
  }
  if (state.pasteDelay == 0) {
    state.ReplaceSelection(edit, *pasted);
    return;
  }
  state.Schedule(state.Now() + state.pasteDelay, [&state, id = edit.id, text = std::move(*pasted)] {
    const std::lock_guard guard(state.mutex);
    if (Node* later = state.Find(id)) {
      state.ReplaceSelection(*later, text);
    }
  });
}

// Deletes the selection. Without a selection it deletes the unit before the caret or the one behind it.
void Erase(State& state, Node& edit, bool before) {
  if (edit.selectionBegin == edit.selectionEnd) {
    if (before ? edit.selectionBegin == 0 : edit.selectionEnd == edit.window.title.size()) {
      return;
    }
    edit.selectionBegin -= before ? 1 : 0;
    edit.selectionEnd += before ? 0 : 1;
  }
  state.ReplaceSelection(edit, {});
}

}  // namespace

void State::Edited(Node& edit) {
  if (const auto action = edit.onEdited) {
    const HWND window = WindowFor(edit.id);
    const CallOut out(*this, CallOut::To::Script);
    action(window);
  }
}

// `edit` may be gone afterwards, when the script that watches it destroys it.
void State::ReplaceSelection(Node& edit, TextView text) {
  edit.window.title.replace(edit.selectionBegin, edit.selectionEnd - edit.selectionBegin, text);
  edit.selectionBegin = edit.selectionEnd = edit.selectionBegin + text.size();
  Edited(edit);
}

// What a pressed key does to the field that has the focus.
void State::TypeInto(Node& edit, WORD virtualKey) {
  const unsigned modifiers = Modifiers();
  if (modifiers == kControl) {
    if (virtualKey == 'A') {
      SelectAll(edit);
    } else if (virtualKey == 'C') {
      CopySelection(*this, edit);
    } else if (virtualKey == 'V') {
      Paste(*this, edit);
    }
    return;
  }
  if (virtualKey == VK_INSERT && modifiers == kShift) {
    return Paste(*this, edit);
  }
  if (edit.window.readOnly) {
    return;
  }
  if (virtualKey == kBackspace || virtualKey == kDelete) {
    return Erase(*this, edit, virtualKey == kBackspace);
  }
  if (virtualKey == kEnter) {
    return edit.window.multiLine ? ReplaceSelection(edit, u"\r\n") : void();
  }
  if (const WCHAR typed = CharacterOf(virtualKey, modifiers); typed >= u' ') {
    ReplaceSelection(edit, {&typed, 1});
  }
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  STANDIN_CALL(SendMessageW);
  Node* node = call->FindWindow(window);
  if (call.Fails() || node == nullptr || node->refusesText || node->window.behaviour == Behaviour::None) {
    return 0;
  }
  const auto* const given = reinterpret_cast<const WCHAR*>(lParam);
  const TextView text = given == nullptr ? TextView() : TextView(given);
  if (message == WM_SETTEXT) {
    call->Note("WM_SETTEXT", "units=", static_cast<std::int64_t>(text.size()));
    node->window.title = text;
    node->selectionBegin = node->selectionEnd = 0;
    call->Edited(*node);
    return TRUE;
  }
  if (message == EM_REPLACESEL && node->window.behaviour == Behaviour::Edit) {
    call->Note("EM_REPLACESEL", "canUndo=", static_cast<std::int64_t>(wParam),
               " units=", static_cast<std::int64_t>(text.size()));
    call->ReplaceSelection(*node, text);
    return 1;
  }
  return 0;
}
