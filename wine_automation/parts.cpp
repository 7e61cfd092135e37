#include "wine_automation/parts.h"

#include <algorithm>
#include <cstring>

#include "wine_automation/visit.h"

namespace wine_automation {
namespace {

enum class Subject : std::uint32_t { Exists, Parent, Parts, At, Property, Rect, ClickRect, Below, Above };

// Lies in memory that two processes share, with what has no fixed length behind it: the parts, or the text.
struct Sheet {
  // The question
  Subject subject;
  std::uint32_t control;
  Part part;
  POINT point;
  PROPERTYID property;
  // The answer
  bool exists;
  std::uint32_t window;
  bool hasRect;
  RECT rect;
  HRESULT result;
  VARTYPE type;
  LONG number;
  bool isNull;
  std::uint32_t count;
};

constexpr std::size_t kRoom = kSheetBytes - sizeof(Sheet);

template <class Entry>
Entry* Behind(Sheet& sheet) {
  return reinterpret_cast<Entry*>(&sheet + 1);
}

// Of a handle, 32 bits count.
HWND WindowOf(std::uint32_t number) {
  return reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(number)));
}

std::uint32_t NumberOf(HWND window) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

HWND ControlOf(const Sheet& sheet) {
  return WindowOf(sheet.control);
}

void WriteRect(Sheet& sheet, std::optional<RECT> rect) {
  sheet.hasRect = rect.has_value();
  sheet.rect = rect.value_or(RECT{});
}

void WriteValue(Sheet& sheet, const uia::PropertyValue& value) {
  sheet.result = value.result;
  sheet.type = value.type;
  sheet.number = value.number;
  sheet.isNull = value.isNull;
  sheet.count = static_cast<std::uint32_t>(std::min(value.text.size(), kRoom / sizeof(WCHAR)));
  std::copy_n(value.text.data(), sheet.count, Behind<WCHAR>(sheet));
}

PartFacts FactsOf(const ControlClass& controlClass, HWND control, Part part) {
  PartFacts facts;
  facts.part = part;
  facts.type = controlClass.PartProperty(control, part, UIA_ControlTypePropertyId).number;
  const uia::Text id = controlClass.PartProperty(control, part, UIA_AutomationIdPropertyId).text;
  id.copy(facts.automationId, std::size(facts.automationId) - 1);
  return facts;
}

// Parts that find no room are not there.
void WriteParts(Sheet& sheet, const ControlClass& controlClass) {
  const HWND control = ControlOf(sheet);
  const std::vector<Part> parts = controlClass.PartsOf(control, sheet.part);
  sheet.count = static_cast<std::uint32_t>(std::min(parts.size(), kRoom / sizeof(PartFacts)));
  std::transform(parts.begin(), parts.begin() + sheet.count, Behind<PartFacts>(sheet),
                 [&](Part part) { return FactsOf(controlClass, control, part); });
}

// Runs in the control's thread.
void Answer(void* memory) {
  Sheet& sheet = *static_cast<Sheet*>(memory);
  const HWND control = ControlOf(sheet);
  const ControlClass& controlClass = ControlClassOf(control);
  switch (sheet.subject) {
    case Subject::Exists:
      sheet.exists = controlClass.HasPart(control, sheet.part);
      break;
    case Subject::Parent:
      sheet.part = controlClass.ParentOf(control, sheet.part);
      break;
    case Subject::Parts:
      WriteParts(sheet, controlClass);
      break;
    case Subject::At:
      sheet.part = controlClass.PartAt(control, sheet.point);
      break;
    case Subject::Property:
      WriteValue(sheet, controlClass.PartProperty(control, sheet.part, sheet.property));
      break;
    case Subject::Rect:
      WriteRect(sheet, controlClass.PartRect(control, sheet.part));
      break;
    case Subject::ClickRect:
      WriteRect(sheet, controlClass.PartClickRect(control, sheet.part));
      break;
    case Subject::Below:
      sheet.window = NumberOf(controlClass.WindowBelow(control));
      break;
    case Subject::Above:
      sheet.window = NumberOf(controlClass.WindowAbove(control));
      break;
  }
}

Sheet About(Subject subject, HWND control, Part part) {
  Sheet sheet{};
  sheet.subject = subject;
  sheet.control = NumberOf(control);
  sheet.part = part;
  return sheet;
}

// One question and its answer.
class Asked {
 public:
  explicit Asked(const Sheet& question) {
    if (visit_.Memory() != nullptr) {
      *static_cast<Sheet*>(visit_.Memory()) = question;
      isAnswered_ = visit_.Run(ControlOf(question), Answer);
    }
  }

  // Null when there is none.
  Sheet* operator->() {
    return Get();
  }
  Sheet* Get() {
    return isAnswered_ ? static_cast<Sheet*>(visit_.Memory()) : nullptr;
  }
  explicit operator bool() const {
    return isAnswered_;
  }

 private:
  Visit visit_;
  bool isAnswered_ = false;
};

std::optional<RECT> AskedRect(Subject subject, HWND control, Part part) {
  Asked asked(About(subject, control, part));
  return asked && asked->hasRect ? std::optional(asked->rect) : std::nullopt;
}

HWND AskedWindow(Subject subject, HWND control) {
  Asked asked(About(subject, control, kControlItself));
  return asked ? WindowOf(asked->window) : nullptr;
}

}  // namespace

bool CanBeAsked(HWND control) {
  return static_cast<bool>(Asked(About(Subject::Exists, control, kControlItself)));
}

bool HasPart(HWND control, Part part) {
  Asked asked(About(Subject::Exists, control, part));
  return asked && asked->exists;
}

Part ParentOfPart(HWND control, Part part) {
  Asked asked(About(Subject::Parent, control, part));
  return asked ? asked->part : kControlItself;
}

std::optional<std::vector<PartFacts>> PartsOf(HWND control, Part parent) {
  Asked asked(About(Subject::Parts, control, parent));
  if (!asked) {
    return std::nullopt;
  }
  const auto* const first = Behind<PartFacts>(*asked.Get());
  return std::vector<PartFacts>(first, first + asked->count);
}

Part PartAt(HWND control, POINT onScreen) {
  Sheet question = About(Subject::At, control, kControlItself);
  question.point = onScreen;
  Asked asked(question);
  return asked ? asked->part : kControlItself;
}

uia::PropertyValue PropertyOfPart(HWND control, Part part, PROPERTYID property) {
  Sheet question = About(Subject::Property, control, part);
  question.property = property;
  Asked asked(question);
  if (!asked) {
    return Answered(std::nullopt);
  }
  return {asked->result, asked->type, asked->number, uia::Text(Behind<WCHAR>(*asked.Get()), asked->count),
          asked->isNull};
}

std::optional<RECT> RectOfPart(HWND control, Part part) {
  return AskedRect(Subject::Rect, control, part);
}

std::optional<RECT> ClickRectOfPart(HWND control, Part part) {
  return AskedRect(Subject::ClickRect, control, part);
}

HWND WindowBelow(HWND control) {
  return AskedWindow(Subject::Below, control);
}

HWND WindowAbove(HWND control) {
  return AskedWindow(Subject::Above, control);
}

}  // namespace wine_automation
