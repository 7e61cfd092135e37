// The scripted user: acts at set times, whose presses are held back as those of a person are.
#include "host/world/world_standin_user.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <sstream>

#include "host/base/failure.h"
#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/world/keyboard_focus.h"
#include "host/world/outline.h"
#include "host/world/press_hold.h"
#include "host/world/user_input.h"
#include "host/world/world_standin_script.h"
#include "standin/desktop/desktop.h"
#include "standin/desktop/state.h"

namespace host::world {

namespace {

using standin::TheDesktop;

constexpr int kDragDistance = 4;
constexpr double kBetweenKeysMs = 8;
// After the last act; nobody waits longer for a person who does nothing any more.
constexpr double kPatienceMs = 60000;

struct Act {
  double time;
  std::string verb;
  std::string what;
};

std::vector<Act>& Acts() {
  static std::vector<Act> acts;
  return acts;
}

std::vector<int> NumbersOf(const std::string& text) {
  std::istringstream words(Replaced(text, ",", " "));
  std::vector<int> numbers;
  for (int number = 0; words >> number;) {
    numbers.push_back(number);
  }
  return numbers;
}

// The watch that lives; what was scheduled for an earlier one is not done any more.
std::uint64_t g_watch = 0;

void Later(double milliseconds, std::function<void()> act) {
  TheDesktop().Clock().After(milliseconds, [watch = g_watch, act = std::move(act)] {
    if (watch == g_watch) {
      act();
    }
  });
}

}  // namespace

struct InputWatch::State {
  explicit State(const std::vector<KeyChord>& keys) : hotkeys(keys) {}

  const std::vector<KeyChord> hotkeys;
  std::deque<UserInput> queue;
  PressHold presses{kDragDistance, kDragDistance};
  double patienceEnds = 0;

