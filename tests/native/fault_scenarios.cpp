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

const Failures kNoContext = {{-3, "ERROR InitializeAutomation Code:-3 Details:COM initialization failed"},
                             {-3, "ERROR InitializeAutomation Code:-3 Details:UI Automation creation failed"}};

const Failures kCaptureAtPoint = {{-1, "ERROR captureTargetAtPoint Code:-1 Details:No element found at point"},
                                  {-2, "ERROR captureTargetAtPoint Code:-2 Details:target parameter is null"},
                                  {-3, "[captureTargetAtPoint] ERROR: Failed to initialize automation"}};

// Its steps go to the standard output.
const Failures kCaptureAtCursor = {{-1, nullptr}};

const Failures kVerify = {{-1, "ERROR verifyTarget Code:-1 Details:Target element not found"},
                          {-3, "[verifyTarget] ERROR: Failed to initialize automation"}};

// Input that is not accepted has no line.
const Failures kInput = {{-3, nullptr}};

const Failures kClick = kNoContext + Failures{{-1, "ERROR clickTarget Code:-1 Details:Target element not found"},
                                              {-1, "ERROR clickTarget Code:-1 Details:Target window not found"},
                                              {-2, "ERROR clickTarget Code:-2 Details:No target window specified"},
                                              {-3, "ERROR clickTarget Code:-3 Details:Failed to get clickable point"},
                                              {-3, "[FindTargetElement] SUCCESS with Method 0: AutomationId"},
                                              {-3,
                                               "[FindTargetElement] SUCCESS with Method 2: Coordinates (verified "
                                               "window)"},
                                              {-3, "[FindTargetElement] SUCCESS with Method 3: Tree Path"}};

const Failures kFocus = {{-1, "ERROR ensureWindowFocus Code:-1 Details:Window not found"},
                         {-3, "ERROR ensureWindowFocus Code:-3 Details:Window not in foreground after focus attempt"}};

const Failures kVerifiedPaste = {
    {-1, "[pasteToTargetWithVerifyEx] clickTarget failed with code: -1"},
    {-1, "[pasteToTargetWithVerifyEx] ERROR: Could not find target element for verification"},
    {-3, "[pasteToTargetWithVerifyEx] clickTarget failed with code: -3"},
    {-3, "[pasteToTargetWithVerifyEx] SendInput failed - expected 4, got: 0"}};

const Failures kDirectPaste = {{-1, "[pasteToTargetDirect] ERROR: Could not find target element"},
                               {-1, "[pasteToTargetDirect] ERROR: Could not get native window handle from element"}};

const Failures kClipboard = {{-3, "ERROR setClipboardText Code:-3 Details:Failed to allocate global memory"},
                             {-3, "ERROR setClipboardText Code:-3 Details:Failed to lock global memory"},
                             {-3, "ERROR setClipboardText Code:-3 Details:Failed to open clipboard after retries"},
                             {-3, "ERROR setClipboardText Code:-3 Details:Failed to empty clipboard"},
                             {-3, "ERROR setClipboardText Code:-3 Details:Failed to set clipboard data"},
                             {-3, "ERROR setClipboardText Code:-3 Details:Clipboard verification failed"}};

const Failures kClipboardWithHtml = {
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to allocate global memory (text)"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to allocate global memory (html)"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to lock global memory (text)"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to lock global memory (html)"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to open clipboard after retries"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to empty clipboard"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Failed to set unicode clipboard data"},
    {-3, "ERROR setClipboardTextAndHtml Code:-3 Details:Clipboard verification failed"}};

const Failures kRead = {{-1, "getTargetText: ERROR - Failed to allocate memory"},
                        {-1, "getTargetText: FAILED - No element found"},
                        {-1, "getTargetText: FAILED - No text found in any property"}};

// The line of the last attempt.
const Failures kWait = {{-3, "getTargetText: FAILED - No element found"},
                        {-3, "getTargetText: FAILED - No text found in any property"},
                        {-3, "getTargetText: SUCCESS with UIA_ValueValuePropertyId - Text: shown text"}};

// ---- Circumstances ----

void ShowText(Form& form) {
  initializeAutomation();
  TheDesktop().Controls().SetText(form.edit, u"shown text");
}

