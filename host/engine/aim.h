// A step's target: its element, and the place where a click reaches it and nothing else. Checking and replaying a
// recording both ask here, so that they agree.
#pragma once

#include <optional>
#include <string>

#include "host/engine/identify.h"

namespace host {

struct Aim {
  Identified identified;
  std::optional<world::Point> point;  // of a step that clicks
  // The window that takes a click at the point: the step's own, one that it owns, or one in which the element lies.
  // Null: another window is in front of it.
  HWND window = nullptr;
  // The point itself is meant, not the middle of the element that is there.
  bool exact = false;
  std::string refusal;  // why the step cannot be done; empty: it can
  std::string remark;   // what a reader should know all the same
};

// `mayScroll`: what the element lies in may be asked to show it.
Aim TakeAim(const Sought& sought, bool clicks, bool mayScroll);

// Whether a window is the other one, or owned by it.
bool BelongsTo(HWND window, HWND other);

bool ClicksTarget(const Step& step);

}  // namespace host
