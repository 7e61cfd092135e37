#include "fuzz/form.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using standin::Behaviour;
using standin::TheDesktop;

namespace fuzz {

namespace {

bool BelongsToLibraryInUse(const std::string& entry) {
  const bool isContext = entry.starts_with("IUIAutomation") && !entry.starts_with("IUIAutomationE");
  return isContext || entry.find("file") != std::string::npos || entry.find("COM") != std::string::npos;
}

void SetText(WCHAR* field, std::u16string_view text) {
  text.copy(field, text.size());
}

void AddLevel(TargetRecord& record, int controlType, std::u16string_view className, int index) {
  const int level = record.pathLength++;
  record.controlTypes[level] = controlType;
  SetText(record.classNames[level], className);
  record.childIndices[level] = index;
}

TargetRecord WellFormed(int method) {
  TargetRecord record{};
  record.identificationMethod = method;
  if (method == KORVANE_METHOD_AUTOMATION_ID) {
    SetText(record.automationId, u"7");
  } else if (method == KORVANE_METHOD_TREE_PATH) {
    AddLevel(record, 50032, u"Dialog", 1);
    AddLevel(record, 50004, u"Edit", 1);
  }
  record.x = 150;
  record.y = 130;
  return record;
}

}  // namespace

Form OpenForm(bool withLog) {
  auto& desktop = TheDesktop();
  desktop.Reset();
  desktop.Calls().SetTracing(false);
  Form form{};
  form.window = desktop.Windows().Add({.className = u"Dialog", .title = u"Orders", .rect = {100, 100, 500, 400}});
  form.edit = desktop.Windows().Add({.className = u"Edit",
                                     .title = u"shown text",
                                     .rect = {120, 120, 320, 150},
                                     .parent = form.window,
                                     .controlId = 7,
                                     .behaviour = Behaviour::Edit});
  form.button = desktop.Windows().Add({.className = u"Button",
                                       .title = u"Save",
                                       .rect = {120, 160, 220, 190},
                                       .parent = form.window,
                                       .controlId = 8,
                                       .behaviour = Behaviour::Button});
  desktop.Elements().Add(form.window, {.name = u"Row", .rect = {120, 200, 320, 220}});
  form.other = desktop.Windows().Add({.className = u"Other", .title = u"Other", .rect = {600, 100, 800, 300}});
  desktop.Windows().BringToTop(form.window);
  desktop.Windows().SetForeground(form.other);
  desktop.Clipboard().Set(u"pasted text");
  desktop.User().MoveCursor(150, 130);
  if (withLog) {
    initializeLog(u"/dev/null");
  }
  return form;
}

void Require(bool kept, const char* promise) {
  if (!kept) {
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
  }
}

void RequireCode(const char* function, int code, std::initializer_list<int> documented) {
  if (std::find(documented.begin(), documented.end(), code) == documented.end()) {
    std::fprintf(stderr, "%s answered %d\n", function, code);
    Require(false, "a documented code");
  }
}

void RequireNothingHeld() {
  for (const std::string& entry : TheDesktop().Ledger().Outstanding()) {
    Require(BelongsToLibraryInUse(entry), entry.c_str());
  }
  for (const std::string& misuse : TheDesktop().Ledger().Misuses()) {
    Require(false, misuse.c_str());
  }
}

void CloseForm() {
  TheDesktop().Faults().Stop();
  // The cancelled state outlives a cleanup; the next run begins without it.
  if (isCancelled() != 0) {
    TheDesktop().User().PressKey(0x1B, false);
    startCancelMonitor();
  }
  // A monitor that outlived its wait ends by itself.
  delay(100);
  cleanupAutomation();
  clearElementCache();
  for (const std::string& entry : TheDesktop().Ledger().Outstanding()) {
    Require(false, entry.c_str());
  }
}

HWND AnyWindow(FuzzedDataProvider& input, const Form& form) {
  const HWND windows[] = {form.window, form.edit, form.other, nullptr, reinterpret_cast<HWND>(std::uintptr_t{0x1234})};
  return input.PickValueInArray(windows);
}

TargetRecord AnyRecord(FuzzedDataProvider& input) {
  constexpr int kMethods[] = {KORVANE_METHOD_UNDECIDED, KORVANE_METHOD_AUTOMATION_ID, KORVANE_METHOD_COORDINATES,
                              KORVANE_METHOD_TREE_PATH};
  TargetRecord record = WellFormed(input.PickValueInArray(kMethods));
  auto* const bytes = reinterpret_cast<unsigned char*>(&record);
  for (int patches = input.ConsumeIntegralInRange(0, 8); patches > 0; --patches) {
    const auto at = input.ConsumeIntegralInRange<std::size_t>(0, sizeof record - 1);
    if (input.ConsumeBool()) {
      const auto length = input.ConsumeIntegralInRange<std::size_t>(0, sizeof record - at);
      std::memset(bytes + at, input.ConsumeIntegral<unsigned char>(), length);
    } else {
      const auto given = input.ConsumeBytes<unsigned char>(std::min<std::size_t>(sizeof record - at, 64));
      std::copy(given.begin(), given.end(), bytes + at);
    }
  }
  return record;
}

Text AnyText(FuzzedDataProvider& input, std::size_t most) {
  const bool isAscii = input.ConsumeBool();
  const std::string bytes = input.ConsumeRandomLengthString(most);
  Text text;
  for (std::size_t i = 0; i < bytes.size(); i += isAscii ? 1 : 2) {
    const unsigned low = static_cast<unsigned char>(bytes[i]);
    const unsigned high = isAscii || i + 1 == bytes.size() ? 0 : static_cast<unsigned char>(bytes[i + 1]);
    if (const unsigned unit = high << 8 | low; unit != 0) {
      text += static_cast<char16_t>(unit);
    }
  }
  return text;
}

}  // namespace fuzz
