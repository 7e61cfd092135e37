#include "host/engine/step_actions.h"

#include <algorithm>

#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/engine/await.h"
#include "host/engine/find_window.h"

namespace host {

namespace {

// Between two looks at the Escape key, and at what is waited for.
constexpr int kSliceMs = 50;
// Within this time two clicks on one spot are a double click, which selects a word.
constexpr double kDoubleClickMs = 600;
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

// What the field holds when it has the whole text, or has stopped changing because it makes another one of it.
std::optional<std::string> HeldWhenSettled(const world::Element& field, const std::string& expected) {
  constexpr int kStillMs = 40;
  auto held = HeldBy(field);
  Await(kSettleMs, [&] {
    if (held && held->find(expected) != std::string::npos) {
      return true;
    }
    delay(kStillMs);
    auto now = HeldBy(field);
    std::swap(held, now);
    return held == now;
  });
  return held;
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

}  // namespace

int StepActions::Do(Turn& turn) {
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

void StepActions::KeepClearOfDoubleClick(world::Point point) {
  const double since = world::Now() - lastClickAt_;
  if (lastClicked_ && lastClicked_->x == point.x && lastClicked_->y == point.y && since < kDoubleClickMs) {
    delay(static_cast<int>(kDoubleClickMs - since) + 1);
  }
  lastClicked_ = point;
  lastClickAt_ = world::Now();
}

int StepActions::Click(Turn& turn, int times) {
  KeepClearOfDoubleClick(*turn.aim.point);
  turn.result.touched = true;
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
int StepActions::ClickSeen(Turn& turn) {
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

int StepActions::Paste(Turn& turn) {
  // The clipboard is for everybody to read, and some keep what was on it.
  if (secrets_.AreIn(turn.result.text)) {
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
    result.touched = true;
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

int StepActions::Type(Turn& turn) {
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
  if (!before && (!turn.step.replace || secrets_.AreIn(result.text))) {
    result.remark = "what was typed cannot be read back: the target tells no text";
    return KORVANE_OK;
  }
  // A field may change what it is given; it must change in some way.
  const std::string expected = AsHeld(result.text);
  const bool secret = secrets_.AreIn(result.text);
  const bool seen = Await(std::min(turn.timeoutMs, kSettleMs), [&] {
    const auto now = HeldBy(field);
    if (secret && now && secrets_.AreIn(*now)) {
      tellingWindows_.insert(turn.Window());
    }
    // A field for passwords tells other characters, or none.
    return turn.step.replace && !secret ? now == expected : result.text.empty() || now != before;
  });
  result.expected = result.text;
  result.received = seen && !secret ? HeldWhenSettled(field, expected) : HeldBy(field);
  if (!seen) {
    result.remark = Shows(result.received);
    return Cancelled(KORVANE_FAILED);
  }
  return KORVANE_OK;
}

int StepActions::SendShortcut(Turn& turn) {
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
int StepActions::ReadyForKeys(Turn& turn) {
  const auto isReady = [&] { return BelongsTo(world::ForegroundWindow(), turn.Window()); };
  if (isReady() || Await(std::min(turn.timeoutMs, kSettleMs), isReady)) {
    return KORVANE_OK;
  }
  const HWND front = world::ForegroundWindow();
  const auto other = front == nullptr ? std::nullopt : world::Describe(front);
  turn.result.remark = "keys would go to another window" + (other ? ": " + Describe(NameOf(*other)) : "");
  return Cancelled(KORVANE_FAILED);
}

int StepActions::Press(Turn& turn, const char* keys) {
  if (const int code = ReadyForKeys(turn); code != KORVANE_OK) {
    return code;
  }
  turn.result.touched = true;
  return world::SendKeys(*FindShortcut(keys)) ? KORVANE_OK : KORVANE_FAILED;
}

int StepActions::Wait(Turn& turn) {
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

int StepActions::Check(Turn& turn) {
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

int StepActions::Read(Turn& turn) {
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
