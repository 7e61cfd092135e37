#include <algorithm>
#include <cwctype>

#include "log/export_guard.h"
#include "text/target_text.h"
#include "util/text_search.h"

namespace {

constexpr int kHolds = 1;
constexpr int kDoesNotHold = 0;

// Reads the target's text and tests it: 1 or 0, or -1 when no text can be read.
template <class Test>
int TestTargetText(const TargetRecord* target, HWND window, Test&& test) {
  const Variant value = ReadTargetText(target, window);
  if (value.Text() == nullptr) {
    return KORVANE_NOT_FOUND;
  }
  return test(ViewOf(value.Text())) ? kHolds : kDoesNotHold;
}

bool IsBlank(WideView text) {
  return std::all_of(text.begin(), text.end(), [](WCHAR unit) { return std::iswspace(unit) != 0; });
}

bool ContainsEither(WideView text, WideView other) {
  return Contains(text, other) || Contains(other, text);
}

// Polls until the predicate holds; false when the limit passes first. It is not tried again after the limit.
template <class Predicate>
bool WaitUntil(Predicate&& predicate, DWORD limitMs) {
  constexpr DWORD kPollMilliseconds = 2;
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < limitMs) {
    if (predicate()) {
      return true;
    }
    Sleep(kPollMilliseconds);
  }
  return false;
}

// Waits until the test of the target's text holds: 0, or -3 when time runs out. A text that cannot be read does not
// hold.
template <class Test>
int WaitForTargetText(const TargetRecord* target, HWND window, int timeoutMs, Test&& test) {
  constexpr DWORD kDefaultLimitMs = 150;
  const DWORD limit = timeoutMs > 0 ? static_cast<DWORD>(timeoutMs) : kDefaultLimitMs;
  const bool held = WaitUntil([&] { return TestTargetText(target, window, test) == kHolds; }, limit);
  return held ? KORVANE_OK : KORVANE_FAILED;
}

}  // namespace

int isTargetEmpty(const TargetRecord* target, HWND window) noexcept {
  return GuardExport("isTargetEmpty", int{KORVANE_NOT_FOUND}, [&]() -> int {
    return target == nullptr ? KORVANE_INVALID_ARGUMENT : TestTargetText(target, window, IsBlank);
  });
}

int targetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText) noexcept {
  return GuardExport("targetContainsText", int{KORVANE_NOT_FOUND}, [&]() -> int {
    if (target == nullptr || expectedText == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return TestTargetText(target, window, [&](WideView text) { return text == ViewOf(expectedText); });
  });
}

int targetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText) noexcept {
  return GuardExport("targetContainsPartialText", int{KORVANE_NOT_FOUND}, [&]() -> int {
    if (target == nullptr || partialText == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return TestTargetText(target, window, [&](WideView text) { return ContainsEither(text, ViewOf(partialText)); });
  });
}

int waitForFieldChange(const TargetRecord* target, HWND window, const KorvaneChar* previousText,
                       int timeoutMs) noexcept {
  return GuardExport("waitForFieldChange", int{KORVANE_FAILED}, [&]() -> int {
    if (target == nullptr || previousText == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return WaitForTargetText(target, window, timeoutMs, [&](WideView text) { return text != ViewOf(previousText); });
  });
}

int waitForFieldEmpty(const TargetRecord* target, HWND window, int timeoutMs) noexcept {
  return GuardExport("waitForFieldEmpty", int{KORVANE_FAILED}, [&]() -> int {
    return target == nullptr ? KORVANE_INVALID_ARGUMENT : WaitForTargetText(target, window, timeoutMs, IsBlank);
  });
}

int waitForTargetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText,
                                     int timeoutMs) noexcept {
  return GuardExport("waitForTargetContainsPartialText", int{KORVANE_FAILED}, [&]() -> int {
    if (target == nullptr || partialText == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return WaitForTargetText(target, window, timeoutMs,
                             [&](WideView text) { return ContainsEither(text, ViewOf(partialText)); });
  });
}

int waitForTargetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText,
                              int timeoutMs) noexcept {
  return GuardExport("waitForTargetContainsText", int{KORVANE_FAILED}, [&]() -> int {
    if (target == nullptr || expectedText == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return WaitForTargetText(target, window, timeoutMs, [&](WideView text) { return text == ViewOf(expectedText); });
  });
}
