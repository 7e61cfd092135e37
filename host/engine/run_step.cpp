#include "host/engine/run_step.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/engine/find_window.h"
#include "host/recording/shortcut.h"
#include "host/world/interruption.h"

namespace host {

namespace {

// Between two looks at the Escape key, and at what is waited for.
constexpr int kSliceMs = 50;
// Within this time two clicks on one spot are a double click, which selects a word.
constexpr double kDoubleClickMs = 600;
// How long the preferred identification alone is waited for.
constexpr double kPreferredMs = 500;
// How long a field may take to show what was typed, or that what it held before was replaced.
constexpr int kSettleMs = 1000;

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

// What a field holds, with line breaks as one character each, however it writes them.
std::optional<std::string> HeldBy(const world::Element& element) {
  const auto value = world::ValueOf(element);
  if (!value) {
    return std::nullopt;
  }
  std::string text = Utf8(*value);
  std::erase(text, '\r');
  return text;
}

// A text as a field that was given it would hold it.
std::string AsHeld(const std::string& given) {
  std::string text = Utf8(Wide(given));
  std::erase(text, '\r');
  return text;
}

bool Matches(const std::string& shown, const std::string& expected, Match match) {
  return match == Match::Equals ? shown == expected : shown.find(expected) != std::string::npos;
}

std::string Shows(const std::optional<std::string>& text) {
  return text ? "shows \"" + Shortened(*text, 200) + "\"" : "shows no text";
}

// A dropped list closes when it is clicked, and what it covered comes back.
bool IsShown(HWND window) {
  const auto windows = world::Windows();
  return std::any_of(windows.begin(), windows.end(),
                     [window](const world::Window& each) { return each.handle == window; });
}

// With Escape, or from outside of the program.
bool IsCancelled() {
  return isCancelled() == 1 || world::IsInterrupted();
}

// True as soon as it holds; false when the time is up or the replay was cancelled.
template <class Condition>
bool Await(int milliseconds, Condition condition) {
  const double end = world::Now() + milliseconds;
  for (;;) {
    if (condition()) {
      return true;
    }
    if (world::Now() >= end || IsCancelled()) {
      return false;
    }
    delay(10);
  }
}

int Cancelled(int otherwise) {
  return IsCancelled() ? KORVANE_CANCELLED : otherwise;
}

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

void TellFinding(const Aim& aim, const Step& step, const world::Window& window, const WindowName& /*recorded*/,
                 StepResult& result) {
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
  if (options_.pictures && result.window && !tellingWindows_.contains(result.window->handle)) {
    Illustrate(result);
  }
  Conceal(result);
  return result;
}

// What is kept of a step is free of secrets from here on; the lines of the log are already.
void StepRunner::Conceal(StepResult& result) const {
  const Secrets& secrets = options_.secrets;
  for (std::string* const text : {&result.text, &result.remark, &result.healing}) {
    *text = secrets.Masked(std::move(*text));
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
    code = options_.dryRun ? KORVANE_OK : Act(turn);
  } else if (AimAt(turn)) {
    code = options_.dryRun || (options_.strict && turn.aim.identified.IsHealed()) ? KORVANE_OK : Act(turn);
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
  TellFinding(turn.aim, turn.step, *result.window, name, result);
  if (options_.pictures && turn.aim.identified.element) {
    result.mark = world::RectOf(*turn.aim.identified.element);
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

void StepRunner::Illustrate(StepResult& result) {
  if (const auto now = world::Describe(result.window->handle)) {
    result.picture = world::TakePicture(now->handle);
  }
  log_.NewLines();
}

int StepRunner::Act(Turn& turn) {
  switch (turn.step.action) {
    case Action::Click:
      return Click(turn, 1);
    case Action::DoubleClick:
      return Click(turn, 2);
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

void StepRunner::KeepClearOfDoubleClick(world::Point point) {
  const double since = world::Now() - lastClickAt_;
  if (lastClicked_ && lastClicked_->x == point.x && lastClicked_->y == point.y && since < kDoubleClickMs) {
    delay(static_cast<int>(kDoubleClickMs - since) + 1);
  }
  lastClicked_ = point;
  lastClickAt_ = world::Now();
}

int StepRunner::Click(Turn& turn, int times) {
  KeepClearOfDoubleClick(*turn.aim.point);
  if (times == 1 && !turn.aim.exact) {
    if (const int code = clickTarget(&turn.Target(), turn.Window()); code != KORVANE_OK) {
      return code;
    }
    return ClickSeen(turn);
  }
  ensureWindowFocus(turn.Window());
  if (!world::Click(*turn.aim.point, times)) {
    return KORVANE_FAILED;
  }
  return ClickSeen(turn);
}

// Where the pointer is now is where the click went.
int StepRunner::ClickSeen(Turn& turn) {
  const world::Point at = world::Cursor();
  turn.result.clicked = at;
  const HWND there = world::RootAt(at);
  // A click may have closed the window.
  const bool stands = world::Describe(turn.Window()).has_value();
  if (stands && !BelongsTo(there, turn.Window()) && there != turn.aim.window &&
      (turn.aim.window == nullptr || IsShown(turn.aim.window))) {
    const auto other = there == nullptr ? std::nullopt : world::Describe(there);
    turn.result.remark = "the click went to another window" + (other ? ": " + Describe(NameOf(*other)) : "");
    return KORVANE_FAILED;
  }
  return KORVANE_OK;
}

int StepRunner::Paste(Turn& turn) {
  // The clipboard is for everybody to read, and some keep what was on it.
  if (options_.secrets.AreIn(turn.result.text)) {
    return Type(turn);
  }
  StepResult& result = turn.result;
  const world::Element& field = *turn.aim.identified.element;
  const std::string expected = AsHeld(result.text);
  if (turn.step.replace || result.text.empty() || turn.aim.exact) {
    if (const int code = Click(turn, 1); code != KORVANE_OK) {
      return code;
    }
  }
  if (const int code = turn.step.replace ? Press(turn, "Ctrl+A") : KORVANE_OK; code != KORVANE_OK) {
    return code;
  }
  if (result.text.empty()) {
    if (!turn.step.replace) {
      result.remark = "the text is empty: nothing was pasted";
      return KORVANE_OK;
    }
    if (const int code = Press(turn, "Delete"); code != KORVANE_OK) {
      return code;
    }
  } else if (setClipboardText(Wide(result.text).c_str()) != KORVANE_OK) {
    result.remark = "the clipboard does not take the text";
    return KORVANE_FAILED;
  }
  const auto before = HeldBy(field);
  int code = KORVANE_OK;
  if (turn.step.replace || turn.aim.exact) {
    // The field is clicked, and its content selected: one more click would take that back.
    code = result.text.empty() ? KORVANE_OK : Press(turn, "Ctrl+V");
    if (code != KORVANE_OK) {
      return code;
    }
  } else {
    KeepClearOfDoubleClick(*turn.aim.point);
    code = pasteToTargetWithVerifyEx(&turn.Target(), turn.Window(), turn.timeoutMs);
    if (code == KORVANE_OK) {
      code = ClickSeen(turn);
    }
  }
  if (code != KORVANE_OK && code != KORVANE_FAILED) {
    return code;
  }
  result.expected = result.text;
  std::optional<std::string> now;
  if (code == KORVANE_OK) {
    // The library is content with the second half of the text, and with what the field held before.
    const auto shows = [&] {
      now = HeldBy(field);
      return now && (turn.step.replace ? *now == expected : now->find(expected) != std::string::npos);
    };
    if (!Await(turn.timeoutMs, shows)) {
      code = Cancelled(KORVANE_FAILED);
    } else if (!turn.step.replace && before && *before == *now && *now != expected &&
               !Await(std::min(turn.timeoutMs, kSettleMs), [&] { return HeldBy(field) != before; })) {
      result.remark = "the field held the text before, and nothing changed";
      result.received = now;
      return KORVANE_FAILED;
    }
  }
  result.received = code == KORVANE_OK && now != before ? now : HeldBy(field);
  if (code == KORVANE_FAILED) {
    result.received = result.received ? result.received : ReadText(turn.Target(), turn.Window());
    result.remark = result.remark.empty() || turn.aim.remark == result.remark ? Shows(result.received) : result.remark;
  }
  return code;
}

int StepRunner::Type(Turn& turn) {
  StepResult& result = turn.result;
  const world::Element& field = *turn.aim.identified.element;
  const WideText text = Wide(result.text);
  if (!std::all_of(text.begin(), text.end(), world::HasKeysFor)) {
    result.remark = "the keyboard layout has no keys for a character of the text; nothing was typed";
    return KORVANE_FAILED;
  }
  if (const int code = Click(turn, 1); code != KORVANE_OK) {
    return code;
  }
  if (turn.step.replace) {
    for (const char* const keys : {"Ctrl+A", "Delete"}) {
      if (const int code = Press(turn, keys); code != KORVANE_OK) {
        return code;
      }
    }
  }
  const auto before = HeldBy(field);
  constexpr std::size_t kAtOnce = 20;
  for (std::size_t i = 0; i < text.size(); i += kAtOnce) {
    if (IsCancelled()) {
      return KORVANE_CANCELLED;
    }
    if (const int code = ReadyForKeys(turn); code != KORVANE_OK) {
      return code;
    }
    if (const int code = sendKeySequence(text.substr(i, kAtOnce).c_str(), 1); code != KORVANE_OK) {
      return code;
    }
  }
  if (!before && (!turn.step.replace || options_.secrets.AreIn(result.text))) {
    result.remark = "what was typed cannot be read back: the target tells no text";
    return KORVANE_OK;
  }
  // A field may change what it is given; it must change in some way.
  const std::string expected = AsHeld(result.text);
  const bool secret = options_.secrets.AreIn(result.text);
  const bool seen = Await(std::min(turn.timeoutMs, kSettleMs), [&] {
    const auto now = HeldBy(field);
    if (secret && now && options_.secrets.AreIn(*now)) {
      tellingWindows_.insert(turn.Window());
    }
    // A field for passwords tells other characters, or none.
    return turn.step.replace && !secret ? now == expected : result.text.empty() || now != before;
  });
  result.expected = result.text;
  result.received = HeldBy(field);
  if (!seen) {
    result.remark = Shows(result.received);
    return Cancelled(KORVANE_FAILED);
  }
  return KORVANE_OK;
}

int StepRunner::SendShortcut(Turn& turn) {
  if (turn.step.hasTarget) {
    if (const int code = Click(turn, 1); code != KORVANE_OK) {
      return code;
    }
  } else {
    // What it did not reach is told by who has the keys.
    ensureWindowFocus(turn.Window());
  }
  return Press(turn, turn.step.text.c_str());
}

// Keys go to whatever window is in front, not to the one that was clicked.
int StepRunner::ReadyForKeys(Turn& turn) {
  const auto isReady = [&] { return BelongsTo(world::ForegroundWindow(), turn.Window()); };
  if (isReady() || Await(std::min(turn.timeoutMs, kSettleMs), isReady)) {
    return KORVANE_OK;
  }
  const HWND front = world::ForegroundWindow();
  const auto other = front == nullptr ? std::nullopt : world::Describe(front);
  turn.result.remark = "keys would go to another window" + (other ? ": " + Describe(NameOf(*other)) : "");
  return Cancelled(KORVANE_FAILED);
}

int StepRunner::Press(Turn& turn, const char* keys) {
  if (const int code = ReadyForKeys(turn); code != KORVANE_OK) {
    return code;
  }
  return world::SendKeys(*FindShortcut(keys)) ? KORVANE_OK : KORVANE_FAILED;
}

int StepRunner::Wait(Turn& turn) {
  StepResult& result = turn.result;
  std::optional<std::string> shown;
  const double begin = world::Now();
  while (!IsCancelled()) {
    // The library's partial comparison is also content with a part of what is expected.
    shown = ReadText(turn.Target(), turn.Window());
    result.expected = result.text;
    result.received = shown;
    if (shown && Matches(*shown, result.text, turn.step.match)) {
      return KORVANE_OK;
    }
    if (world::Now() - begin >= turn.timeoutMs) {
      result.remark = Shows(shown) + " after " + std::to_string(turn.timeoutMs) + " ms, not \"" + result.text + "\"";
      return shown ? KORVANE_FAILED : KORVANE_NOT_FOUND;
    }
    delay(kSliceMs);
  }
  return KORVANE_CANCELLED;
}

int StepRunner::Check(Turn& turn) {
  StepResult& result = turn.result;
  const auto shown = ReadText(turn.Target(), turn.Window());
  result.expected = result.text;
  result.received = shown;
  if (shown && Matches(*shown, result.text, turn.step.match)) {
    return KORVANE_OK;
  }
  result.remark = Shows(shown) + ", not \"" + result.text + "\"";
  return KORVANE_FAILED;
}

int StepRunner::Read(Turn& turn) {
  const auto shown = ReadText(turn.Target(), turn.Window());
  turn.result.received = shown;
  if (!shown) {
    turn.result.remark = Shows(shown);
    return KORVANE_FAILED;
  }
  turn.variables[turn.step.text] = *shown;
  turn.result.remark = turn.step.text + " = \"" + Shortened(*shown, 200) + "\"";
  return KORVANE_OK;
}

}  // namespace host
