// What the benchmarks act on: a form with a field, or a tree of a chosen depth and width, on the stand-in desktop.
#pragma once

#include <string>

#include "korvane/korvane.h"
#include "standin/desktop/desktop.h"

namespace bench {

struct Desk {
  HWND window = nullptr;
  HWND edit = nullptr;
  TargetRecord target{};
  POINT point{};  // on the target
};

// A dialog with one edit, to be found by its AutomationId.
Desk SetUpForm();

// A window with levels of siblings that type and class do not tell apart; the target is the last one of the last level,
// to be found by its tree path.
Desk SetUpTree(int depth, int siblings);

// A file of the benchmarks' own, empty, as the platform and as the standard library name it.
std::string NewFile(const char* name);
std::u16string Wide(const std::string& text);

}  // namespace bench
