// What came of one step, as the console, the report and files for other programs tell it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/candidates.h"
#include "host/engine/identify.h"
#include "host/recording/recording.h"
#include "host/world/world.h"

namespace host {

enum class StepState {
  Ok,      // the preferred identification found the recorded element, and the action was seen to reach it
  Healed,  // as Ok, but another identification had to find the element
  Failed,
  NotRun,
};
// "ok", "healed", "failed", "not run"
const char* WordOf(StepState state);

struct StepResult {
  std::size_t index = 0;
  const Step* step = nullptr;
  StepState state = StepState::NotRun;
  int code = 0;             // of the library, or what it would answer
  bool windowGone = false;  // the step's window was not there, or went away
  bool touched = false;     // input was sent, or may have been
  std::string text;         // with the variables' values

  // How the target was looked for, the last time; empty for a step without one.
  std::vector<Attempt> attempts;
  std::optional<Identification> preferred;
  std::optional<Identification> foundBy;
  std::string healing;                   // of a healed step: what failed, and what found the element instead
  std::optional<TargetRecord> proposal;  // of a healed step: the target as it should be recorded

  // Of steps that compare texts.
  std::optional<std::string> expected;
  std::optional<std::string> received;  // empty: no text could be read

  double start = 0;  // on world::Now()
  double milliseconds = 0;
  std::string remark;              // what was seen instead, or what was read
  std::vector<std::string> lines;  // of the library's log
  std::string explanation;         // of a failure

  std::optional<world::Window> window;
  std::optional<world::Rect> mark;       // the target on the screen
  std::optional<world::Point> aim;       // where a click on it is to go
  std::optional<world::Point> clicked;   // where the click went
  std::optional<world::Picture> before;  // just before the target was touched
  // Afterwards, where no later step shows it: of a failure, and of the last step.
  std::optional<world::Picture> picture;
  std::optional<world::Picture> screen;  // of a failure: everything
  std::vector<Candidate> candidates;     // of a target that was not found: what is there instead

  std::vector<StepResult> earlier;  // tries that failed before this one
};

}  // namespace host
