#include "tests/native/fault_scenarios.h"

#include <cstring>

#include "tests/native/fixture.h"

namespace tests {
namespace {

constexpr char kUntouched = 0x5A;

template <class Thing>
bool IsUntouched(const Thing& thing) {
  const auto* const bytes = reinterpret_cast<const char*>(&thing);
  return std::all_of(bytes, bytes + sizeof thing, [](char byte) { return byte == kUntouched; });
}

bool AreSame(const TargetRecord& a, const TargetRecord& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// ---- Documented failures ----

Failures operator+(Failures some, const Failures& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}

const Failures kNoContext = {
    {KORVANE_FAILED, "ERROR InitializeAutomation Code:-3 Details:COM initialization failed"},
    {KORVANE_FAILED, "ERROR InitializeAutomation Code:-3 Details:UI Automation creation failed"}};

const Failures kCaptureAtPoint = {
    {KORVANE_NOT_FOUND, "ERROR captureTargetAtPoint Code:-1 Details:No element found at point"},
    {KORVANE_INVALID_ARGUMENT, "ERROR captureTargetAtPoint Code:-2 Details:target parameter is null"},
    {KORVANE_FAILED, "[captureTargetAtPoint] ERROR: Failed to initialize automation"}};

// Its steps are written to the standard output, not to the log.
const Failures kCaptureAtCursor = {{KORVANE_NOT_FOUND, nullptr}};

const Failures kVerify = {{KORVANE_NOT_FOUND, "ERROR verifyTarget Code:-1 Details:Target element not found"},
                          {KORVANE_FAILED, "[verifyTarget] ERROR: Failed to initialize automation"}};

// A refused SendInput writes no line.
const Failures kInput = {{KORVANE_FAILED, nullptr}};

const Failures kClick =
    kNoContext + Failures{{KORVANE_NOT_FOUND, "ERROR clickTarget Code:-1 Details:Target element not found"},
                          {KORVANE_NOT_FOUND, "ERROR clickTarget Code:-1 Details:Target window not found"},
                          {KORVANE_INVALID_ARGUMENT, "ERROR clickTarget Code:-2 Details:No target window specified"},
                          {KORVANE_FAILED, "ERROR clickTarget Code:-3 Details:Failed to get clickable point"},
                          {KORVANE_FAILED, "[FindTargetElement] SUCCESS with Method 0: AutomationId"},
                          {KORVANE_FAILED, "[FindTargetElement] SUCCESS with Method 2: Coordinates (verified window)"},
                          {KORVANE_FAILED, "[FindTargetElement] SUCCESS with Method 3: Tree Path"}};

const Failures kFocus = {
    {KORVANE_NOT_FOUND, "ERROR ensureWindowFocus Code:-1 Details:Window not found"},
    {KORVANE_FAILED, "ERROR ensureWindowFocus Code:-3 Details:Window not in foreground after focus attempt"}};

const Failures kVerifiedPaste = {
    {KORVANE_NOT_FOUND, "[pasteToTargetWithVerifyEx] clickTarget failed with code: -1"},
    {KORVANE_NOT_FOUND, "[pasteToTargetWithVerifyEx] ERROR: Could not find target element for verification"},
    {KORVANE_FAILED, "[pasteToTargetWithVerifyEx] clickTarget failed with code: -3"},
    {KORVANE_FAILED, "[pasteToTargetWithVerifyEx] SendInput failed - expected 4, got: 0"}};

const Failures kDirectPaste = {
    {KORVANE_NOT_FOUND, "[pasteToTargetDirect] ERROR: Could not find target element"},
    {KORVANE_NOT_FOUND, "[pasteToTargetDirect] ERROR: Could not get native window handle from element"}};

const Failures kClipboard = {
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Failed to allocate global memory"},
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Failed to lock global memory"},
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Failed to open clipboard after retries"},
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Failed to empty clipboard"},
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Failed to set clipboard data"},
    {KORVANE_FAILED, "ERROR setClipboardText Code:-3 Details:Clipboard verification failed"}};

const Failures kClipboardWithHtml = {
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to allocate global memory (text)"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to allocate global memory (html)"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to lock global memory (text)"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to lock global memory (html)"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to open clipboard after retries"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to empty clipboard"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to set unicode clipboard data"},
    {KORVANE_FAILED, "ERROR setClipboardTextAndHtml Code:-3 Details:Clipboard verification failed"}};

const Failures kRead = {{KORVANE_NOT_FOUND, "getTargetText: ERROR - Failed to allocate memory"},
                        {KORVANE_NOT_FOUND, "getTargetText: FAILED - No element found"},
                        {KORVANE_NOT_FOUND, "getTargetText: FAILED - No text found in any property"}};

// The line of the last attempt.
const Failures kWait = {{KORVANE_FAILED, "getTargetText: FAILED - No element found"},
                        {KORVANE_FAILED, "getTargetText: FAILED - No text found in any property"},
                        {KORVANE_FAILED, "getTargetText: SUCCESS with UIA_ValueValuePropertyId - Text: shown text"}};

// ---- Circumstances ----

void ShowText(Form& form) {
  initializeAutomation();
  TheDesktop().Controls().SetText(form.edit, u"shown text");
}

// Copies the text without an allocation, because that would be counted as the library's.
int ReadText(Form& form, const TargetRecord& record) {
  KorvaneChar* const text = getTargetText(&record, form.window);
  if (text == nullptr) {
    return KORVANE_NOT_FOUND;
  }
  standin::TextView(text).copy(form.read, std::size(form.read) - 1);
  freeTextResult(text);
  return KORVANE_OK;
}

// ---- Promises ----

void CheckCapturedAtPoint(const Form& form, int code) {
  if (code == KORVANE_FAILED || code == KORVANE_INVALID_ARGUMENT) {
    EXPECT_TRUE(IsUntouched(form.captured));
    return;
  }
  TargetRecord nothing = RecordAt(form.captured.x, form.captured.y);
  EXPECT_EQ(form.captured.x, 150);
  EXPECT_EQ(form.captured.identificationMethod, KORVANE_METHOD_UNDECIDED);
  EXPECT_TRUE(code == KORVANE_OK || AreSame(form.captured, nothing));
}

void CheckCapturedAtCursor(const Form& form, int code) {
  if (code == KORVANE_OK) {
    EXPECT_EQ(form.captured.identificationMethod,
              form.captured.pathLength > 0 ? KORVANE_METHOD_TREE_PATH : KORVANE_METHOD_COORDINATES);
  } else {
    EXPECT_TRUE(AreSame(form.captured, EmptyRecord()));
  }
}

// A click that failed has pressed nothing.
void CheckClicks(const Form& form, int code) {
  EXPECT_LE(TheDesktop().Controls().MouseDowns(form.edit), code == KORVANE_OK ? 1 : 0);
  EXPECT_EQ(TheDesktop().Controls().Presses(form.button), 0);
}

void CheckPasted(const Form& form, int code) {
  if (code == KORVANE_OK) {
    EXPECT_EQ(TheDesktop().Controls().TextOf(form.edit), u"pasted text");
  }
}

void CheckClipboard(const Form&, int code) {
  if (code == KORVANE_OK) {
    EXPECT_EQ(TheDesktop().Clipboard().Text(), u"text");
  }
}

void CheckClipboardWithHtml(const Form& form, int code) {
  CheckClipboard(form, code);
  const auto block = TheDesktop().Clipboard().Bytes("HTML Format");
  if (code == KORVANE_OK && !block.empty()) {
    EXPECT_THAT(std::string(block.begin(), block.end()), ::testing::HasSubstr("<b>text</b>"));
  }
}

void CheckRead(const Form& form, int code) {
  EXPECT_EQ(standin::Text(form.read), code == KORVANE_OK ? u"shown text" : u"");
}

void CheckInfo(const Form& form, int /*code*/) {
  using ::testing::AnyOf;
  EXPECT_THAT(standin::Text(form.info.title), AnyOf(u"Orders", u""));
  EXPECT_THAT(standin::Text(form.info.processName), AnyOf(u"orders.exe", u"Unknown"));
  EXPECT_EQ(form.info.window, form.window);
}

}  // namespace

Form BuildForm() {
  auto& desktop = TheDesktop();
  desktop.Reset();
  Form form{};
  std::memset(&form.captured, kUntouched, sizeof form.captured);
  std::memset(&form.info, kUntouched, sizeof form.info);
  const DWORD process = desktop.Windows().AddProcess(u"C:\\Office\\orders.exe");
  form.window = desktop.Windows().Add(
      {.className = u"Dialog", .title = u"Orders", .rect = {100, 100, 500, 400}, .process = process});
  form.edit = AddControl(form.window, u"Edit", 7);
  form.button = desktop.Windows().Add({.className = u"Button",
                                       .title = u"Save",
                                       .rect = {120, 160, 220, 190},
                                       .parent = form.window,
                                       .controlId = 8,
                                       .behaviour = standin::Behaviour::Button});
  desktop.Elements().Add(form.window, {.className = u"", .name = u"Row", .rect = {120, 200, 320, 220}});
  form.other = desktop.Windows().Add({.className = u"Other", .title = u"Other", .rect = {600, 100, 800, 300}});
  desktop.Windows().BringToTop(form.window);
  desktop.Windows().SetForeground(form.other);
  desktop.Clipboard().Set(u"pasted text");
  desktop.User().MoveCursor(150, 130);

  form.byId = RecordById(u"7");
  form.byPath = EmptyRecord();
  AddLevel(form.byPath, UIA_WindowControlTypeId, u"Dialog", 1);
  AddLevel(form.byPath, 50004, u"Edit", 1);
  form.byPoint = RecordAt(150, 130);
  form.windowless = RecordAt(150, 210);
  return form;
}

const std::vector<Scenario>& Scenarios() {
  static const std::vector<Scenario> all = {
      {.name = "initializeAutomation", .call = [](Form&) { return initializeAutomation(); }, .failures = kNoContext},
      {.name = "setTargetWindow", .call = [](Form& f) { return setTargetWindow(f.window); }, .failures = kNoContext},
      {.name = "delay",
       .call =
           [](Form&) {
             delay(3);
             return 0;
           }},
      {.name = "initializeLog, default",
       .call =
           [](Form&) {
             initializeLog(nullptr);
             return 0;
           }},
      {.name = "logAction",
       .call =
           [](Form&) {
             logAction(u"step", 0, 1);
             logActionWithTimestamp(u"step", 0, 1, 0);
             return 0;
           }},
      {.name = "captureTargetAtPoint, edit",
       .call = [](Form& f) { return captureTargetAtPoint(&f.captured, 150, 130); },
       .failures = kCaptureAtPoint,
       .check = CheckCapturedAtPoint},
      {.name = "captureTargetAtPoint, part without window",
       .call = [](Form& f) { return captureTargetAtPoint(&f.captured, 150, 210); },
       .failures = kCaptureAtPoint,
       .check = CheckCapturedAtPoint},
      {.name = "captureTargetAtPoint, null",
       .call = [](Form&) { return captureTargetAtPoint(nullptr, 1, 1); },
       .failures = kCaptureAtPoint,
       .expected = KORVANE_INVALID_ARGUMENT},
      {.name = "captureTargetAtCursor",
       .call = [](Form& f) { return captureTargetAtCursor(&f.captured); },
       .failures = kCaptureAtCursor,
       .check = CheckCapturedAtCursor},
      {.name = "verifyTarget, id",
       .call = [](Form& f) { return verifyTarget(&f.byId, f.window); },
       .failures = kVerify},
      {.name = "verifyTarget, path",
       .call = [](Form& f) { return verifyTarget(&f.byPath, f.window); },
       .failures = kVerify},
      {.name = "verifyTarget, point",
       .call = [](Form& f) { return verifyTarget(&f.byPoint, f.window); },
       .failures = kVerify},
      {.name = "verifyTarget, windowless",
       .call = [](Form& f) { return verifyTarget(&f.windowless, f.window); },
       .failures = kVerify},
      {.name = "verifyTarget, other window",
       .call = [](Form& f) { return verifyTarget(&f.byPoint, f.other); },
       .failures = kVerify,
       .expected = KORVANE_NOT_FOUND},
      {.name = "clearElementCache",
       .call =
           [](Form&) {
             clearElementCache();
             return 0;
           }},
      {.name = "clickTarget, id",
       .call = [](Form& f) { return clickTarget(&f.byId, f.window); },
       .failures = kClick,
       .check = CheckClicks},
      {.name = "clickTarget, path",
       .call = [](Form& f) { return clickTarget(&f.byPath, f.window); },
       .failures = kClick,
       .check = CheckClicks},
      {.name = "clickTarget, point",
       .call = [](Form& f) { return clickTarget(&f.byPoint, f.window); },
       .failures = kClick,
       .check = CheckClicks},
      {.name = "clickTarget, remembered",
       .call = [](Form& f) { return clickTarget(&f.byId, f.window); },
       .failures = kClick,
       .arrange = [](Form& f) { verifyTarget(&f.byId, f.window); },
       .check = CheckClicks},
      {.name = "clickTarget, no window",
       .call = [](Form& f) { return clickTarget(&f.byId, nullptr); },
       .failures = kClick,
       .expected = KORVANE_INVALID_ARGUMENT,
       .check = CheckClicks},
      {.name = "clickTarget, no clickable point",
       .call = [](Form& f) { return clickTarget(&f.byId, f.window); },
       .failures = kClick,
       .arrange =
           [](Form& f) { TheDesktop().Elements().SetClickablePoint(TheDesktop().Elements().Of(f.edit), std::nullopt); },
       .check = CheckClicks},
      {.name = "ensureWindowFocus", .call = [](Form& f) { return ensureWindowFocus(f.window); }, .failures = kFocus},
      {.name = "ensureWindowFocus, minimised and refused",
       .call = [](Form& f) { return ensureWindowFocus(f.window); },
       .failures = kFocus,
       .arrange =
           [](Form& f) {
             TheDesktop().Windows().Minimize(f.window);
             TheDesktop().Windows().RefuseForeground(1);
           }},
      {.name = "pasteToTargetWithVerifyEx",
       .call = [](Form& f) { return pasteToTargetWithVerifyEx(&f.byPath, f.window, 40); },
       .failures = kVerifiedPaste,
       .check = CheckPasted},
      {.name = "pasteToTargetWithVerify, id",
       .call = [](Form& f) { return pasteToTargetWithVerify(&f.byId, f.window); },
       .failures = kVerifiedPaste,
       .check = CheckPasted},
      {.name = "pasteToTargetDirect, caret",
       .call = [](Form& f) { return pasteToTargetDirect(&f.byId, f.window, u"direct", 1); },
       .failures = kDirectPaste,
       .arrange = ShowText},
      {.name = "pasteToTargetDirect, all",
       .call = [](Form& f) { return pasteToTargetDirect(&f.byPath, f.window, u"direct", 0); },
       .failures = kDirectPaste,
       .arrange = ShowText},
      {.name = "pasteToTargetSimple",
       .call = [](Form& f) { return pasteToTargetSimple(&f.byId, f.window); },
       .failures = kInput},
      {.name = "sendKey", .call = [](Form&) { return sendKey(0x41); }, .failures = kInput},
      {.name = "sendKeySequence", .call = [](Form&) { return sendKeySequence(u"Ab!", 1); }, .failures = kInput},
      {.name = "sendCtrlShiftF3", .call = [](Form&) { return sendCtrlShiftF3(); }, .failures = kInput},
      {.name = "setClipboardText",
       .call = [](Form&) { return setClipboardText(u"text"); },
       .failures = kClipboard,
       .check = CheckClipboard},
      {.name = "setClipboardText, held",
       .call = [](Form&) { return setClipboardText(u"text"); },
       .failures = kClipboard,
       .expected = KORVANE_FAILED,
       .arrange = [](Form&) { TheDesktop().Clipboard().Hold(-1); }},
      {.name = "setClipboardTextAndHtml",
       .call = [](Form&) { return setClipboardTextAndHtml(u"text", "<b>text</b>"); },
       .failures = kClipboardWithHtml,
       .check = CheckClipboardWithHtml},
      {.name = "getTargetText",
       .call = [](Form& f) { return ReadText(f, f.byPath); },
       .failures = kRead,
       .arrange = ShowText,
       .check = CheckRead},
      {.name = "isTargetEmpty",
       .call = [](Form& f) { return isTargetEmpty(&f.byId, f.window); },
       .failures = kRead,
       .arrange = ShowText},
      {.name = "targetContainsText",
       .call = [](Form& f) { return targetContainsText(&f.byId, f.window, u"shown text"); },
       .failures = kRead,
       .expected = 1,
       .arrange = ShowText},
      {.name = "targetContainsPartialText",
       .call = [](Form& f) { return targetContainsPartialText(&f.byId, f.window, u"own"); },
       .failures = kRead,
       .expected = 1,
       .arrange = ShowText},
      {.name = "waitForTargetContainsText",
       .call = [](Form& f) { return waitForTargetContainsText(&f.byId, f.window, u"shown text", 6); },
       .failures = kWait,
       .arrange = ShowText},
      {.name = "waitForFieldChange",
       .call = [](Form& f) { return waitForFieldChange(&f.byId, f.window, u"shown text", 6); },
       .failures = kWait,
       .arrange =
           [](Form& f) {
             ShowText(f);
             TheDesktop().Clock().After(3, [edit = f.edit] { TheDesktop().Controls().SetText(edit, u"new"); });
           }},
      {.name = "waitForFieldEmpty, in vain",
       .call = [](Form& f) { return waitForFieldEmpty(&f.byId, f.window, 4); },
       .failures = kWait,
       .expected = KORVANE_FAILED,
       .arrange = ShowText},
      {.name = "waitForTargetContainsPartialText",
       .call = [](Form& f) { return waitForTargetContainsPartialText(&f.byId, f.window, u"own", 6); },
       .failures = kWait,
       .arrange = ShowText},
      {.name = "verifySimple",
       .call = [](Form& f) { return verifySimple(u"shown text", f.window); },
       .failures = kInput,
       .arrange =
           [](Form& f) {
             TheDesktop().Controls().SetText(f.edit, u"shown text");
             TheDesktop().User().Click(150, 130);
           }},
      {.name = "getWindowInfo", .call = [](Form& f) { return getWindowInfo(f.window, &f.info); }, .check = CheckInfo},
      {.name = "findWindowByClick",
       .call = [](Form& f) { return findWindowByClick() == f.window ? KORVANE_OK : KORVANE_NOT_FOUND; },
       .failures = Failures{{KORVANE_NOT_FOUND, nullptr}},
       .arrange =
           [](Form&) {
             TheDesktop().Clock().After(5, [] { TheDesktop().User().Click(150, 170); });
             // Ends the wait when the message that the click posts is made to fail.
             TheDesktop().Clock().After(9, [] { TheDesktop().Host().PostMessage(WM_NULL); });
           }},
      {.name = "cancel monitor",
       .call =
           [](Form&) {
             startCancelMonitor();
             delay(40);
             stopCancelMonitor();
             return isCancelled();
           },
       .expected = 1,
       .arrange = [](Form&) { TheDesktop().User().HoldEscape(5, 20); },
       .others = {0}},
  };
  return all;
}

}  // namespace tests