// The text goes into the form without an allocation, which would be taken for the library's.
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

// A failure has not clicked anything.
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
      {"initializeAutomation", [](Form&) { return initializeAutomation(); }, kNoContext},
      {"setTargetWindow", [](Form& f) { return setTargetWindow(f.window); }, kNoContext},
      {"delay",
       [](Form&) {
         delay(3);
         return 0;
       }},
      {"initializeLog, default",
       [](Form&) {
         initializeLog(nullptr);
         return 0;
       }},
      {"logAction",
       [](Form&) {
         logAction(u"step", 0, 1);
         logActionWithTimestamp(u"step", 0, 1, 0);
         return 0;
       }},

      {"captureTargetAtPoint, edit", [](Form& f) { return captureTargetAtPoint(&f.captured, 150, 130); },
       kCaptureAtPoint, 0, [](Form&) {}, CheckCapturedAtPoint},
      {"captureTargetAtPoint, part without window", [](Form& f) { return captureTargetAtPoint(&f.captured, 150, 210); },
       kCaptureAtPoint, 0, [](Form&) {}, CheckCapturedAtPoint},
      {"captureTargetAtPoint, null", [](Form&) { return captureTargetAtPoint(nullptr, 1, 1); }, kCaptureAtPoint, -2},
      {"captureTargetAtCursor", [](Form& f) { return captureTargetAtCursor(&f.captured); }, kCaptureAtCursor, 0,
       [](Form&) {}, CheckCapturedAtCursor},

      {"verifyTarget, id", [](Form& f) { return verifyTarget(&f.byId, f.window); }, kVerify},
      {"verifyTarget, path", [](Form& f) { return verifyTarget(&f.byPath, f.window); }, kVerify},
      {"verifyTarget, point", [](Form& f) { return verifyTarget(&f.byPoint, f.window); }, kVerify},
      {"verifyTarget, windowless", [](Form& f) { return verifyTarget(&f.windowless, f.window); }, kVerify},
      {"verifyTarget, other window", [](Form& f) { return verifyTarget(&f.byPoint, f.other); }, kVerify, -1},
      {"clearElementCache",
       [](Form&) {
         clearElementCache();
         return 0;
       }},

      {"clickTarget, id", [](Form& f) { return clickTarget(&f.byId, f.window); }, kClick, 0, [](Form&) {}, CheckClicks},
      {"clickTarget, path", [](Form& f) { return clickTarget(&f.byPath, f.window); }, kClick, 0, [](Form&) {},
       CheckClicks},
      {"clickTarget, point", [](Form& f) { return clickTarget(&f.byPoint, f.window); }, kClick, 0, [](Form&) {},
       CheckClicks},
      {"clickTarget, remembered", [](Form& f) { return clickTarget(&f.byId, f.window); }, kClick, 0,
       [](Form& f) { verifyTarget(&f.byId, f.window); }, CheckClicks},
      {"clickTarget, no window", [](Form& f) { return clickTarget(&f.byId, nullptr); }, kClick, -2, [](Form&) {},
       CheckClicks},
      {"clickTarget, no clickable point", [](Form& f) { return clickTarget(&f.byId, f.window); }, kClick, 0,
       [](Form& f) { TheDesktop().Elements().SetClickablePoint(TheDesktop().Elements().Of(f.edit), std::nullopt); },
       CheckClicks},
      {"ensureWindowFocus", [](Form& f) { return ensureWindowFocus(f.window); }, kFocus},
      {"ensureWindowFocus, minimised and refused", [](Form& f) { return ensureWindowFocus(f.window); }, kFocus, 0,
       [](Form& f) {
         TheDesktop().Windows().Minimize(f.window);
         TheDesktop().Windows().RefuseForeground(1);
       }},

      {"pasteToTargetWithVerifyEx", [](Form& f) { return pasteToTargetWithVerifyEx(&f.byPath, f.window, 40); },
       kVerifiedPaste, 0, [](Form&) {}, CheckPasted},
      {"pasteToTargetWithVerify, id", [](Form& f) { return pasteToTargetWithVerify(&f.byId, f.window); },
       kVerifiedPaste, 0, [](Form&) {}, CheckPasted},
      {"pasteToTargetDirect, caret", [](Form& f) { return pasteToTargetDirect(&f.byId, f.window, u"direct", 1); },
       kDirectPaste, 0, ShowText},
      {"pasteToTargetDirect, all", [](Form& f) { return pasteToTargetDirect(&f.byPath, f.window, u"direct", 0); },
       kDirectPaste, 0, ShowText},
      {"pasteToTargetSimple", [](Form& f) { return pasteToTargetSimple(&f.byId, f.window); }, kInput},

      {"sendKey", [](Form&) { return sendKey(0x41); }, kInput},
      {"sendKeySequence", [](Form&) { return sendKeySequence(u"Ab!", 1); }, kInput},
      {"sendCtrlShiftF3", [](Form&) { return sendCtrlShiftF3(); }, kInput},

      {"setClipboardText", [](Form&) { return setClipboardText(u"text"); }, kClipboard, 0, [](Form&) {},
       CheckClipboard},
      {"setClipboardText, held", [](Form&) { return setClipboardText(u"text"); }, kClipboard, -3,
       [](Form&) { TheDesktop().Clipboard().Hold(-1); }},
      {"setClipboardTextAndHtml", [](Form&) { return setClipboardTextAndHtml(u"text", "<b>text</b>"); },
       kClipboardWithHtml, 0, [](Form&) {}, CheckClipboardWithHtml},

      {"getTargetText", [](Form& f) { return ReadText(f, f.byPath); }, kRead, 0, ShowText, CheckRead},
      {"isTargetEmpty", [](Form& f) { return isTargetEmpty(&f.byId, f.window); }, kRead, 0, ShowText},
      {"targetContainsText", [](Form& f) { return targetContainsText(&f.byId, f.window, u"shown text"); }, kRead, 1,
       ShowText},
      {"targetContainsPartialText", [](Form& f) { return targetContainsPartialText(&f.byId, f.window, u"own"); }, kRead,
       1, ShowText},
      {"waitForTargetContainsText",
       [](Form& f) { return waitForTargetContainsText(&f.byId, f.window, u"shown text", 6); }, kWait, 0, ShowText},
      {"waitForFieldChange", [](Form& f) { return waitForFieldChange(&f.byId, f.window, u"shown text", 6); }, kWait, 0,
       [](Form& f) {
         ShowText(f);
         TheDesktop().Clock().After(3, [edit = f.edit] { TheDesktop().Controls().SetText(edit, u"new"); });
       }},
      {"waitForFieldEmpty, in vain", [](Form& f) { return waitForFieldEmpty(&f.byId, f.window, 4); }, kWait, -3,
       ShowText},
      {"waitForTargetContainsPartialText",
       [](Form& f) { return waitForTargetContainsPartialText(&f.byId, f.window, u"own", 6); }, kWait, 0, ShowText},
      {"verifySimple", [](Form& f) { return verifySimple(u"shown text", f.window); }, kInput, 0,
       [](Form& f) {
         TheDesktop().Controls().SetText(f.edit, u"shown text");
         TheDesktop().User().Click(150, 130);
       }},

      {"getWindowInfo", [](Form& f) { return getWindowInfo(f.window, &f.info); }, {}, 0, [](Form&) {}, CheckInfo},
      {"findWindowByClick", [](Form& f) { return findWindowByClick() == f.window ? KORVANE_OK : KORVANE_NOT_FOUND; },
       Failures{{-1, nullptr}}, 0,
       [](Form&) {
         TheDesktop().Clock().After(5, [] { TheDesktop().User().Click(150, 170); });
         // A later message, for when the waking one is lost.
         TheDesktop().Clock().After(9, [] { TheDesktop().Host().PostMessage(WM_NULL); });
       }},
      {"cancel monitor",
       [](Form&) {
         startCancelMonitor();
         delay(40);
         stopCancelMonitor();
         return isCancelled();
       },
       {},
       1,
       [](Form&) { TheDesktop().User().HoldEscape(5, 20); },
       [](const Form&, int) {},
       {0}},
  };
  return all;
}

}  // namespace tests
