// The system clipboard, held open only while an owner of it lives, and never across a sleep.
#pragma once

#include "platform/owners.h"
#include "platform/wide_text.h"

// The clipboard while this thread holds it; closes it at the end.
class ClipboardHold {
 public:
  explicit ClipboardHold(bool held) : held_(held) {}
  ClipboardHold(ClipboardHold&& other) noexcept : held_(std::exchange(other.held_, false)) {}
  ~ClipboardHold() {
    if (held_) {
      CloseClipboard();
    }
  }
  explicit operator bool() const {
    return held_;
  }

 private:
  bool held_;
};

// One attempt.
ClipboardHold OpenClipboardOnce();

// Up to three attempts, 4 ms apart: other programs open the clipboard for moments only.
ClipboardHold OpenClipboardWithRetry();

// A copy of the Unicode text, made with CoTaskMemAlloc; none when there is no text or something fails.
TaskText ReadClipboardText();

// Whether the clipboard's Unicode text is exactly `expected`; false for null.
bool VerifyClipboardText(const WCHAR* expected);
