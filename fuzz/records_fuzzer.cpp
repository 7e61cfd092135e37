// Hostile records through every export that takes one.
#include <cstring>

#include "fuzz/form.h"

namespace fuzz {
namespace {

// Short enough that a wait in vain costs little, long enough for a second poll.
constexpr int kTimeouts[] = {1, 1, 1, 3};

int ReadText(const TargetRecord& record, HWND window) {
  KorvaneChar* const text = getTargetText(&record, window);
  const int code = text != nullptr ? KORVANE_OK : KORVANE_NOT_FOUND;
  freeTextResult(text);
  return code;
}

// The exports that fill a record leave nothing of what was in it.
void Capture(TargetRecord record, int x, int y, bool atCursor) {
  const int code = atCursor ? captureTargetAtCursor(&record) : captureTargetAtPoint(&record, x, y);
  RequireCode("capture", code, {0, -1});
  Require(record.pathLength >= 0 && record.pathLength <= KORVANE_MAX_PATH_LEVELS, "a captured path has 0 to 20 levels");
  Require(record.automationId[KORVANE_AUTOMATION_ID_SIZE - 1] == 0, "a captured AutomationId has its terminator");
  for (int level = record.pathLength; level < KORVANE_MAX_PATH_LEVELS; ++level) {
    Require(record.controlTypes[level] == 0 && record.childIndices[level] == 0, "levels beyond the path are empty");
  }
}

void Use(FuzzedDataProvider& input, const Form& form) {
  const int which = input.ConsumeIntegralInRange(0, 13);
  const HWND window = AnyWindow(input, form);
  const int timeout = input.PickValueInArray(kTimeouts);
  const int x = input.ConsumeIntegral<int>();
  const int y = input.ConsumeIntegralInRange(0, 700);
  const TargetRecord record = AnyRecord(input);
  const TargetRecord before = record;
  switch (which) {
    case 0:
    case 1:
      Capture(record, x, y, which == 0);
      break;
    case 2:
      RequireCode("verifyTarget", verifyTarget(&record, window), {0, -1, -2});
      break;
    case 3:
      RequireCode("clickTarget", clickTarget(&record, window), {0, -1, -2, -3});
      break;
    case 4:
      RequireCode("pasteToTargetWithVerifyEx", pasteToTargetWithVerifyEx(&record, window, timeout), {0, -1, -2, -3});
      break;
    case 5:
      RequireCode("pasteToTargetDirect", pasteToTargetDirect(&record, window, u"direct", timeout), {0, -1, -2});
      break;
    case 6:
      RequireCode("pasteToTargetSimple", pasteToTargetSimple(&record, window), {0, -2});
      break;
    case 7:
      RequireCode("getTargetText", ReadText(record, window), {0, -1});
      break;
    case 8:
      RequireCode("isTargetEmpty", isTargetEmpty(&record, window), {0, 1, -1});
      break;
    case 9:
      RequireCode("targetContainsText", targetContainsText(&record, window, u"shown text"), {0, 1, -1});
      break;
    case 10:
      RequireCode("targetContainsPartialText", targetContainsPartialText(&record, window, u"own"), {0, 1, -1});
      break;
    case 11:
      RequireCode("waitForFieldChange", waitForFieldChange(&record, window, u"other", timeout), {0, -3});
      break;
    case 12:
      RequireCode("waitForFieldEmpty", waitForFieldEmpty(&record, window, timeout), {0, -3});
      break;
    default:
      RequireCode("waitForTargetContainsText", waitForTargetContainsText(&record, window, u"shown text", timeout),
                  {0, -3});
      RequireCode("waitForTargetContainsPartialText",
                  waitForTargetContainsPartialText(&record, window, u"own", timeout), {0, -3});
      break;
  }
  Require(std::memcmp(&record, &before, sizeof record) == 0, "a record that is only read stays as it was");
  RequireNothingHeld();
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const fuzz::Form form = fuzz::OpenForm(input.ConsumeIntegralInRange(0, 3) == 0);
  initializeAutomation();
  // The second call finds what the first one remembered.
  for (int calls = 0; calls < 2; ++calls) {
    fuzz::Use(input, form);
  }
  fuzz::CloseForm();
  return 0;
}
