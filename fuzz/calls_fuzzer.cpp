// Any sequence of calls while the desktop changes under them: windows close, the foreground is refused, another program
// holds the clipboard, the user presses Escape, platform calls fail.
#include "fuzz/form.h"

using standin::TheDesktop;

namespace fuzz {
namespace {

struct Host {
  FuzzedDataProvider& input;
  Form form;
  TargetRecord record{};

  HWND Window() {
    return AnyWindow(input, form);
  }
  int Timeout() {
    return input.ConsumeIntegralInRange(1, 30);
  }
};

// What happens on the desktop besides the library's own doing.
void Disturb(Host& host) {
  auto& desktop = TheDesktop();
  const int soon = host.input.ConsumeIntegralInRange(0, 40);
  const Form form = host.form;
  switch (host.input.ConsumeIntegralInRange(0, 14)) {
    case 0:
      desktop.Clock().After(soon, [form] { TheDesktop().Windows().Destroy(form.edit); });
      break;
    case 1:
      desktop.Clock().After(soon, [form] { TheDesktop().Windows().Destroy(form.window); });
      break;
    case 2:
      desktop.Clock().After(soon, [form] { TheDesktop().Windows().MoveTo(form.window, 300, 50); });
      break;
    case 3:
      desktop.Windows().RefuseForeground(host.input.ConsumeIntegralInRange(-1, 3));
      break;
    case 4:
      desktop.Windows().RefuseThreadAttach(host.input.ConsumeBool());
      break;
    case 5:
      desktop.Windows().Minimize(form.window);
      break;
    case 6:
      desktop.Clipboard().Hold(soon);
      break;
    case 7:
      desktop.User().HoldEscape(soon, 20);
      break;
    case 8:
      // A key that was let in could never be released if every later call failed.
      desktop.Faults().Stop();
      desktop.Input().Block(host.input.ConsumeIntegralInRange(0u, 3u));
      break;
    case 9:
      desktop.Input().Accept();
      break;
    case 10:
      desktop.Clock().After(soon, [form] { TheDesktop().Controls().SetText(form.edit, u"changed"); });
      break;
    case 11:
      desktop.Controls().DelayPaste(soon);
      break;
    case 12:
      desktop.Faults().FailNth(host.input.ConsumeIntegralInRange<std::uint64_t>(1, 60));
      break;
    case 13:
      desktop.Input().Accept();
      desktop.Faults().FailFromNth(host.input.ConsumeIntegralInRange<std::uint64_t>(1, 60));
      break;
    default:
      desktop.Faults().Stop();
      break;
  }
}

void PickWindow() {
  auto& desktop = TheDesktop();
  desktop.Clock().After(5, [] { TheDesktop().User().Click(150, 170); });
  // Whatever fails, the wait has an end.
  desktop.Clock().After(9, [] { TheDesktop().Host().PostMessage(WM_NULL); });
  desktop.Clock().After(15, [] { TheDesktop().Host().PostQuit(0); });
  findWindowByClick();
}

void CallShortcut(Host& host) {
  using Shortcut = int() noexcept;
  static constexpr Shortcut* kShortcuts[] = {sendAltA,    sendAltB,    sendAltD,       sendAltE,     sendAltP,
                                             sendAltT,    sendAltZ,    sendCtrlA,      sendCtrlAltN, sendCtrlL,
                                             sendCtrlN,   sendCtrlQ,   sendCtrlS,      sendCtrlV,    sendCtrlShiftF3,
                                             sendShiftF2, sendShiftF4, sendShiftInsert};
  RequireCode("a shortcut", host.input.PickValueInArray(kShortcuts)(), {0, -3});
}

void CallWithoutTarget(Host& host) {
  WindowInfo info;
  switch (host.input.ConsumeIntegralInRange(0, 15)) {
    case 0:
      RequireCode("initializeAutomation", initializeAutomation(), {0, -3});
      break;
    case 1:
      cleanupAutomation();
      break;
    case 2:
      RequireCode("setTargetWindow", setTargetWindow(host.Window()), {0, -3});
      break;
    case 3:
      delay(host.input.ConsumeIntegralInRange(-1, 40));
      break;
    case 4:
      initializeLog(host.input.ConsumeBool() ? u"/dev/null" : u"/nowhere/at/all");
      break;
    case 5:
      clearElementCache();
      break;
    case 6:
      RequireCode("ensureWindowFocus", ensureWindowFocus(host.Window()), {0, -1, -2, -3});
      break;
    case 7:
      RequireCode("sendKey", sendKey(host.input.ConsumeIntegral<int>()), {0, -2, -3});
      break;
    case 8:
      RequireCode("sendKeySequence", sendKeySequence(u"Ab!\u4e2d", 1), {0, -3});
      break;
    case 9:
      CallShortcut(host);
      break;
    case 10:
      RequireCode("setClipboardText", setClipboardText(u"a text"), {0, -3});
      break;
    case 11:
      RequireCode("setClipboardTextAndHtml", setClipboardTextAndHtml(u"a text", "<b>a text</b>"), {0, -3});
      break;
    case 12:
      RequireCode("verifySimple", verifySimple(u"shown text", host.Window()), {0, -1, -2, -3});
      break;
    case 13:
      PickWindow();
      break;
    case 14:
      RequireCode("getWindowInfo", getWindowInfo(host.Window(), &info), {0, -2});
      break;
    default:
      startCancelMonitor();
      if (host.input.ConsumeBool()) {
        delay(30);
        stopCancelMonitor();
      }
      RequireCode("isCancelled", isCancelled(), {0, 1});
      break;
  }
}

void CallWithTarget(Host& host) {
  const HWND window = host.Window();
  const TargetRecord* const target = host.input.ConsumeProbability<float>() < 0.05F ? nullptr : &host.record;
  switch (host.input.ConsumeIntegralInRange(0, 12)) {
    case 0:
      RequireCode("captureTargetAtPoint",
                  captureTargetAtPoint(&host.record, 150, host.input.ConsumeIntegral<int>() % 300), {0, -1, -3});
      host.record.identificationMethod = host.input.ConsumeIntegralInRange(-1, 3);
      break;
    case 1:
      RequireCode("captureTargetAtCursor", captureTargetAtCursor(&host.record), {0, -1});
      break;
    case 2:
      RequireCode("verifyTarget", verifyTarget(target, window), {0, -1, -2, -3});
      break;
    case 3:
      RequireCode("clickTarget", clickTarget(target, window), {0, -1, -2, -3, -4});
      break;
    case 4:
      RequireCode("pasteToTargetWithVerifyEx", pasteToTargetWithVerifyEx(target, window, host.Timeout()),
                  {0, -1, -2, -3, -4});
      break;
    case 5:
      RequireCode("pasteToTargetDirect", pasteToTargetDirect(target, window, u"direct", host.Timeout() % 2),
                  {0, -1, -2});
      break;
    case 6:
      RequireCode("pasteToTargetSimple", pasteToTargetSimple(target, window), {0, -2, -3});
      break;
    case 7:
      freeTextResult(target == nullptr ? nullptr : getTargetText(target, window));
      break;
    case 8:
      RequireCode("isTargetEmpty", isTargetEmpty(target, window), {0, 1, -1, -2});
      break;
    case 9:
      RequireCode("waitForFieldChange", waitForFieldChange(target, window, u"shown text", host.Timeout()), {0, -2, -3});
      break;
    case 10:
      RequireCode("waitForFieldEmpty", waitForFieldEmpty(target, window, host.Timeout()), {0, -2, -3});
      break;
    case 11:
      RequireCode("waitForTargetContainsText", waitForTargetContainsText(target, window, u"changed", host.Timeout()),
                  {0, -2, -3});
      break;
    default:
      host.record = AnyRecord(host.input);
      break;
  }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace fuzz;
  FuzzedDataProvider input(data, size);
  Host host{input, OpenForm(input.ConsumeIntegralInRange(0, 3) == 0)};
  // Enough to bring everything into any state; more would only repeat it.
  constexpr int kMostCalls = 24;
  for (int calls = 0; calls < kMostCalls && input.remaining_bytes() > 0; ++calls) {
    switch (input.ConsumeIntegralInRange(0, 3)) {
      case 0:
        Disturb(host);
        break;
      case 1:
        CallWithoutTarget(host);
        break;
      default:
        CallWithTarget(host);
        break;
    }
    if (TheDesktop().Host().HookCount() != 0) {
      Require(false, "no hook stays behind");
    }
  }
  CloseForm();
  return 0;
}
