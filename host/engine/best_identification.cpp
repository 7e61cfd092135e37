#include "host/engine/best_identification.h"

#include "host/engine/find_window.h"

namespace host {

namespace {

bool Finds(const BestIdentification& best, Identification by, const world::Element& element) {
  const Attempt& attempt = best.attempts[static_cast<std::size_t>(by)];
  return attempt.finding == Finding::Found && world::Same(*attempt.element, element);
}

Identification Choose(const BestIdentification& best, const world::Element& element) {
  const bool generated = LooksGenerated(element.automationId);
  // The middle of what is made of parts is not what was pointed at.
  if (IsContainer(element.controlType)) {
    return Identification::ScreenPoint;
  }
  if (!generated && Finds(best, Identification::AutomationId, element)) {
    return Identification::AutomationId;
  }
  if (Finds(best, Identification::TreePath, element)) {
    return Identification::TreePath;
  }
  return generated && Finds(best, Identification::AutomationId, element) ? Identification::AutomationId
                                                                         : Identification::ScreenPoint;
}

void Warn(BestIdentification& best, const world::Element& element) {
  const Attempt& id = best.attempts[0];
  if (id.finding == Finding::Ambiguous) {
    best.warnings.emplace_back("its AutomationId is not unique: " + id.why);
  }
  if (best.by == Identification::AutomationId && LooksGenerated(element.automationId)) {
    best.warnings.emplace_back("its AutomationId looks generated: it may be another one when the program starts again");
  }
  if (IsContainer(element.controlType)) {
    best.warnings.emplace_back("the target is a whole " + NameOfType(element.controlType) +
                               ", no part of it: what counts is the place in it");
  }
  if (best.by == Identification::ScreenPoint) {
    best.warnings.emplace_back("only its point is left to find it by: the step fails when its place changes");
  } else if (!Finds(best, best.by, element)) {
    best.warnings.push_back(std::string("its ") + NameOf(best.by) +
                            " does not lead back to it: " + best.attempts[static_cast<std::size_t>(best.by)].why);
  }
}

}  // namespace

BestIdentification ChooseIdentification(const TargetRecord& captured, const world::Window& window,
                                        std::optional<int> wanted) {
  BestIdentification best;
  best.record = captured;
  best.record.identificationMethod = KORVANE_METHOD_UNDECIDED;
  if (const auto root = world::ElementOfWindow(window.handle)) {
    best.record = FittedTo(best.record, world::Described(*root));
  }
  auto element = world::ElementUnder({captured.x, captured.y});
  if (element) {
    element = world::Described(std::move(*element));
  }
  best.label = element ? LabelOf(*element) : std::string();
  const WindowName name = NameOf(window);
  for (const Identification by : kIdentifications) {
    best.attempts.push_back(TryAlone({best.record, best.label, name, window}, by));
  }
  if (!element) {
    best.warnings.emplace_back("it went away while it was recorded");
    return best;
  }
  best.by = Choose(best, *element);
  best.record.identificationMethod = wanted.value_or(MethodOf(best.by));
  best.by = PreferredOf(best.record);
  Warn(best, *element);
  return best;
}

}  // namespace host
