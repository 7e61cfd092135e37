// Any text through every export that takes or shows one, compared with what a plain reading of it gives.
#include <cstdlib>

#include "fuzz/form.h"

using standin::TheDesktop;

namespace fuzz {
namespace {

constexpr std::size_t kMostUnits = 2000;

TargetRecord Field() {
  TargetRecord record{};
  record.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
  record.automationId[0] = u'7';
  return record;
}

void CheckClipboardText(const Text& text) {
  RequireCode("setClipboardText", setClipboardText(text.c_str()), {0});
  Require(TheDesktop().Clipboard().Text() == text, "the clipboard holds the text");
}

// The number behind a name in the header of an "HTML Format" block.
std::size_t Offset(const std::string& block, const char* name) {
  const std::size_t at = block.find(name);
  Require(at != std::string::npos, "the header has every offset");
  return static_cast<std::size_t>(std::atoll(block.c_str() + at + std::char_traits<char>::length(name)));
}

void CheckClipboardHtml(const Text& text, const std::string& html) {
  RequireCode("setClipboardTextAndHtml", setClipboardTextAndHtml(text.c_str(), html.c_str()), {0});
  Require(TheDesktop().Clipboard().Text() == text, "the clipboard holds the text");
  const auto bytes = TheDesktop().Clipboard().Bytes("HTML Format");
  Require(!bytes.empty() && bytes.back() == 0, "the block ends with a terminator");
  const std::string block(bytes.begin(), bytes.end() - 1);
  const std::size_t begin = Offset(block, "StartFragment:");
  const std::size_t end = Offset(block, "EndFragment:");
  Require(begin <= end && end <= block.size(), "the fragment is within the block");
  Require(block.substr(begin, end - begin) == html, "the offsets name the fragment");
  Require(Offset(block, "EndHTML:") == block.size(), "the block ends where it says");
}

void CheckTests(const Form& form, const Text& shown, const Text& expected) {
  const TargetRecord field = Field();
  TheDesktop().Controls().SetText(form.edit, shown);
  KorvaneChar* const read = getTargetText(&field, form.window);
  // An empty field answers with its name, or nothing at all.
  if (!shown.empty()) {
    Require(read != nullptr && Text(read) == shown, "the text that the field shows");
    RequireCode("targetContainsText", targetContainsText(&field, form.window, expected.c_str()),
                {shown == expected ? 1 : 0});
    const bool contained = shown.find(expected) != Text::npos || expected.find(shown) != Text::npos;
    RequireCode("targetContainsPartialText", targetContainsPartialText(&field, form.window, expected.c_str()),
                {contained ? 1 : 0});
  }
  freeTextResult(read);
  RequireCode("isTargetEmpty", isTargetEmpty(&field, form.window), {0, 1, -1});
}

void CheckVerifySimple(const Form& form, const Text& shown, const Text& expected) {
  TheDesktop().Controls().SetText(form.edit, shown);
  TheDesktop().User().Click(150, 130);
  RequireCode("verifySimple", verifySimple(expected.c_str(), form.window), {0, -1, -3});
}

void CheckPastes(const Form& form, const Text& text, const Text& shown) {
  const TargetRecord field = Field();
  TheDesktop().Controls().SetText(form.edit, shown);
  RequireCode("pasteToTargetDirect", pasteToTargetDirect(&field, form.window, text.c_str(), 0), {0});
  Require(TheDesktop().Controls().TextOf(form.edit) == text, "the field holds what was put into it");
  TheDesktop().Controls().SetText(form.edit, shown);
  TheDesktop().Clipboard().Set(text);
  RequireCode("pasteToTargetWithVerifyEx", pasteToTargetWithVerifyEx(&field, form.window, 5), {0, -3});
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace fuzz;
  FuzzedDataProvider input(data, size);
  const Form form = OpenForm(input.ConsumeBool());
  initializeAutomation();
  const int which = input.ConsumeIntegralInRange(0, 6);
  const Text text = AnyText(input, kMostUnits);
  switch (which) {
    case 0:
      CheckClipboardText(text);
      break;
    case 1:
      CheckClipboardHtml(text, input.ConsumeRandomLengthString(kMostUnits).c_str());
      break;
    case 2:
      CheckTests(form, AnyText(input, kMostUnits), text);
      break;
    case 3:
      CheckVerifySimple(form, AnyText(input, kMostUnits), text);
      break;
    case 4:
      CheckPastes(form, text, AnyText(input, kMostUnits));
      break;
    case 5:
      RequireCode("sendKeySequence", sendKeySequence(text.c_str(), input.ConsumeIntegralInRange(-1, 3)), {0, -2});
      break;
    default:
      logAction(text.c_str(), input.ConsumeIntegral<int>(), input.ConsumeIntegral<int>());
      logActionWithTimestamp(text.c_str(), 0, 1, input.ConsumeIntegral<std::int64_t>());
      TheDesktop().Windows().SetTitle(form.window, text);
      WindowInfo info;
      RequireCode("getWindowInfo", getWindowInfo(form.window, &info), {0});
      Require(text.substr(0, KORVANE_WINDOW_TEXT_SIZE - 1) == info.title, "the title, cut to its field");
      break;
  }
  RequireNothingHeld();
  CloseForm();
  return 0;
}
