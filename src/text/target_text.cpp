#include "text/target_text.h"

#include <cstdlib>
#include <cstring>

#include "log/export_guard.h"
#include "resolve/find_target.h"

namespace {

struct TextProperty {
  std::string_view name;
  PROPERTYID id;
};

// What the user sees comes first.
constexpr TextProperty kTextProperties[] = {
    {"UIA_ValueValuePropertyId", UIA_ValueValuePropertyId},
    {"UIA_NamePropertyId", UIA_NamePropertyId},
    {"UIA_LegacyIAccessibleValuePropertyId", UIA_LegacyIAccessibleValuePropertyId},
    {"UIA_LegacyIAccessibleNamePropertyId", UIA_LegacyIAccessibleNamePropertyId},
    {"UIA_LegacyIAccessibleDescriptionPropertyId", UIA_LegacyIAccessibleDescriptionPropertyId},
};

void LogFoundText(std::string_view property, WideView text) {
  constexpr std::size_t kShown = 50;
  LogLine("getTargetText: SUCCESS with ", property, " - Text: ", text.substr(0, kShown),
          text.size() > kShown ? "..." : "");
}

}  // namespace

Variant ReadTargetText(const TargetRecord* target, HWND window) {
  if (target == nullptr) {
    LogLine("[getTargetText] ERROR: target is null");
    return {};
  }
  ElementPtr element = FindTargetElement(target, window);
  if (!element) {
    LogLine("getTargetText: FAILED - No element found");
    return {};
  }
  for (const auto& [name, id] : kTextProperties) {
    Variant value;
    if (SUCCEEDED(element->GetCurrentPropertyValue(id, value.Receive())) && !ViewOf(value.Text()).empty()) {
      LogFoundText(name, ViewOf(value.Text()));
      return value;
    }
  }
  element.Reset();
  LogLine("getTargetText: FAILED - No text found in any property");
  return {};
}

KorvaneChar* getTargetText(const TargetRecord* target, HWND window) noexcept {
  return GuardExport("getTargetText", static_cast<KorvaneChar*>(nullptr), [&]() -> KorvaneChar* {
    const Variant value = ReadTargetText(target, window);
    if (value.Text() == nullptr) {
      return nullptr;
    }
    const std::size_t size = (ViewOf(value.Text()).size() + 1) * sizeof(KorvaneChar);
    auto* text = static_cast<KorvaneChar*>(std::malloc(size));
    if (text == nullptr) {
      LogLine("getTargetText: ERROR - Failed to allocate memory");
      return nullptr;
    }
    std::memcpy(text, value.Text(), size);
    return text;
  });
}

void freeTextResult(KorvaneChar* text) noexcept {
  std::free(text);
}
