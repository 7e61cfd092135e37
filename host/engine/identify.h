// The recorded element, found again: each identification of its record tried, what answers compared with the record.
// Only the very same element is found; what merely stands where it stood is another one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/recording/recording.h"
#include "host/world/elements.h"
#include "host/world/world.h"
#include "korvane/korvane.h"

namespace host {

enum class Identification { AutomationId, TreePath, ScreenPoint };
inline constexpr Identification kIdentifications[] = {Identification::AutomationId, Identification::TreePath,
                                                      Identification::ScreenPoint};
const char* NameOf(Identification identification);
// How recordings write it.
const char* MethodWordOf(Identification identification);
int MethodOf(Identification identification);

enum class Finding {
  NotRecorded,  // the record has no such identification
  NotFound,
  Another,    // it leads to an element that is not the recorded one
  Ambiguous,  // several elements answer to it
  Found,
};

// "not recorded", "not found", "another element", "not unique", "found"
const char* WordOf(Finding finding);

struct Attempt {
  Identification by = Identification::AutomationId;
  Finding finding = Finding::NotRecorded;
  std::string why;  // of all but Found
  double milliseconds = 0;
  std::optional<world::Element> element;     // of Found and Another
  std::shared_ptr<const TargetRecord> path;  // of Found by it: the levels that lead there from the window
};
std::string Describe(const Attempt& attempt);

// What is looked for, and where.
struct Sought {
  const TargetRecord& record;
  const std::string& label;  // empty: not known
  const WindowName& recorded;
  const world::Window& window;
};

Attempt TryAlone(const Sought& sought, Identification by);
Identification PreferredOf(const TargetRecord& record);

struct Identified {
  Identification preferred = Identification::AutomationId;
  std::vector<Attempt> attempts;  // in the order tried
  std::optional<world::Element> element;
  Identification by = Identification::AutomationId;
  std::string refusal;  // why no element is taken
  // For the library: the same element, by what found it and nothing else, so that it cannot take another one instead.
  TargetRecord record{};

  bool IsHealed() const {
    return element && by != preferred;
  }
};
Identified Identify(const Sought& sought);

// How the element differs from the recorded one; empty: it does not.
std::string DifferenceFrom(const Sought& sought, const world::Element& element);
// The record's path as it leads from this window: an owned window stands below its owner on some desktops, so that a
// path recorded from the owner has levels that are not in the window.
TargetRecord FittedTo(const TargetRecord& record, const world::Element& window);
// Where the record's point is now that its window may have moved.
world::Point PointNow(const Sought& sought);
// Whether the element, or one that it lies in, is that window. A list that a combo box drops is a window that nothing
// owns, but lies in the combo box all the same.
bool LiesIn(const world::Element& element, HWND window);
// Numbers that a program gives anew at each start: long ones, and UUIDs.
bool LooksGenerated(const WideText& automationId);
// Windows, lists, panes and whatever else is made of parts: pointing at one means a place in it.
bool IsContainer(int controlType);
std::string NameOfType(int controlType);
// Of elements whose name says which one they are, such as buttons and rows; empty for all others.
std::string LabelOf(const world::Element& element);

}  // namespace host
