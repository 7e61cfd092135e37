#include "text/target_text.h"

#include <algorithm>
#include <cstdlib>

#include "log/export_guard.h"
#include "resolve/find_target.h"

namespace korvane {
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

// Null when memory is out.
KorvaneChar* AllocateCopy(WideView text) {
  auto* copy = static_cast<KorvaneChar*>(std::malloc((text.size() + 1) * sizeof(KorvaneChar)));
  if (copy == nullptr) {
    LogLine("getTargetText: ERROR - Failed to allocate memory");
    return nullptr;
  }
  *std::copy(text.begin(), text.end(), copy) = 0;
  return copy;
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
  // The last line of a failed read is written when nothing is held any more.
  element = {};
  LogLine("getTargetText: FAILED - No text found in any property");
  return {};
}

}  // namespace korvane

KorvaneChar* getTargetText(const TargetRecord* target, HWND window) noexcept {
  KorvaneChar* text = nullptr;
  korvane::AnswerExport("getTargetText", KORVANE_FAILED, [&] {
    if (const korvane::Variant value = korvane::ReadTargetText(target, window); value.Text() != nullptr) {
      text = korvane::AllocateCopy(korvane::ViewOf(value.Text()));
    }
    return KORVANE_OK;
  });
  return text;
}

void freeTextResult(KorvaneChar* text) noexcept {
  std::free(text);
}