  void Perform(const Act& act);
  void Press(Point at);
  void Key(const std::vector<int>& codes, const std::string& text);
  void Type(const std::string& text);
  void Compose(const std::string& text);
  void Tell(UserInput::Kind kind, Point at, std::uint64_t held);
  bool LetGo(std::uint64_t press);
};

void InputWatch::State::Tell(UserInput::Kind kind, Point at, std::uint64_t held) {
  UserInput input;
  input.kind = kind;
  input.time = Now();
  input.at = at;
  input.held = held;
  queue.push_back(std::move(input));
}

void InputWatch::State::Press(Point at) {
  const std::uint64_t press = presses.Down(at, Now());
  Tell(UserInput::Kind::Press, at, press);
  Later(kLongestHoldMs, [this, press] {
    if (presses.IsKept(press)) {
      LetGo(press);
    }
  });
}

bool InputWatch::State::LetGo(std::uint64_t press) {
  const auto at = presses.BeginLettingGo(press);
  if (!at) {
    return false;
  }
  TheDesktop().User().Click(at->x, at->y);
  presses.EndLettingGo(press);
  return true;
}

void InputWatch::State::Key(const std::vector<int>& codes, const std::string& text) {
  UserInput input;
  input.kind = UserInput::Kind::Key;
  input.time = Now();
  input.key = ChordOf(codes);
  input.window = TheDesktop().Windows().Foreground();
  input.text = text;
  const auto hotkey = std::find(hotkeys.begin(), hotkeys.end(), input.key);
  if (hotkey != hotkeys.end()) {
    input.kind = UserInput::Kind::Hotkey;
    input.hotkey = static_cast<std::size_t>(hotkey - hotkeys.begin());
    queue.push_back(std::move(input));
    return;
  }
  queue.push_back(std::move(input));
  for (const int code : codes) {
    TheDesktop().User().PressKey(code, true);
  }
  for (const int code : codes) {
    TheDesktop().User().PressKey(code, false);
  }
}

void InputWatch::State::Type(const std::string& text) {
  double after = 0;
  for (const KorvaneChar unit : Wide(text)) {
    const SHORT scan = VkKeyScanW(unit);
    std::vector<int> codes{scan & 0xFF};
    if ((scan & 0x100) != 0) {
      codes.insert(codes.begin(), VK_SHIFT);
    }
    Later(after, [this, codes, unit] { Key(codes, Utf8({&unit, 1})); });
    after += kBetweenKeysMs;
  }
}

// The keys tell nothing of the characters that come of them.
void InputWatch::State::Compose(const std::string& text) {
  Key({kKeyOfInputMethod}, {});
  const HWND field = TheDesktop().Windows().Focus();
  TheDesktop().Clock().After(kBetweenKeysMs, [field, text] {
    TheDesktop().Controls().SetText(field, TheDesktop().Controls().TextOf(field) + Wide(text));
  });
}

void InputWatch::State::Perform(const Act& act) {
  const std::vector<int> numbers = NumbersOf(act.what);
  if (act.verb == "point") {
    TheDesktop().User().MoveCursor(numbers[0], numbers[1]);
  } else if (act.verb == "click") {
    Press({numbers[0], numbers[1]});
    presses.Up({numbers[0], numbers[1]});
  } else if (act.verb == "drag") {
    Press({numbers[0], numbers[1]});
    const Point to{numbers[2], numbers[3]};
    if (presses.Move(to)) {
      Tell(UserInput::Kind::Drag, to, 0);
    }
    presses.Up(to);
  } else if (act.verb == "type") {
    Type(act.what);
  } else if (act.verb == "compose") {
    Compose(act.what);
  } else if (act.verb == "keys") {
    Key(*FindShortcut(act.what), {});
  } else {
    Tell(UserInput::Kind::Interrupted, {}, 0);
  }
}

InputWatch::InputWatch(const std::vector<KeyChord>& hotkeys) : state_(std::make_unique<State>(hotkeys)) {
  if (Acts().empty()) {
    throw Failure(ExitCode::NotHere, std::string("nobody sits before the scripted desktop unless ") + kScript +
                                         " says \"user MS ACT\"; use --script");
  }
  for (const Act& act : Acts()) {
    Later(act.time, [state = state_.get(), act] { state->Perform(act); });
    state_->patienceEnds = std::max(state_->patienceEnds, Now() + act.time + kPatienceMs);
  }
}

InputWatch::~InputWatch() {
  ++g_watch;
}

std::optional<UserInput> InputWatch::Next(int timeoutMs) {
  for (const double end = Now() + timeoutMs;; Sleep(1)) {
    if (!state_->queue.empty()) {
      UserInput input = std::move(state_->queue.front());
      state_->queue.pop_front();
      return input;
    }
    if (Now() >= state_->patienceEnds) {
      throw Failure(ExitCode::NotHere, "the scripted user has gone without ending the recording");
    }
    if (Now() >= end) {
      return std::nullopt;
    }
  }
}

bool InputWatch::LetGo(const UserInput& press) {
  return state_->LetGo(press.held);
}

bool InputWatch::Swallow(const UserInput& press) {
  return state_->presses.Drop(press.held);
}

DoubleClick DoubleClickOfSystem() {
  return {};
}

std::optional<KeyboardFocus> FindKeyboardFocus() {
  const HWND control = TheDesktop().Windows().Focus();
  RECT rect{};
  if (control == nullptr || !GetWindowRect(control, &rect)) {
    return std::nullopt;
  }
  return KeyboardFocus{GetAncestor(control, GA_ROOT), control, {rect.left, rect.top, rect.right, rect.bottom}};
}

bool HidesText(HWND control) {
  standin::State& state = TheDesktop().Internals();
  return control != nullptr &&
         state.Property(TheDesktop().Elements().Of(control), UIA_ClassNamePropertyId).text == TEXT("PasswordEdit");
}

bool AddUserAct(const std::string& act) {
  std::istringstream words(act);
  Act added{};
  words >> added.time >> added.verb >> std::ws;
  std::getline(words, added.what, '\0');
  const std::size_t numbers = NumbersOf(added.what).size();
  const bool known = ((added.verb == "click" || added.verb == "point") && numbers == 2) ||
                     (added.verb == "drag" && numbers == 4) || added.verb == "type" || added.verb == "compose" ||
                     added.verb == "unhooked" || (added.verb == "keys" && FindShortcut(added.what));
  if (known) {
    Acts().push_back(std::move(added));
  }
  return known;
}

struct Outline::State {};

namespace {

std::vector<std::string> g_outlines;

}  // namespace

Outline::Outline() = default;
Outline::~Outline() = default;

void Outline::Show(const Rect& rect, OutlineColour colour, const std::string& text) {
  static constexpr const char* kColours[] = {"green", "yellow", "red"};
  std::ostringstream words;
  words << kColours[static_cast<int>(colour)] << " " << rect.left << " " << rect.top << " " << rect.right << " "
        << rect.bottom << " " << text;
  g_outlines.push_back(words.str());
}

void Outline::Hide() {
  if (!g_outlines.empty() && !g_outlines.back().empty()) {
    g_outlines.emplace_back();
  }
}

const std::vector<std::string>& OutlinesShown() {
  return g_outlines;
}

bool IsOurWindow(HWND /*window*/) {
  return false;
}

void ForgetUserActs() {
  g_outlines.clear();
  Acts().clear();
}

}  // namespace host::world
