#include "host/engine/run_step.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/engine/await.h"
#include "host/engine/find_window.h"

namespace host {

namespace {

// How long the preferred identification alone is waited for.
constexpr double kPreferredMs = 500;
// The record with what found its element, so that the next replay begins with that.
TargetRecord Corrected(const Aim& aim, const Step& step, const world::Window& window) {
  TargetRecord proposal = step.target;
  proposal.identificationMethod = MethodOf(aim.identified.by);
  TargetRecord fresh{};
  const auto point = world::ClickPoint(*aim.identified.element);
  const auto there = point ? world::ElementUnder(*point) : std::nullopt;
  const bool reachable = there && world::Same(*there, *aim.identified.element);
  if (!reachable || captureTargetAtPoint(&fresh, point->x, point->y) != KORVANE_OK) {
    return proposal;
  }
  if (const auto root = world::ElementOfWindow(window.handle)) {
    fresh = FittedTo(fresh, world::Described(*root));
  }
  proposal.pathLength = fresh.pathLength;
  std::copy(std::begin(fresh.controlTypes), std::end(fresh.controlTypes), std::begin(proposal.controlTypes));
  std::copy(std::begin(fresh.childIndices), std::end(fresh.childIndices), std::begin(proposal.childIndices));
  std::copy(&fresh.classNames[0][0], &fresh.classNames[0][0] + sizeof fresh.classNames / sizeof(KorvaneChar),
            &proposal.classNames[0][0]);
  return proposal;
}

}  // namespace

void TellFinding(const Aim& aim, const Step& step, const world::Window& window, StepResult& result) {
  result.attempts = aim.identified.attempts;
  result.preferred = aim.identified.preferred;
  if (!aim.identified.element) {
    return;
  }
  result.foundBy = aim.identified.by;
  if (!aim.identified.IsHealed()) {
    return;
  }
  for (const Attempt& attempt : aim.identified.attempts) {
    if (attempt.by == aim.identified.preferred) {
      result.healing = std::string("its ") + NameOf(attempt.by) + ": " + attempt.why + "; its " +
                       NameOf(aim.identified.by) + " found the same element";
    }
  }
  result.proposal = Corrected(aim, step, window);
}

StepResult StepRunner::Run(std::size_t index, Variables& variables) {
  const Step& step = recording_.steps[index];
  StepResult result;
  result.index = index;
  result.step = &step;
  const bool literal = step.action == Action::Shortcut || step.action == Action::Read;
  result.text = literal ? step.text : Expand(step.text, variables, NameOf(index, step));
  log_.NewLines();
  result.start = world::Now();
  Turn turn{step, step.timeoutMs != 0 ? step.timeoutMs : options_.timeoutMs, result, variables, {}};
  result.code = Do(turn);
  result.milliseconds = world::Now() - result.start;
  logAction(Wide(std::to_string(index + 1) + " " + Title(step)).c_str(), result.code,
            static_cast<int>(result.milliseconds));
  result.lines = log_.NewLines();
  Judge(turn);
  IllustrateAfter(result);
  Conceal(result);
  return result;
}

// What is kept of a step is free of secrets from here on; the lines of the log are already.
void StepRunner::Conceal(StepResult& result) const {
  const Secrets& secrets = options_.secrets;
  for (std::string* const text : {&result.text, &result.remark, &result.healing}) {
    *text = secrets.Masked(std::move(*text));
  }
  for (Candidate& candidate : result.candidates) {
    candidate.what = secrets.Masked(std::move(candidate.what));
    candidate.difference = secrets.Masked(std::move(candidate.difference));
  }
  for (Attempt& attempt : result.attempts) {
    attempt.why = secrets.Masked(std::move(attempt.why));
  }
  for (std::optional<std::string>* const text : {&result.expected, &result.received}) {
    if (*text) {
      *text = secrets.Masked(**text);
    }
  }
}

int StepRunner::Do(Turn& turn) {
  StepResult& result = turn.result;
  const WindowName& name = recording_.windows[turn.step.window];
  result.window = AwaitWindow(name, turn.timeoutMs, IsCancelled);
  if (IsCancelled()) {
    return KORVANE_CANCELLED;
  }
  if (!result.window) {
    result.windowGone = true;
    result.remark = "no window " + Describe(name);
    return KORVANE_NOT_FOUND;
  }
  // The windows that were there before the first step were asked then.
  if (const auto why = options_.dryRun ? std::nullopt : world::WhyOutOfReach(turn.Window())) {
    result.remark = "the window takes no input: " + *why;
    return KORVANE_FAILED;
  }
  int code = KORVANE_NOT_FOUND;
  if (!turn.step.hasTarget) {
    IllustrateBefore(result);
    code = options_.dryRun ? KORVANE_OK : actions_.Do(turn);
  } else if (AimAt(turn)) {
    IllustrateBefore(result);
    code = options_.dryRun || (options_.strict && turn.aim.identified.IsHealed()) ? KORVANE_OK : actions_.Do(turn);
  }
  code = code == KORVANE_NOT_FOUND ? Cancelled(code) : code;
  if (code != KORVANE_OK && !world::Describe(result.window->handle)) {
    result.windowGone = true;
    result.remark = "the window " + Describe(name) + " was closed meanwhile";
  }
  return code;
}

// Until the time is up: what a step acts on often comes a moment after what the step before did.
bool StepRunner::AimAt(Turn& turn) const {
  StepResult& result = turn.result;
  const WindowName& name = recording_.windows[turn.step.window];
  // A remembered point would be clicked without a look at what is there now.
  clearElementCache();
  const double start = world::Now();
  Await(turn.timeoutMs, [&] {
    if (const auto now = world::Describe(result.window->handle)) {
      result.window = now;
    }
    const bool clicks = ClicksTarget(turn.step);
    turn.aim = TakeAim({turn.step.target, turn.step.label, name, *result.window}, clicks, !options_.dryRun);
    // Covered or minimised: a look from the front.
    if (turn.aim.refusal.empty() && clicks && !options_.dryRun && turn.aim.window == nullptr) {
      ensureWindowFocus(result.window->handle);
      result.window = world::Describe(result.window->handle).value_or(*result.window);
      turn.aim = TakeAim({turn.step.target, turn.step.label, name, *result.window}, clicks, true);
      if (turn.aim.refusal.empty() && turn.aim.window == nullptr) {
        turn.aim.refusal = "another window covers it and does not make way";
      }
    }
    // What is preferred may be about to come, and what heals be left over from what was there before.
    const bool settled = !turn.aim.identified.IsHealed() || world::Now() - start >= kPreferredMs;
    return turn.aim.refusal.empty() && settled;
  });
  TellFinding(turn.aim, turn.step, *result.window, result);
  if (options_.pictures && turn.aim.identified.element) {
    result.mark = world::RectOf(*turn.aim.identified.element);
    result.aim = ClicksTarget(turn.step) ? turn.aim.point : std::nullopt;
  }
  result.remark = turn.aim.refusal.empty() ? turn.aim.remark : turn.aim.refusal;
  return turn.aim.refusal.empty();
}

// "ok" is what was seen to be done to the recorded element; nothing else is.
void StepRunner::Judge(const Turn& turn) const {
  StepResult& result = turn.result;
  const bool healed = result.foundBy && result.foundBy != result.preferred;
  if (result.code == KORVANE_OK && healed && options_.strict) {
    result.code = KORVANE_NOT_FOUND;
    result.remark = result.healing;
  }
  result.state = result.code != KORVANE_OK ? StepState::Failed : healed ? StepState::Healed : StepState::Ok;
}

void StepRunner::IllustrateBefore(StepResult& result) const {
  if (options_.pictures && !actions_.ShowsSecret(result.window->handle)) {
    result.before = world::TakePicture(result.window->handle, world::Settle::No);
  }
}

// What a step led to is in the picture before the next one; only where nothing follows is it waited for.
void StepRunner::IllustrateAfter(StepResult& result) {
  const bool failed = result.state == StepState::Failed;
  if (!options_.pictures || (!failed && result.index + 1 < recording_.steps.size())) {
    return;
  }
  if (result.window && !actions_.ShowsSecret(result.window->handle)) {
    result.picture = world::TakePicture(result.window->handle, world::Settle::Yes);
  }
  if (failed && !actions_.ShowsAnySecret()) {
    result.screen = world::TakePictureOfScreen();
  }
  if (failed && result.window && result.step->hasTarget && !result.foundBy) {
    const Step& step = *result.step;
    result.candidates = NearestCandidates({step.target, step.label, recording_.windows[step.window], *result.window});
  }
  log_.NewLines();
}

}  // namespace host
