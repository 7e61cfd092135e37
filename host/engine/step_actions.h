// What steps do to the element that was identified for them, each seen to have happened.
#pragma once

#include <optional>
#include <set>

#include "host/engine/aim.h"
#include "host/engine/step_result.h"
#include "host/recording/secrets.h"
#include "host/recording/variables.h"
#include "host/world/world.h"

namespace host {

// The step at hand.
struct Turn {
  const Step& step;
  int timeoutMs;
  StepResult& result;
  Variables& variables;
  Aim aim;

  HWND Window() const {
    return result.window->handle;
  }
  const TargetRecord& Target() const {
    return aim.identified.record;
  }
};

class StepActions {
 public:
  explicit StepActions(const Secrets& secrets) : secrets_(secrets) {}

  // The code that the library answered or would answer; what was seen is in the turn's result.
  int Do(Turn& turn);
  // Whether a step put a secret where this window shows it in plain text.
  bool ShowsSecret(HWND window) const {
    return tellingWindows_.contains(window);
  }
  bool ShowsAnySecret() const {
    return !tellingWindows_.empty();
  }

 private:
  int Click(Turn& turn, int times);
  static int ClickSeen(Turn& turn);
  int Paste(Turn& turn);
  int Type(Turn& turn);
  int SendShortcut(Turn& turn);
  static int ReadyForKeys(Turn& turn);
  static int Press(Turn& turn, const char* keys);
  static int Wait(Turn& turn);
  static int Check(Turn& turn);
  static int Read(Turn& turn);
  void KeepClearOfDoubleClick(world::Point point);

  const Secrets& secrets_;
  std::optional<world::Point> lastClicked_;
  double lastClickAt_ = 0;
  std::set<HWND> tellingWindows_;
};

}  // namespace host
