#include "host/engine/identify.h"

#include <algorithm>

namespace host {

namespace {

constexpr int kWindowType = 50032;

template <std::size_t size>
WideText TextOf(const KorvaneChar (&units)[size]) {
  const WideView all(units, size);
  return WideText(all.substr(0, all.find(KorvaneChar{0})));
}

std::size_t LevelsOf(const TargetRecord& record) {
  return static_cast<std::size_t>(std::clamp<std::int32_t>(record.pathLength, 0, KORVANE_MAX_PATH_LEVELS));
}

bool IsRecorded(const TargetRecord& record, Identification by) {
  switch (by) {
    case Identification::AutomationId:
      return record.automationId[0] != 0;
    case Identification::TreePath:
      return LevelsOf(record) > 0;
    case Identification::ScreenPoint:
      break;
  }
  return record.x != 0 || record.y != 0;
}

std::string Quoted(const WideText& text) {
  return "\"" + Shortened(Utf8(text), 60) + "\"";
}

// How the element differs from the recorded one; empty: it does not.
std::string Difference(const Sought& sought, const world::Element& element, Identification by) {
  const TargetRecord& record = sought.record;
  const WideText id = TextOf(record.automationId);
  const bool comparesId = !(LooksGenerated(id) && LooksGenerated(element.automationId));
  // The record holds the first 255 units.
  if (comparesId && id != element.automationId.substr(0, KORVANE_AUTOMATION_ID_SIZE - 1)) {
    return element.automationId.empty() ? "it has no AutomationId"
                                        : "its AutomationId is " + Quoted(element.automationId);
  }
  if (const std::size_t levels = LevelsOf(record); levels > 0) {
    const int type = record.controlTypes[levels - 1];
    if (type != 0 && type != element.controlType) {
      return "it is a " + NameOfType(element.controlType) + ", not a " + NameOfType(type);
    }
    const WideText className = TextOf(record.classNames[levels - 1]);
    if (className != element.className.substr(0, KORVANE_CLASS_NAME_SIZE - 1)) {
      return "its class is " + Quoted(element.className) + ", not " + Quoted(className);
    }
  }
  // An AutomationId that is the only one of its kind is enough.
  if (by != Identification::AutomationId && !sought.label.empty()) {
    if (const std::string label = Utf8(world::NameOf(element)); label != sought.label) {
      return "it is labelled \"" + Shortened(label, 60) + "\", not \"" + Shortened(sought.label, 60) + "\"";
    }
  }
  return {};
}

Attempt Compared(Attempt attempt, const Sought& sought, world::Element element) {
  attempt.why = Difference(sought, element, attempt.by);
  attempt.finding = attempt.why.empty() ? Finding::Found : Finding::Another;
  attempt.why = attempt.why.empty() ? "" : "what it leads to is another element: " + attempt.why;
  attempt.element = std::move(element);
  return attempt;
}

Attempt NotFound(Attempt attempt, std::string why) {
  attempt.finding = Finding::NotFound;
  attempt.why = std::move(why);
  return attempt;
}

Attempt ByAutomationId(Attempt attempt, const Sought& sought, const world::Element& root) {
  const auto found = world::WithAutomationId(root, TextOf(sought.record.automationId));
  if (found.empty()) {
    return NotFound(std::move(attempt), "nothing in the window has it");
  }
  if (found.size() > 1) {
    attempt.finding = Finding::Ambiguous;
    attempt.why = std::to_string(found.size()) + " elements of the window have it";
    return attempt;
  }
  return Compared(std::move(attempt), sought, found.front());
}

TargetRecord LevelsFrom(const TargetRecord& record, std::size_t first) {
  const std::size_t levels = LevelsOf(record);
  TargetRecord rest = record;
  rest.pathLength = static_cast<std::int32_t>(levels - first);
  for (std::size_t i = 0; i < KORVANE_MAX_PATH_LEVELS; ++i) {
    const bool used = i + first < levels;
    rest.controlTypes[i] = used ? record.controlTypes[i + first] : 0;
    rest.childIndices[i] = used ? record.childIndices[i + first] : 0;
    for (std::size_t unit = 0; unit < KORVANE_CLASS_NAME_SIZE; ++unit) {
      rest.classNames[i][unit] = used ? record.classNames[i + first][unit] : KorvaneChar{0};
    }
  }
  return rest;
}

// Most windows have the class that UI Automation tells: then it need not be asked.
bool BeginsWith(const TargetRecord& path, const world::Window& window) {
  return TextOf(path.classNames[0]) == Wide(window.className);
}

TargetRecord PathIn(const Sought& sought, const world::Element& root) {
  return LevelsOf(sought.record) == 0 || BeginsWith(sought.record, sought.window)
             ? sought.record
             : FittedTo(sought.record, world::Described(root));
}

// Goes the way that the library goes.
Attempt AlongPath(Attempt attempt, const Sought& sought, const world::Element& root, const TargetRecord& path) {
  const bool skipsRoot =
      path.controlTypes[0] == kWindowType &&
      (BeginsWith(path, sought.window) || TextOf(path.classNames[0]) == world::Described(root).className);
  world::Element element = root;
  const std::size_t first = skipsRoot ? 1 : 0;
  if (first >= LevelsOf(path)) {
    return Compared(std::move(attempt), sought, world::Described(root));
  }
  for (std::size_t level = first; level < LevelsOf(path); ++level) {
    const auto siblings = world::Children(element, path.controlTypes[level], TextOf(path.classNames[level]));
    const auto position = static_cast<std::size_t>(std::max(path.childIndices[level], 1));
    if (siblings.size() < position) {
      return NotFound(std::move(attempt), "it leads nowhere from level " + std::to_string(level + 1) + ": the " +
                                              NameOfType(path.controlTypes[level]) + " number " +
                                              std::to_string(position) + " is not there");
    }
    element = siblings[position - 1];
  }
  return Compared(std::move(attempt), sought, std::move(element));
}

Attempt ByTreePath(Attempt attempt, const Sought& sought, const world::Element& root) {
  TargetRecord path = PathIn(sought, root);
  Attempt whole = AlongPath(attempt, sought, root, path);
  whole.path = std::make_shared<const TargetRecord>(path);
  if (whole.finding != Finding::NotFound) {
    return whole;
  }
  // A dialog of a dialog: the class of the first level does not tell which of the two it is.
  for (std::size_t level = LevelsOf(path); level-- > 1;) {
    if (path.controlTypes[level] == kWindowType && TextOf(path.classNames[level]) == TextOf(path.classNames[0])) {
      path = LevelsFrom(path, level);
      Attempt rest = AlongPath(std::move(attempt), sought, root, path);
      rest.path = std::make_shared<const TargetRecord>(path);
      return rest.finding == Finding::Found ? rest : whole;
    }
  }
  return whole;
}

Attempt ByScreenPoint(Attempt attempt, const Sought& sought) {
  const world::Point point = PointNow(sought);
  const std::string place = std::to_string(point.x) + "," + std::to_string(point.y);
  const HWND there = world::RootAt(point);
  if (there == nullptr) {
    return NotFound(std::move(attempt), "there is no window at " + place);
  }
  auto element = world::ElementUnder(point);
  if (there != sought.window.handle && world::OwnerOf(there) != sought.window.handle &&
      !(element && LiesIn(*element, sought.window.handle))) {
    return NotFound(std::move(attempt), "another window is at " + place);
  }
  return element ? Compared(std::move(attempt), sought, world::Described(std::move(*element)))
                 : NotFound(std::move(attempt), "there is no element at " + place);
}

// A point proves nothing by itself: it needs something that only the recorded element has.
bool ProvesIdentity(const Attempt& attempt, const Sought& sought, const std::vector<Attempt>& attempts) {
  const bool uniqueId = std::none_of(attempts.begin(), attempts.end(), [](const Attempt& each) {
    return each.by == Identification::AutomationId &&
           (each.finding == Finding::NotRecorded || each.finding == Finding::Ambiguous);
  });
  return attempt.by != Identification::ScreenPoint || uniqueId || !sought.label.empty();
}

TargetRecord RecordFor(const Sought& sought, const Attempt& answer, const world::Element& root) {
  TargetRecord record = answer.path ? *answer.path : PathIn(sought, root);
  const Identification by = answer.by;
  record.identificationMethod = MethodOf(by);
  const world::Point point = PointNow(sought);
  record.x = by == Identification::ScreenPoint ? point.x : 0;
  record.y = by == Identification::ScreenPoint ? point.y : 0;
  return record;
}

Attempt Try(const Sought& sought, Identification by, const std::optional<world::Element>& root) {
  Attempt attempt;
  attempt.by = by;
  if (!IsRecorded(sought.record, by)) {
    attempt.why = "it was not recorded";
    return attempt;
  }
  const double start = world::Now();
  if (!root) {
    attempt = NotFound(std::move(attempt), "the window shows no elements");
  } else if (by == Identification::AutomationId) {
    attempt = ByAutomationId(std::move(attempt), sought, *root);
  } else if (by == Identification::TreePath) {
    attempt = ByTreePath(std::move(attempt), sought, *root);
  } else {
    attempt = ByScreenPoint(std::move(attempt), sought);
  }
  attempt.milliseconds = world::Now() - start;
  return attempt;
}

}  // namespace

const char* NameOf(Identification identification) {
  constexpr const char* kNames[] = {"AutomationId", "tree path", "screen point"};
  return kNames[static_cast<int>(identification)];
}

const char* MethodWordOf(Identification identification) {
  constexpr const char* kWords[] = {"automation-id", "tree-path", "undecided"};
  return kWords[static_cast<int>(identification)];
}

int MethodOf(Identification identification) {
  constexpr int kMethods[] = {KORVANE_METHOD_AUTOMATION_ID, KORVANE_METHOD_TREE_PATH, KORVANE_METHOD_UNDECIDED};
  return kMethods[static_cast<int>(identification)];
}

const char* WordOf(Finding finding) {
  constexpr const char* kWords[] = {"not recorded", "not found", "another element", "not unique", "found"};
  return kWords[static_cast<int>(finding)];
}

std::string Describe(const Attempt& attempt) {
  const std::string word = WordOf(attempt.finding);
  return attempt.finding == Finding::NotRecorded ? word : word + ", " + Milliseconds(attempt.milliseconds);
}

Attempt TryAlone(const Sought& sought, Identification by) {
  return Try(sought, by, world::ElementOfWindow(sought.window.handle));
}

Identification PreferredOf(const TargetRecord& record) {
  switch (record.identificationMethod) {
    case KORVANE_METHOD_AUTOMATION_ID:
      return Identification::AutomationId;
    case KORVANE_METHOD_TREE_PATH:
      return Identification::TreePath;
    case KORVANE_METHOD_COORDINATES:
      return record.automationId[0] != 0 ? Identification::AutomationId : Identification::ScreenPoint;
    default:
      return Identification::ScreenPoint;
  }
}

Identified Identify(const Sought& sought) {
  Identified identified;
  identified.preferred = identified.by = PreferredOf(sought.record);
  const auto root = world::ElementOfWindow(sought.window.handle);
  identified.attempts.push_back(Try(sought, identified.preferred, root));
  const Attempt* answer = identified.attempts[0].finding == Finding::Found ? identified.attempts.data() : nullptr;
  // Whoever recorded a point meant that point: nothing else leads to it.
  if (answer == nullptr && identified.preferred != Identification::ScreenPoint) {
    for (const Identification by : kIdentifications) {
      if (by != identified.preferred) {
        identified.attempts.push_back(Try(sought, by, root));
      }
    }
    for (Attempt& attempt : identified.attempts) {
      if (attempt.finding == Finding::Found && !ProvesIdentity(attempt, sought, identified.attempts)) {
        attempt.finding = Finding::Ambiguous;
        attempt.why = "what is there could be any other of its kind";
      }
      if (attempt.finding != Finding::Found) {
        continue;
      }
      if (answer != nullptr && !world::Same(*answer->element, *attempt.element)) {
        identified.refusal =
            std::string("its ") + NameOf(answer->by) + " and its " + NameOf(attempt.by) + " lead to different elements";
        return identified;
      }
      answer = answer != nullptr ? answer : &attempt;
    }
  }
  if (answer == nullptr) {
    for (const Attempt& attempt : identified.attempts) {
      identified.refusal +=
          (identified.refusal.empty() ? "its " : "; its ") + std::string(NameOf(attempt.by)) + ": " + attempt.why;
    }
    return identified;
  }
  identified.element = answer->element;
  identified.by = answer->by;
  identified.record = RecordFor(sought, *answer, *root);
  return identified;
}

std::string DifferenceFrom(const Sought& sought, const world::Element& element) {
  return Difference(sought, element, Identification::TreePath);
}

TargetRecord FittedTo(const TargetRecord& record, const world::Element& window) {
  const std::size_t levels = LevelsOf(record);
  if (levels == 0 || TextOf(record.classNames[0]) == window.className) {
    return record;
  }
  for (std::size_t level = 1; level < levels; ++level) {
    if (TextOf(record.classNames[level]) != window.className || record.controlTypes[level] != window.controlType) {
      continue;
    }
    // The library passes over the window's own level only when that is a window.
    const std::size_t first = record.controlTypes[level] == kWindowType ? level : level + 1;
    return LevelsFrom(record, first);
  }
  return record;
}

world::Point PointNow(const Sought& sought) {
  const world::Rect& then = sought.recorded.rect;
  const world::Rect& now = sought.window.rect;
  if (then.right <= then.left) {
    return {sought.record.x, sought.record.y};
  }
  return {static_cast<int>(std::int64_t{sought.record.x} - then.left + now.left),
          static_cast<int>(std::int64_t{sought.record.y} - then.top + now.top)};
}

bool LiesIn(const world::Element& element, HWND window) {
  return window != nullptr &&
         world::HoldsUpwards(element, [&](const world::Element& level) { return world::WindowOf(level) == window; });
}

bool LooksGenerated(const WideText& automationId) {
  constexpr int kLongNumber = 6;
  const auto isDigit = [](KorvaneChar unit) { return unit >= '0' && unit <= '9'; };
  const auto isHex = [&](KorvaneChar unit) {
    return isDigit(unit) || (unit >= 'a' && unit <= 'f') || (unit >= 'A' && unit <= 'F');
  };
  int digits = 0;
  int hexInARow = 0;
  int groups = 0;
  for (std::size_t i = 0; i < automationId.size(); ++i) {
    digits = isDigit(automationId[i]) ? digits + 1 : 0;
    if (digits >= kLongNumber) {
      return true;
    }
    // A UUID has five groups of hexadecimal digits, with dashes between them.
    hexInARow = isHex(automationId[i]) ? hexInARow + 1 : 0;
    groups = automationId[i] == '-' && i > 0 && isHex(automationId[i - 1]) ? groups + 1 : groups;
    if (groups == 4 && hexInARow == 12) {
      return true;
    }
  }
  return false;
}

bool IsContainer(int controlType) {
  constexpr int kContainers[] = {50008, 50009, 50010, 50017, 50018, 50021, 50023, 50025,
                                 50026, 50028, 50032, 50033, 50034, 50036, 50037};
  return std::find(std::begin(kContainers), std::end(kContainers), controlType) != std::end(kContainers);
}

std::string NameOfType(int controlType) {
  static constexpr const char* kNames[] = {
      "button",      "calendar", "check box", "combo box",    "field",          "link",         "image",
      "list row",    "list",     "menu",      "menu bar",     "menu item",      "progress bar", "radio button",
      "scroll bar",  "slider",   "spinner",   "status bar",   "tab strip",      "tab",          "text",
      "tool bar",    "tool tip", "tree",      "tree item",    "custom control", "group",        "thumb",
      "data grid",   "data row", "document",  "split button", "window",         "pane",         "header",
      "header item", "table",    "title bar", "separator"};
  const int index = controlType - 50000;
  return index >= 0 && index < static_cast<int>(std::size(kNames)) ? kNames[index]
                                                                   : "element of type " + std::to_string(controlType);
}

std::string LabelOf(const world::Element& element) {
  constexpr int kLabelled[] = {50000, 50002, 50005, 50007, 50011, 50013, 50019, 50024, 50029, 50031, 50035};
  return std::find(std::begin(kLabelled), std::end(kLabelled), element.controlType) != std::end(kLabelled)
             ? Utf8(world::NameOf(element))
             : std::string();
}

}  // namespace host
