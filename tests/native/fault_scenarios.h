// What the fault sweep calls: every export in the circumstances worth having, with what is documented for its failures.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "korvane/korvane.h"
#include "standin/desktop/desktop.h"

namespace tests {

// The desktop that all scenarios run on: a dialog with an edit, a button and a part without a window; and what the
// exports fill in, marked so that an untouched one shows.
struct Form {
  HWND window, edit, button, other;
  TargetRecord byId, byPath, byPoint, windowless;
  TargetRecord captured;
  WindowInfo info;
  WCHAR read[16];
};

// Brings the desktop and the form back to their beginning.
Form BuildForm();

// A code below zero, and the line that is the log's last one then; null when the failure has no line of its own.
struct Failure {
  int code;
  const char* lastLine;
};
using Failures = std::vector<Failure>;

struct Scenario {
  const char* name;  // begins with the export
  std::function<int(Form&)> call;
  Failures failures{};
  int expected = KORVANE_OK;
  std::function<void(Form&)> arrange = [](Form&) {};
  // What a code promises about everything but the log.
  std::function<void(const Form&, int)> check = [](const Form&, int) {};
  // Answers besides the expected one that are no failures.
  std::vector<int> others{};
};

const std::vector<Scenario>& Scenarios();

}  // namespace tests
