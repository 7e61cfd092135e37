// A text field: text, caret and selection.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

void Desktop::State::Edited(Node& edit) {
  if (edit.onEdited) {
    const auto action = edit.onEdited;
    action(WindowFor(edit.id));
  }
}

void Desktop::State::SetEditText(Node& edit, TextView text) {
  edit.window.title = text;
  edit.selectionBegin = edit.selectionEnd = edit.window.title.size();
}

void Desktop::State::ReplaceSelection(Node& edit, TextView text) {
  Text& content = edit.window.title;
  const std::size_t begin = std::min(edit.selectionBegin, content.size());
  const std::size_t end = std::clamp(edit.selectionEnd, begin, content.size());
  content.replace(begin, end - begin, text);
  edit.selectionBegin = edit.selectionEnd = begin + text.size();
  Edited(edit);
}

// What a pressed key does to the field that has the focus.
void Desktop::State::TypeInto(Node& edit, WORD virtualKey) {
  if (keyDown[VK_CONTROL] && !keyDown[VK_MENU]) {
    if (virtualKey == 'A') {
      edit.selectionBegin = 0;
      edit.selectionEnd = edit.window.title.size();
    } else if (virtualKey == 'C' && edit.selectionEnd > edit.selectionBegin && !ClipboardHeldByOther()) {
      const Text selected = edit.window.title.substr(edit.selectionBegin, edit.selectionEnd - edit.selectionBegin);
      const auto* bytes = reinterpret_cast<const std::uint8_t*>(selected.c_str());
      PutOnClipboard(CF_UNICODETEXT, {bytes, bytes + (selected.size() + 1) * sizeof(WCHAR)});
    } else if (virtualKey == 'V' && TextOnClipboard() && !edit.window.readOnly && !ClipboardHeldByOther()) {
      const Text pasted = *TextOnClipboard();
      // A field of one line takes the first line only.
      const Text line = pasted.substr(0, pasted.find_first_of(u"\r\n"));
      if (pasteDelay == 0) {
        ReplaceSelection(edit, line);
      } else {
        Schedule(Now() + pasteDelay, [this, id = edit.id, line] {
          if (Node* later = Find(id)) {
            ReplaceSelection(*later, line);
          }
        });
      }
    }
    return;
  }
  if (const Text typed = CharactersOf(virtualKey); !typed.empty() && !edit.window.readOnly) {
    ReplaceSelection(edit, typed);
  }
}

void Desktop::SetSelection(HWND edit, std::size_t begin, std::size_t end) {
  const std::lock_guard guard(state_->mutex);
  Node* node = state_->FindWindow(edit);
  node->selectionBegin = begin;
  node->selectionEnd = end;
}

void Desktop::DelayPaste(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->pasteDelay = FromMilliseconds(milliseconds);
}

}  // namespace standin
