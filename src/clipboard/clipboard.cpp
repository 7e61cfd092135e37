#include "clipboard/clipboard.h"

#include <cstring>

ClipboardHold OpenClipboardOnce() {
  return ClipboardHold(OpenClipboard(nullptr) != FALSE);
}

ClipboardHold OpenClipboardWithRetry() {
  constexpr int kAttempts = 3;
  constexpr DWORD kPauseMilliseconds = 4;
  for (int attempt = 1;; ++attempt) {
    ClipboardHold hold = OpenClipboardOnce();
    if (hold || attempt == kAttempts) {
      return hold;
    }
    Sleep(kPauseMilliseconds);
  }
}

TaskText ReadClipboardText() {
  const ClipboardHold hold = OpenClipboardWithRetry();
  if (!hold) {
    return {};
  }
  const HANDLE block = GetClipboardData(CF_UNICODETEXT);
  if (block == nullptr) {
    return {};
  }
  const GlobalView view(block);
  if (view.Bytes() == nullptr) {
    return {};
  }
  const auto* text = static_cast<const WCHAR*>(view.Bytes());
  const std::size_t size = (ViewOf(text).size() + 1) * sizeof(WCHAR);
  TaskText copy(static_cast<WCHAR*>(CoTaskMemAlloc(size)));
  if (copy) {
    std::memcpy(copy.Get(), text, size);
  }
  return copy;
}

bool VerifyClipboardText(const WCHAR* expected) {
  if (expected == nullptr) {
    return false;
  }
  const ClipboardHold hold = OpenClipboardWithRetry();
  if (!hold) {
    return false;
  }
  const HANDLE block = GetClipboardData(CF_UNICODETEXT);
  if (block == nullptr) {
    return false;
  }
  const GlobalView view(block);
  return view.Bytes() != nullptr && ViewOf(static_cast<const WCHAR*>(view.Bytes())) == ViewOf(expected);
}
