// The system clipboard, held open only while an owner of it lives, and never across a sleep.
#pragma once

#include <optional>

#include "platform/owners.h"
#include "platform/wide_text.h"

namespace korvane {

// The clipboard while this thread holds it; closes it at the end.
class ClipboardHold {
 public:
  ClipboardHold() = default;
  explicit ClipboardHold(bool held) : held_(held) {}
  ClipboardHold(ClipboardHold&& other) noexcept : held_(std::exchange(other.held_, false)) {}
  ClipboardHold& operator=(ClipboardHold&& other) noexcept {
    std::swap(held_, other.held_);
    return *this;
  }
  ~ClipboardHold() {
    if (held_) {
      CloseClipboard();
    }
  }
  explicit operator bool() const {
    return held_;
  }

 private:
  bool held_ = false;
};

// One attempt.
ClipboardHold OpenClipboardOnce();

// Up to three attempts, 4 ms apart: other programs open the clipboard for moments only.
ClipboardHold OpenClipboardWithRetry();

// The Unicode text of the clipboard, in place, for as long as the clipboard is held for it.
class ClipboardText {
 public:
  explicit ClipboardText(ClipboardHold hold);

  // None when the clipboard is not held, has no such text, or its block cannot be locked.
  std::optional<WideView> View() const;

 private:
  ClipboardHold hold_;
  GlobalView block_;
};

// A copy of the Unicode text, made with CoTaskMemAlloc; none when there is no text or something fails.
TaskText ReadClipboardText();

// Whether the clipboard's Unicode text is exactly `expected`; false for null.
bool VerifyClipboardText(const WCHAR* expected);

}  // namespace korvane
