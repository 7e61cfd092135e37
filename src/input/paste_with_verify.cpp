#include "automation/target_window.h"
#include "clipboard/clipboard.h"
#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/find_target.h"
#include "util/cancel_monitor.h"
#include "util/text_search.h"

namespace korvane {
namespace {

constexpr TaggedLog LogVerifyPasteLine("[pasteToTargetWithVerifyEx] ");
constexpr int kDefaultTimeoutMs = 150;

// The clipboard's text, with one more try: a program that has just written it may still be at it.
TaskText ReadExpectedText() {
  constexpr DWORD kRetryMilliseconds = 4;
  TaskText text = ReadClipboardText();
  if (text) {
    return text;
  }
  LogVerifyPasteLine("First clipboard check failed, waiting 4ms and retrying...");
  Sleep(kRetryMilliseconds);
  text = ReadClipboardText();
  LogVerifyPasteLine(text ? "Clipboard text available after retry" : "ERROR: No text in clipboard after retry");
  return text;
}

void LogExpectedText(WideView text) {
  constexpr std::size_t kShown = 100;
  LogVerifyPasteLine("Clipboard text retrieved: \"", text.substr(0, kShown), text.size() > kShown ? "..." : "", "\"");
}

// The element's current value; holds no string when there is none or it is empty.
Variant GetInputTargetText(IUIAutomationElement& element) {
  Variant value;
  if (FAILED(element.GetCurrentPropertyValue(UIA_ValueValuePropertyId, value.Receive())) || value.Text() == nullptr ||
      SysStringLen(value.Text()) == 0) {
    return {};
  }
  return value;
}

// The field may add to the text or show only a piece of it so far.
bool ShowsText(WideView value, WideView expected, WideView partial) {
  return Contains(value, partial) || Contains(expected, value);
}

// Polls the element until it shows the text: 0, -3 after the time-out, or -4.
int WaitForText(IUIAutomationElement& element, WideView expected, DWORD timeoutMs) {
  constexpr DWORD kPollMilliseconds = 2;
  constexpr int kPollsPerLine = 10;
  const DWORD start = GetTickCount();
  const std::size_t partialStart = expected.size() / 2;
  const WideView partial = expected.substr(partialStart);
  LogVerifyPasteLine("Expected text length: ", expected.size(), ", partial start index: ", partialStart);

  int polls = 0;
  while (GetTickCount() - start < timeoutMs) {
    if (CancelRequested()) {
      return KORVANE_CANCELLED;
    }
    ++polls;
    if (const Variant value = GetInputTargetText(element); value.Text() == nullptr) {
      if (polls == 1 || polls % kPollsPerLine == 0) {
        LogVerifyPasteLine("getInputTargetText returned null (poll #", polls, ")");
      }
    } else if (ShowsText(ViewOf(value.Text()), expected, partial)) {
      LogVerifyPasteLine("VERIFICATION SUCCESS after ", GetTickCount() - start, "ms, polls: ", polls);
      return KORVANE_OK;
    }
    Sleep(kPollMilliseconds);
  }
  LogVerifyPasteLine("VERIFICATION FAILED after ", GetTickCount() - start, "ms, total polls: ", polls);
  return KORVANE_FAILED;
}

Outcome PasteWithVerify(const TargetRecord* target, HWND givenWindow, int timeoutMs) {
  LogVerifyPasteLine("Function entered");
  if (target == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid target parameter"};
  }
  if (const int code = clickTarget(target, givenWindow); code != KORVANE_OK) {
    LogVerifyPasteLine("clickTarget failed with code: ", code);
    return code;
  }
  LogVerifyPasteLine("clickTarget succeeded");
  const HWND window = ChooseWindow(givenWindow);
  if (window == nullptr) {
    LogVerifyPasteLine("ERROR: No target window specified");
    return KORVANE_INVALID_ARGUMENT;
  }
  LogVerifyPasteLine("Using target window handle: ", HandleNumber(window));
  const TaskText expected = ReadExpectedText();
  if (!expected) {
    return KORVANE_FAILED;
  }
  LogExpectedText(ViewOf(expected.Get()));
  constexpr WORD kCtrlV[] = {VK_CONTROL, 'V'};
  if (const std::size_t inserted = SendKeys(kCtrlV); inserted != 4) {
    LogVerifyPasteLine("SendInput failed - expected 4, got: ", inserted);
    return KORVANE_FAILED;
  }
  LogVerifyPasteLine("SendInput succeeded - Ctrl+V sent");
  const int effectiveMs = timeoutMs > 0 ? timeoutMs : kDefaultTimeoutMs;
  LogVerifyPasteLine("Starting verification loop (", effectiveMs, "ms timeout)");
  const ElementPtr element = FindTargetElement(target, window);
  if (!element) {
    LogVerifyPasteLine("ERROR: Could not find target element for verification");
    return KORVANE_NOT_FOUND;
  }
  return WaitForText(*element, ViewOf(expected.Get()), static_cast<DWORD>(effectiveMs));
}

}  // namespace
}  // namespace korvane

int pasteToTargetWithVerifyEx(const TargetRecord* target, HWND window, int timeoutMs) noexcept {
  return korvane::AnswerExport("pasteToTargetWithVerifyEx", KORVANE_FAILED,
                               [&] { return korvane::PasteWithVerify(target, window, timeoutMs); });
}

int pasteToTargetWithVerify(const TargetRecord* target, HWND window) noexcept {
  return pasteToTargetWithVerifyEx(target, window, korvane::kDefaultTimeoutMs);
}
