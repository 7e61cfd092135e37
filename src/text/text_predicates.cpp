#include <algorithm>
#include <cwctype>

#include "log/export_guard.h"
#include "text/target_text.h"
#include "util/text_search.h"

namespace korvane {
namespace {

constexpr int kHolds = 1;
constexpr int kDoesNotHold = 0;

// A test of the text that a target shows, beside the text that the host gave; blank tests take none.
using TextTest = bool (*)(WideView text, WideView given);

bool IsBlank(WideView text, WideView /*given*/) {
  return std::all_of(text.begin(), text.end(), [](WCHAR unit) { return std::iswspace(unit) != 0; });
}

bool IsSame(WideView text, WideView given) {
  return text == given;
}

bool IsDifferent(WideView text, WideView given) {
  return text != given;
}

bool ContainsEither(WideView text, WideView given) {
  return Contains(text, given) || Contains(given, text);
}

// Reads the target's text and tests it: 1 or 0, or -1 when no text can be read.
int TestTargetText(const TargetRecord* target, HWND window, const WCHAR* given, TextTest test) {
  const Variant value = ReadTargetText(target, window);
  if (value.Text() == nullptr) {
    return KORVANE_NOT_FOUND;
  }
  return test(ViewOf(value.Text()), ViewOf(given)) ? kHolds : kDoesNotHold;
}

// Polls until the test holds: 0, or -3 when time runs out. A text that cannot be read does not hold, and nothing is
// tried again after the limit.
int WaitForTargetText(const TargetRecord* target, HWND window, const WCHAR* given, int timeoutMs, TextTest test) {
  constexpr DWORD kDefaultLimitMs = 150;
  constexpr DWORD kPollMilliseconds = 2;
  const DWORD limit = timeoutMs > 0 ? static_cast<DWORD>(timeoutMs) : kDefaultLimitMs;
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < limit) {
    if (TestTargetText(target, window, given, test) == kHolds) {
      return KORVANE_OK;
    }
    Sleep(kPollMilliseconds);
  }
  return KORVANE_FAILED;
}

// What the exports share. Without a text to give they pass an empty one.
int Ask(const char* name, const TargetRecord* target, HWND window, const WCHAR* given, TextTest test) noexcept {
  return AnswerExport(name, KORVANE_NOT_FOUND, [&]() -> Outcome {
    if (target == nullptr || given == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return TestTargetText(target, window, given, test);
  });
}

int Wait(const char* name, const TargetRecord* target, HWND window, const WCHAR* given, int timeoutMs,
         TextTest test) noexcept {
  return AnswerExport(name, KORVANE_FAILED, [&]() -> Outcome {
    if (target == nullptr || given == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return WaitForTargetText(target, window, given, timeoutMs, test);
  });
}

}  // namespace
}  // namespace korvane

int isTargetEmpty(const TargetRecord* target, HWND window) noexcept {
  return korvane::Ask("isTargetEmpty", target, window, TEXT(""), korvane::IsBlank);
}

int targetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText) noexcept {
  return korvane::Ask("targetContainsText", target, window, expectedText, korvane::IsSame);
}

int targetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText) noexcept {
  return korvane::Ask("targetContainsPartialText", target, window, partialText, korvane::ContainsEither);
}

int waitForFieldChange(const TargetRecord* target, HWND window, const KorvaneChar* previousText,
                       int timeoutMs) noexcept {
  return korvane::Wait("waitForFieldChange", target, window, previousText, timeoutMs, korvane::IsDifferent);
}

int waitForFieldEmpty(const TargetRecord* target, HWND window, int timeoutMs) noexcept {
  return korvane::Wait("waitForFieldEmpty", target, window, TEXT(""), timeoutMs, korvane::IsBlank);
}

int waitForTargetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText,
                                     int timeoutMs) noexcept {
  return korvane::Wait("waitForTargetContainsPartialText", target, window, partialText, timeoutMs,
                       korvane::ContainsEither);
}

int waitForTargetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText,
                              int timeoutMs) noexcept {
  return korvane::Wait("waitForTargetContainsText", target, window, expectedText, timeoutMs, korvane::IsSame);
}
