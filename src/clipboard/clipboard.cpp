#include "clipboard/clipboard.h"

#include <cstring>

namespace korvane {

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

ClipboardText::ClipboardText(ClipboardHold hold)
    : hold_(std::move(hold)), block_(hold_ ? GetClipboardData(CF_UNICODETEXT) : nullptr) {}

std::optional<WideView> ClipboardText::View() const {
  if (block_.Bytes() == nullptr) {
    return std::nullopt;
  }
  return ViewOf(static_cast<const WCHAR*>(block_.Bytes()));
}

TaskText ReadClipboardText() {
  const ClipboardText clipboard(OpenClipboardWithRetry());
  const std::optional<WideView> text = clipboard.View();
  if (!text) {
    return {};
  }
  const std::size_t size = (text->size() + 1) * sizeof(WCHAR);
  TaskText copy(static_cast<WCHAR*>(CoTaskMemAlloc(size)));
  if (copy) {
    // With its terminator, which stands behind the view.
    std::memcpy(copy.Get(), text->data(), size);
  }
  return copy;
}

bool VerifyClipboardText(const WCHAR* expected) {
  return expected != nullptr && ClipboardText(OpenClipboardWithRetry()).View() == ViewOf(expected);
}

}  // namespace korvane
