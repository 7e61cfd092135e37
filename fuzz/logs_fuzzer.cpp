// Texts of other programs in the library's log: whatever they hold, no step and no error comes of them.
#include "fuzz/form.h"
#include "host/engine/library_log.h"
#include "host/engine/log_summary.h"

using standin::TheDesktop;

namespace {

// Makes the library write the text, in every place where it writes texts of other programs.
void Show(const fuzz::Form& form, const fuzz::Text& text) {
  TargetRecord field{};
  field.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
  field.automationId[0] = u'7';
  TheDesktop().Windows().SetTitle(form.button, text);
  TargetRecord captured{};
  captureTargetAtPoint(&captured, 150, 170);
  TheDesktop().Controls().SetText(form.edit, text);
  freeTextResult(getTargetText(&field, form.window));
  if (setClipboardText(text.c_str()) == KORVANE_OK) {
    pasteToTargetWithVerifyEx(&field, form.window, 5);
  }
  verifySimple(text.c_str(), form.window);
}

// Functions that may have reported an error on the way.
bool IsOfOurs(const std::string& reason) {
  return reason.starts_with("verifySimple (") || reason.starts_with("pasteToTargetWithVerifyEx (");
}

void CheckTexts(const fuzz::Text& text) {
  const fuzz::Form form = fuzz::OpenForm(false);
  {
    host::LibraryLog log("");
    Show(form, text);
    logAction(u"1 paste", 0, 5);
    const host::LogSummary summary = host::Summarise(log.NewLines());
    fuzz::Require(summary.steps.size() == 1 && summary.steps[0].action == "1 paste", "the step that was, and no other");
    for (const auto& [reason, count] : summary.errorsByReason) {
      fuzz::Require(IsOfOurs(reason), reason.c_str());
    }
  }
  fuzz::CloseForm();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  // The longest that the library quotes is far shorter.
  constexpr std::size_t kMostUnits = 2000;
  fuzz::Text text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, kMostUnits)));
  std::erase(text, u'\0');
  CheckTexts(text);
  return 0;
}
