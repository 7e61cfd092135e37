// What the C++ binding offers, after trying what a call can meet. Whether it offers a function, the compiler tells:
// OFFERS is a list of `offers(&korvane::Name);`.
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <korvane/korvane.hpp>

#include "stage.h"

using namespace std::chrono_literals;
using korvane::Answer;
using korvane::Code;
using korvane::Text;
using std::chrono::milliseconds;

namespace {

void Check(bool holds, const char* what) {
  if (!holds) {
    std::printf("wrong: %s\n", what);
    std::exit(1);
  }
}

template <class Function>
void Offers(const char* name, Function function) {
  Check(function != nullptr, name);
  std::printf("offers %s\n", name);
}

#define FIELD(record, field) std::printf(#record "." #field " %zu\n", offsetof(record, field))

void DescribeRecords() {
  std::printf("TargetRecord %zu\n", sizeof(TargetRecord));
  FIELD(TargetRecord, automationId);
  FIELD(TargetRecord, hwnd);
  FIELD(TargetRecord, x);
  FIELD(TargetRecord, y);
  FIELD(TargetRecord, identificationMethod);
  FIELD(TargetRecord, pathLength);
  FIELD(TargetRecord, controlTypes);
  FIELD(TargetRecord, classNames);
  FIELD(TargetRecord, childIndices);
  std::printf("WindowInfo %zu\n", sizeof(WindowInfo));
  FIELD(WindowInfo, title);
  FIELD(WindowInfo, processName);
  FIELD(WindowInfo, window);
}

void TryObjects(int x, int y) {
  korvane::Window form;
  Check(korvane::WaitForWindow(form, {u"Order", {}, {}}, 1ms) == Code::NotFound && !form, "another title");
  Check(korvane::WaitForWindow(form, {}) == Code::InvalidArgument, "no name");
  Check(korvane::WaitForWindow(form, {u"Order form", u"OrderForm", u"ORDER_FORM.exe"}) == Code::Ok, "window");
  Check(form.Handle() == stageFormWindow(), "handle");
  korvane::Target name;
  Check(form.TargetAt(name, x, y) == Code::Ok, "target");
  Check(name.Record().identificationMethod == KORVANE_METHOD_AUTOMATION_ID, "method");
  Check(name.Paste(u"Ada") == Code::Ok && name.Type(u"x") == Code::Ok, "paste and type");
  Check(name.Wait(u"Adax", 3000ms, true) == Code::Ok, "wait");
  Check(name.Check(u"Ad") == Answer::Yes && name.Check(u"Ad", true) == Answer::No, "check");
  Check(name.Wait(u"never", milliseconds::min()) == Code::Failed, "the shortest of all times");

  // What was moved from is empty, and may be used and given a text again.
  korvane::OwnedText text = name.Text();
  korvane::OwnedText taken = std::move(text);
  Check(taken.View() == u"Adax" && !text && text.View().empty(), "moved");
  text = std::move(taken);
  Check(text.View() == u"Adax" && !taken, "moved back");
}

void TryCalls() {
  const korvane::Session session(u"binding.log");
  Check(session.Started() == Code::Ok, "started");
  Check(stageOpenForm(60, 60) == 0, "form");
  HWND form = stageFormWindow();
  std::int32_t x = 0;
  std::int32_t y = 0;
  stageCentreOf(STAGE_NAME, &x, &y);
  TargetRecord name{};
  Check(korvane::CaptureTargetAtPoint(name, x, y) == Code::Ok, "capture");
  korvane::Use(name, korvane::Method::AutomationId);

  const Text texts[] = {u"Ren\u00E9e", u"\U0001F9ED", Text(u"low ") + char16_t(0xDC00) + char16_t(0xD800) + u" end"};
  for (const Text& text : texts) {
    Check(korvane::PasteToTargetDirect(name, form, text) == Code::Ok, "paste");
    Check(korvane::GetTargetText(name, form).View() == text, "text");
    Check(korvane::TargetContainsText(name, form, text) == Answer::Yes, "contains");
  }
  Check(korvane::PasteToTargetDirect(name, form, Text()) == Code::Ok, "paste nothing");
  Check(!korvane::GetTargetText(name, form), "no text");
  Check(korvane::ClickTarget(name) == Code::InvalidArgument, "no window");
  Check(korvane::IsTargetEmpty(name, form) == Answer::Unreadable, "unreadable");
  Check(korvane::WaitForTargetContainsText(name, form, u"never", 20ms) == Code::Failed, "time-out");
  try {
    Check(korvane::SetClipboardText(Text(1, u'\0')) == Code::Ok, "unreached");
    Check(false, "a zero unit was taken");
  } catch (const std::invalid_argument&) {
  }
  try {
    Check(korvane::SetClipboardTextAndHtml(u"text", std::string("a\0b", 3)) == Code::Ok, "unreached");
    Check(false, "a zero byte was taken");
  } catch (const std::invalid_argument&) {
  }
  TryObjects(x, y);
  const korvane::CancelMonitor monitor;
  Check(!korvane::IsCancelled(), "not cancelled");
  stageCloseForm();
}

}  // namespace

int main() {
  DescribeRecords();
#define OFFERS(name) Offers(#name, &korvane::name);
#include "offers.inc"
  TryCalls();
}
