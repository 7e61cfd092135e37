#include "host/engine/run_step.h"

#include <cstring>

#include "host/base/text.h"
#include "host/engine/find_window.h"
#include "host/engine/identify.h"
#include "host/recording/shortcut.h"

namespace host {

namespace {

// Between two looks at the Escape key.
constexpr int kSliceMs = 100;
// Within this time two clicks on one spot are a double click, which selects a word.
constexpr double kDoubleClickMs = 600;

// What the target shows; nothing when it cannot be read.
std::optional<std::string> ReadText(const TargetRecord& target, HWND window) {
  KorvaneChar* const text = getTargetText(&target, window);
  if (text == nullptr) {
    return std::nullopt;
  }
  std::string read = Utf8(text);
  freeTextResult(text);
  return read;
}

bool Matches(const std::string& shown, const std::string& expected, Match match) {
  return match == Match::Equals ? shown == expected : shown.find(expected) != std::string::npos;
}

std::string Shows(const std::optional<std::string>& text) {
  return text ? "shows \"" + Shortened(*text, 200) + "\"" : "shows no text";
}

bool IsIn(const world::Rect& rect, world::Point point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

bool Clicks(Action action) {
  return action == Action::Click || action == Action::Paste || action == Action::Type || action == Action::Shortcut;
}

// Where the target is now: where the click went, else where it was in its window, if that is it.
std::optional<world::Rect> PlaceOf(const Step& step, const WindowName& recorded, const world::Window& window,
                                   bool clicked) {
  if (!step.hasTarget) {
    return std::nullopt;
  }
  if (clicked) {
    return IsIn(window.rect, world::Cursor()) ? world::ElementAt(world::Cursor()) : std::nullopt;
  }
  const world::Point expected{step.target.x - recorded.rect.left + window.rect.left,
                              step.target.y - recorded.rect.top + window.rect.top};
  TargetRecord there{};
  const bool same = captureTargetAtPoint(&there, expected.x, expected.y) == KORVANE_OK &&
                    IsSameElement(there, step.target) && IsIn(window.rect, expected);
  return same ? world::ElementAt(expected) : std::nullopt;
}

}  // namespace

StepResult StepRunner::Run(std::size_t index, Variables& variables) {
  const Step& step = recording_.steps[index];
  StepResult result;
  result.index = index;
  result.step = &step;
  const bool literal = step.action == Action::Shortcut || step.action == Action::Read;
  result.text = literal ? step.text : Expand(step.text, variables, NameOf(index, step));
  log_.NewLines();
  result.start = world::Now();
  const int timeoutMs = step.timeoutMs != 0 ? step.timeoutMs : options_.timeoutMs;
  result.window = AwaitWindow(recording_.windows[step.window], timeoutMs, [] { return isCancelled() == 1; });
  result.windowGone = !result.window && isCancelled() == 0;
  if (isCancelled() == 1) {
    result.code = KORVANE_CANCELLED;
  } else if (result.windowGone) {
    result.code = KORVANE_NOT_FOUND;
    result.remark = "no window " + Describe(recording_.windows[step.window]);
  } else {
    result.code = Act({step, result.window->handle, timeoutMs, result, variables});
    if (result.code != KORVANE_OK && !world::Describe(result.window->handle)) {
      result.windowGone = true;
      result.remark = "the window " + Describe(recording_.windows[step.window]) + " was closed meanwhile";
    }
  }
  result.milliseconds = world::Now() - result.start;
  logAction(Wide(std::to_string(index + 1) + " " + Title(step)).c_str(), result.code,
            static_cast<int>(result.milliseconds));
  result.lines = log_.NewLines();
  if (options_.pictures && result.window) {
    Illustrate(result);
  }
  return result;
}

void StepRunner::Illustrate(StepResult& result) {
  const Step& step = *result.step;
  if (const auto now = world::Describe(result.window->handle)) {
    const bool clicked = Clicks(step.action) && !options_.dryRun && result.code == KORVANE_OK;
    result.mark = PlaceOf(step, recording_.windows[step.window], *now, clicked);
    result.picture = world::TakePicture(now->handle);
  }
  log_.NewLines();
}

int StepRunner::Act(const Turn& turn) {
  if (options_.dryRun) {
    return turn.step.hasTarget ? Resolve(turn.step.target, turn.window, log_).code : KORVANE_OK;
  }
  switch (turn.step.action) {
    case Action::Click:
      return Click(turn);
    case Action::Paste:
      return Paste(turn);
    case Action::Type:
      return Type(turn);
    case Action::Shortcut:
      return SendShortcut(turn);
    case Action::Wait:
      return Wait(turn);
    case Action::Check:
      return Check(turn);
    case Action::Read:
      break;
  }
  return Read(turn);
}

void StepRunner::KeepClearOfDoubleClick(const TargetRecord& target) {
  const double since = world::Now() - lastClickAt_;
  if (lastClicked_ && std::memcmp(&*lastClicked_, &target, sizeof target) == 0 && since < kDoubleClickMs) {
    delay(static_cast<int>(kDoubleClickMs - since) + 1);
  }
  lastClicked_ = target;
  lastClickAt_ = world::Now();
}

int StepRunner::Click(const Turn& turn) {
  KeepClearOfDoubleClick(turn.step.target);
  return clickTarget(&turn.step.target, turn.window);
}

int StepRunner::Paste(const Turn& turn) {
  KeepClearOfDoubleClick(turn.step.target);
  if (const int code = setClipboardText(Wide(turn.result.text).c_str()); code != KORVANE_OK) {
    turn.result.remark = "the clipboard does not take the text";
    return code;
  }
  const int code = pasteToTargetWithVerifyEx(&turn.step.target, turn.window, turn.timeoutMs);
  if (code == KORVANE_FAILED) {
    turn.result.remark = Shows(ReadText(turn.step.target, turn.window));
  }
  return code;
}

int StepRunner::Type(const Turn& turn) {
  if (const int code = Click(turn); code != KORVANE_OK) {
    return code;
  }
  constexpr std::size_t kAtOnce = 20;
  const WideText text = Wide(turn.result.text);
  for (std::size_t i = 0; i < text.size(); i += kAtOnce) {
    if (isCancelled() == 1) {
      return KORVANE_CANCELLED;
    }
    if (const int code = sendKeySequence(text.substr(i, kAtOnce).c_str(), 1); code != KORVANE_OK) {
      return code;
    }
  }
  return KORVANE_OK;
}

int StepRunner::SendShortcut(const Turn& turn) {
  const int ready = turn.step.hasTarget ? Click(turn) : ensureWindowFocus(turn.window);
  return ready != KORVANE_OK ? ready : (*FindShortcut(turn.step.text))();
}

int StepRunner::Wait(const Turn& turn) {
  const WideText expected = Wide(turn.result.text);
  const double end = world::Now() + turn.timeoutMs;
  std::optional<std::string> shown;
  do {
    if (isCancelled() == 1) {
      return KORVANE_CANCELLED;
    }
    const auto wait = turn.step.match == Match::Equals ? waitForTargetContainsText : waitForTargetContainsPartialText;
    wait(&turn.step.target, turn.window, expected.c_str(), kSliceMs);
    // The library's partial comparison is also content with a part of what is expected.
    shown = ReadText(turn.step.target, turn.window);
    if (shown && Matches(*shown, turn.result.text, turn.step.match)) {
      return KORVANE_OK;
    }
    delay(1);
  } while (world::Now() < end);
  turn.result.remark =
      Shows(shown) + " after " + std::to_string(turn.timeoutMs) + " ms, not \"" + turn.result.text + "\"";
  return shown ? KORVANE_FAILED : KORVANE_NOT_FOUND;
}

int StepRunner::Check(const Turn& turn) {
  const auto shown = ReadText(turn.step.target, turn.window);
  if (shown && Matches(*shown, turn.result.text, turn.step.match)) {
    return KORVANE_OK;
  }
  turn.result.remark = Shows(shown) + ", not \"" + turn.result.text + "\"";
  return shown ? KORVANE_FAILED : KORVANE_NOT_FOUND;
}

int StepRunner::Read(const Turn& turn) {
  const auto shown = ReadText(turn.step.target, turn.window);
  if (!shown) {
    turn.result.remark = Shows(shown);
    return KORVANE_NOT_FOUND;
  }
  turn.variables[turn.step.text] = *shown;
  turn.result.remark = turn.step.text + " = \"" + Shortened(*shown, 200) + "\"";
  return KORVANE_OK;
}

}  // namespace host
