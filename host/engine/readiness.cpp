#include "host/engine/readiness.h"

#include "host/base/failure.h"
#include "host/engine/find_window.h"
#include "host/engine/identify.h"

namespace host {

namespace {

std::string Describe(const world::Screen& screen) {
  return std::to_string(screen.rect.right - screen.rect.left) + " x " +
         std::to_string(screen.rect.bottom - screen.rect.top) + " at " + std::to_string(screen.dpi * 100 / 96) + " %";
}

bool SameScreen(const world::Screen& left, const world::Screen& right) {
  const world::Rect& a = left.rect;
  const world::Rect& b = right.rect;
  return left.dpi == right.dpi && a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

}  // namespace

std::vector<std::string> CheckReadiness(const Recording& recording, const std::string& file) {
  if (const auto why = world::WhyNoInput()) {
    throw Failure(ExitCode::NotReady, *why + ": nothing was done");
  }
  for (const WindowName& name : recording.windows) {
    const auto window = FindWindow(name);
    const auto why = window ? world::WhyOutOfReach(window->handle) : std::nullopt;
    if (why) {
      throw Failure(ExitCode::NotReady, "the window " + Describe(name) + " takes no input: " + *why);
    }
  }
  const world::Screen now = world::TheScreen();
  if (!recording.screen || SameScreen(*recording.screen, now)) {
    return {};
  }
  const std::string screens =
      "recorded on a screen of " + Describe(*recording.screen) + ", this one is " + Describe(now);
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    if (step.hasTarget && PreferredOf(step.target) == Identification::ScreenPoint) {
      throw Failure(ExitCode::NotReady,
                    file + ": " + screens + ", and " + NameOf(i, step) + " has nothing but its point");
    }
  }
  return {screens};
}

}  // namespace host
