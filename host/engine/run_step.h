// One step of a recording, done: the window found, the element identified, the action taken, and what came of it seen.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "host/engine/aim.h"
#include "host/engine/library_log.h"
#include "host/engine/step_actions.h"
#include "host/engine/step_result.h"
#include "host/recording/recording.h"
#include "host/recording/secrets.h"
#include "host/recording/variables.h"
#include "host/world/world.h"

namespace host {

struct RunOptions {
  int timeoutMs = 3000;
  bool dryRun = false;    // resolve, but do not act
  bool pictures = false;  // take them
  bool strict = false;    // a healed step is a failed one
  Secrets secrets{};
};

class StepRunner {
 public:
  StepRunner(const Recording& recording, LibraryLog& log, RunOptions options)
      : recording_(recording), log_(log), options_(std::move(options)), actions_(options_.secrets) {}
  StepRunner(const StepRunner&) = delete;
  StepRunner& operator=(const StepRunner&) = delete;

  // Values that steps read are added to the variables.
  StepResult Run(std::size_t index, Variables& variables);

 private:
  int Do(Turn& turn);
  bool AimAt(Turn& turn) const;
  void Judge(const Turn& turn) const;
  void IllustrateBefore(StepResult& result) const;
  void IllustrateAfter(StepResult& result);
  void Conceal(StepResult& result) const;

  const Recording& recording_;
  LibraryLog& log_;
  RunOptions options_;
  StepActions actions_;
};

// What Judge tells of a target that was found, also when nothing is done with it.
void TellFinding(const Aim& aim, const Step& step, const world::Window& window, StepResult& result);

}  // namespace host
