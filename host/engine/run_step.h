// One step of a recording, done: the window found, the action taken, what came of it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/engine/library_log.h"
#include "host/recording/recording.h"
#include "host/recording/variables.h"
#include "host/world/world.h"

namespace host {

struct StepResult {
  std::size_t index = 0;
  const Step* step = nullptr;
  std::string text;  // with the variables' values
  int code = 0;
  bool windowGone = false;
  double start = 0;  // on world::Now()
  double milliseconds = 0;
  std::string remark;              // what was seen instead, or what was read
  std::vector<std::string> lines;  // of the library's log
  std::string explanation;         // of a failure
  std::optional<world::Window> window;
  std::optional<world::Rect> mark;  // the target on the screen
  std::optional<world::Picture> picture;
};

struct RunOptions {
  int timeoutMs = 3000;
  bool dryRun = false;    // resolve, but do not act
  bool pictures = false;  // take one after each step
};

class StepRunner {
 public:
  StepRunner(const Recording& recording, LibraryLog& log, RunOptions options)
      : recording_(recording), log_(log), options_(options) {}

  // Values that steps read are added to the variables.
  StepResult Run(std::size_t index, Variables& variables);

 private:
  struct Turn {
    const Step& step;
    HWND window;
    int timeoutMs;
    StepResult& result;
    Variables& variables;
  };

  int Act(const Turn& turn);
  int Click(const Turn& turn);
  int Paste(const Turn& turn);
  int Type(const Turn& turn);
  int SendShortcut(const Turn& turn);
  static int Wait(const Turn& turn);
  static int Check(const Turn& turn);
  static int Read(const Turn& turn);
  void KeepClearOfDoubleClick(const TargetRecord& target);
  void Illustrate(StepResult& result);

  const Recording& recording_;
  LibraryLog& log_;
  RunOptions options_;
  std::optional<TargetRecord> lastClicked_;
  double lastClickAt_ = 0;
};

}  // namespace host
