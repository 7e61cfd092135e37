#include "host/recorder/recorder.h"

#include <algorithm>
#include <cstdlib>

#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/engine/best_identification.h"
#include "host/engine/find_window.h"
#include "host/engine/identify.h"
#include "host/recording/variables.h"

namespace host {

namespace {

constexpr int kIdleMs = 40;
constexpr double kRestMs = 120;
// How long a click may take to give its field the focus.
constexpr double kFocusMs = 150;
constexpr int kLookAgainMs = 5;
constexpr int kEnter = 0x0D;
constexpr int kComboBox = 50003;
constexpr int kField = 50004;
constexpr int kDocument = 50030;

bool HoldsText(int controlType) {
  return controlType == kField || controlType == kDocument || controlType == kComboBox;
}

// A text in which nothing is a variable.
std::string Literal(const std::string& text) {
  std::string literal;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool special = text[i] == '$' && i + 1 < text.size() && (text[i + 1] == '{' || text[i + 1] == '$');
    literal += special ? "$$" : text.substr(i, 1);
  }
  return literal;
}

std::optional<std::string> ShownBy(const TargetRecord& target, HWND window) {
  KorvaneChar* const text = getTargetText(&target, window);
  if (text == nullptr) {
    return std::nullopt;
  }
  std::string shown = Utf8(text);
  freeTextResult(text);
  return shown;
}

std::vector<world::KeyChord> ChordsOf(const std::vector<RecorderHotkey>& hotkeys) {
  std::vector<world::KeyChord> chords(hotkeys.size());
  std::transform(hotkeys.begin(), hotkeys.end(), chords.begin(), [](const auto& hotkey) { return hotkey.chord; });
  return chords;
}

}  // namespace

Recorder::Recorder(Recording recording, std::size_t after, std::vector<RecorderHotkey> hotkeys, bool outlines,
                   RecorderListener listener)
    : recording_(std::move(recording)),
      first_(after),
      next_(after),
      hotkeys_(std::move(hotkeys)),
      listener_(std::move(listener)),
      watch_(ChordsOf(hotkeys_)),
      handles_(recording_.windows.size()) {
  if (outlines) {
    outline_.emplace();
  }
}

void Recorder::Run(const std::function<bool()>& stop) {
  LookAtFront();
  while (!ended_ && !stop()) {
    if (const auto input = watch_.Next(kIdleMs)) {
      Handle(*input);
    } else {
      Idle();
    }
  }
  FinishEntry();
}

void Recorder::Handle(const world::UserInput& input) {
  using Kind = world::UserInput::Kind;
  if (input.kind == Kind::Hotkey) {
    return Obey(hotkeys_[input.hotkey].command);
  }
  if (input.kind == Kind::Interrupted) {
    return listener_.told("the system had stopped telling what is done: look whether a step is missing");
  }
  if (paused_) {
    watch_.LetGo(input);
    return;
  }
  switch (input.kind) {
    case Kind::Press:
      return OnPress(input);
    case Kind::Drag:
      return OnDrag();
    case Kind::Key:
      return OnKey(input);
    default:
      FinishEntry();
      return listener_.told("only the left button is recorded: what was just done is no step");
  }
}

// ---- The mouse ----

void Recorder::OnPress(const world::UserInput& press) {
  if (outline_) {
    outline_->Hide();
  }
  std::vector<std::string> warnings;
  if (IsSecondOfDoubleClick(press)) {
    LetGo(press, warnings);
    lastClick_->time = 0;
    Last()->action = Action::DoubleClick;
    return listener_.stepChanged(next_ - 1, *Last(), warnings);
  }
  FinishEntry();
  const auto captured = Capture(press.at);
  if (asked_ && captured) {
    watch_.Swallow(press);
    return AddAsked(*captured);
  }
  LetGo(press, warnings);
  if (!captured) {
    return listener_.told("there was no element where was clicked: the click is no step");
  }
  warnings.insert(warnings.begin(), captured->warnings.begin(), captured->warnings.end());
  Add(*captured, Action::Click, {}, warnings);
  lastClick_ = {press.at, press.time};
  if (captured->field) {
    BeginEntry(*captured);
  }
}

bool Recorder::IsSecondOfDoubleClick(const world::UserInput& press) const {
  return lastClick_ && (!entry_ || !entry_->IsBegun()) && press.time - lastClick_->time <= doubleClick_.milliseconds &&
         2 * std::abs(press.at.x - lastClick_->at.x) <= doubleClick_.width &&
         2 * std::abs(press.at.y - lastClick_->at.y) <= doubleClick_.height;
}

void Recorder::LetGo(const world::UserInput& press, std::vector<std::string>& warnings) {
  if (watch_.LetGo(press)) {
    delays_.push_back(world::Now() - press.time);
    return;
  }
  warnings.emplace_back(
      "its window did not answer in time, and the click went on before the target was known: look "
      "whether it is the right one");
}

// What began it was taken for a click.
void Recorder::OnDrag() {
  if (lastClick_) {
    RemoveLast();
  }
  listener_.told("dragging cannot be recorded: what was just done is no step");
}

std::optional<Recorder::Captured> Recorder::Capture(world::Point point) {
  Captured captured;
  const auto window = world::WindowAt(point);
  if (!window || captureTargetAtPoint(&captured.target, point.x, point.y) != KORVANE_OK) {
    return std::nullopt;
  }
  const BestIdentification best = ChooseIdentification(captured.target, *window);
  captured.target = best.record;
  // It is another one each time, and nothing finds its element by it.
  captured.target.hwnd = nullptr;
  captured.label = best.label;
  captured.warnings = best.warnings;
  captured.window = IndexOf(*window);
  if (auto element = world::ElementUnder(point)) {
    captured.name = best.label.empty() ? Utf8(world::NameOf(*element)) : best.label;
    captured.control = world::WindowOf(*element);
    const int type = world::Described(*element).controlType;
    captured.name = captured.name.empty() ? NameOfType(type) : captured.name;
    if (HoldsText(type)) {
      captured.field = std::move(element);
    }
  }
  return captured;
}

// When the mouse has come to rest: on its way nobody looks, and each look costs the program under it some milliseconds.
void Recorder::FramePointedAt() {
  const world::Point at = world::Cursor();
  if (!outline_ || at.x != pointed_.x || at.y != pointed_.y) {
    pointed_ = at;
    restsSince_ = world::Now();
    if (outline_) {
      outline_->Hide();
    }
    return;
  }
  if (!restsSince_ || world::Now() - *restsSince_ < kRestMs) {
    return;
  }
  restsSince_.reset();
  const auto window = world::WindowAt(at);
  if (!window || world::IsOurWindow(window->handle)) {
    return;
  }
  TargetRecord target{};
  auto element = world::ElementUnder(at);
  const auto rect = element ? world::RectOf(*element) : std::nullopt;
  if (!rect || captureTargetAtPoint(&target, at.x, at.y) != KORVANE_OK) {
    return;
  }
  const BestIdentification best = ChooseIdentification(target, *window);
  const auto colour = best.by == Identification::AutomationId ? world::OutlineColour::Green
                      : best.by == Identification::TreePath   ? world::OutlineColour::Yellow
                                                              : world::OutlineColour::Red;
  const world::Element described = world::Described(std::move(*element));
  const std::string name = best.label.empty() ? Utf8(world::NameOf(described)) : best.label;
  outline_->Show(*rect, colour,
                 Shortened(NameOfType(described.controlType) + (name.empty() ? "" : " " + name), kNameColumns));
}

void Recorder::AddAsked(const Captured& captured) {
  const Action action = *asked_;
  asked_.reset();
  const auto shown = ShownBy(captured.target, handles_[captured.window]);
  if (!shown || (shown->empty() && action != Action::Read)) {
    return listener_.told("it shows no text: there is nothing to check, wait for or read");
  }
  const std::string text = action == Action::Read ? NextVariable("VALUE_") : Literal(*shown);
  Add(captured, action, text, captured.warnings);
  if (action == Action::Read) {
    listener_.told(text + " = \"" + Shortened(*shown, kNameColumns) + "\"");
  }
}

// ---- The keyboard ----

void Recorder::OnKey(const world::UserInput& key) {
  const auto focus = FocusAfterClick();
  if (!focus || focus->window != key.window) {
    // The key has closed its window already.
    FinishEntry();
    return AddShortcut(key);
  }
  if (!entry_ || entry_->Control() != focus->control) {
    FollowFocus();
  }
  if (entry_ && key.key == world::KeyChord{kEnter, {}} && entry_->TakesEnter()) {
    return;
  }
  if (entry_ && EditsText(key)) {
    return entry_->Add(key);
  }
  FinishEntry();
  AddShortcut(key);
}

void Recorder::AddShortcut(const world::UserInput& key) {
  const auto window = front_ && front_->handle == key.window ? front_ : world::Describe(key.window);
  const auto name = NameOfShortcut(world::CodesOf(key.key));
  if (!window || !name) {
    return listener_.told(name ? *name + " was pressed in a window that had gone before it was known: it is no step"
                               : "a key without a name was pressed: it is no step");
  }
  Step step;
  step.action = Action::Shortcut;
  step.text = *name;
  step.window = IndexOf(*window);
  Insert(std::move(step), nullptr, {});
}

// A program that has just been clicked may not have got to it, while the next keys are here already.
std::optional<world::KeyboardFocus> Recorder::FocusAfterClick() const {
  auto focus = world::FindKeyboardFocus();
  const bool clicked = lastClick_ && entry_;
  for (const double end = world::Now() + kFocusMs;
       clicked && focus && focus->control != entry_->Control() && world::Now() < end;
       focus = world::FindKeyboardFocus()) {
    delay(kLookAgainMs);
  }
  return focus;
}

void Recorder::Idle() {
  if (paused_) {
    return;
  }
  LookAtFront();
  FramePointedAt();
  const auto focus = world::FindKeyboardFocus();
  if (entry_ && focus && focus->control == entry_->Control()) {
    return entry_->Look();
  }
  if (!entry_ || !lastClick_ || world::Now() - lastClick_->time > kFocusMs + world::InputWatch::kLongestHoldMs) {
    FollowFocus();
  }
}

// A window that a key closes cannot be described after it.
void Recorder::LookAtFront() {
  const HWND front = world::ForegroundWindow();
  if (!front_ || front_->handle != front) {
    front_ = world::Describe(front);
  }
}

// What a field holds is known before the first key goes there.
void Recorder::FollowFocus() {
  FinishEntry();
  const auto focus = world::FindKeyboardFocus();
  if (!focus || focus->control == followed_) {
    return;
  }
  followed_ = focus->control;
  const world::Point middle{(focus->rect.left + focus->rect.right) / 2, (focus->rect.top + focus->rect.bottom) / 2};
  auto element = world::ElementUnder(middle);
  if (!element || !HoldsText(world::Described(*element).controlType)) {
    return;
  }
  if (auto captured = Capture(middle); captured && captured->field) {
    captured->control = focus->control;
    BeginEntry(std::move(*captured));
  }
}

void Recorder::BeginEntry(Captured field) {
  followed_ = field.control;
  entry_.emplace(*field.field, field.control, world::HidesText(field.control));
  field_ = std::move(field);
}

void Recorder::FinishEntry() {
  if (!entry_) {
    return;
  }
  const TextEntry::Result entered = entry_->Finish();
  entry_.reset();
  followed_ = nullptr;
  if (entered.how != TextEntry::How::Nothing) {
    AddEntered(entered);
  } else if (!entered.doubt.empty()) {
    listener_.told(entered.doubt);
  }
  field_.reset();
}

void Recorder::AddEntered(const TextEntry::Result& entered) {
  const HWND control = field_->control;
  std::vector<std::string> warnings = field_->warnings;
  if (!entered.doubt.empty()) {
    warnings.push_back(entered.doubt);
  }
  // The step clicks its field by itself, and holds all of its text.
  while (control != nullptr && !fields_.empty() && fields_.back() == control) {
    EraseLast();
  }
  const bool secret = entered.how == TextEntry::How::Secret;
  const bool typed = entered.how == TextEntry::How::Type;
  Add(*field_, typed ? Action::Type : Action::Paste,
      secret ? "${" + NextVariable("SECRET_") + "}" : Literal(entered.text), warnings);
}

// ---- The recording ----

void Recorder::Obey(RecorderCommand command) {
  FinishEntry();
  switch (command) {
    case RecorderCommand::CheckNext:
      asked_ = Action::Check;
      return listener_.told("the next click says what is checked, and does nothing else");
    case RecorderCommand::WaitNext:
      asked_ = Action::Wait;
      return listener_.told("the next click says what is waited for, and does nothing else");
    case RecorderCommand::ReadNext:
      asked_ = Action::Read;
      return listener_.told("the next click says what is read, and does nothing else");
    case RecorderCommand::Undo:
      return next_ > first_ ? RemoveLast() : listener_.told("there is no step to take back");
    case RecorderCommand::Pause:
      paused_ = !paused_;
      return listener_.told(paused_ ? "paused: nothing is recorded" : "recording again");
    case RecorderCommand::End:
      ended_ = true;
      break;
  }
}

void Recorder::Add(const Captured& captured, Action action, const std::string& text,
                   const std::vector<std::string>& warnings) {
  Step step;
  step.name = Shortened(captured.name, kNameColumns);
  step.action = action;
  step.text = text;
  step.match = Match::Equals;
  step.replace = action == Action::Paste;
  step.window = captured.window;
  step.hasTarget = true;
  step.target = captured.target;
  step.label = captured.label;
  const bool acts = action == Action::Click || action == Action::Paste || action == Action::Type;
  Insert(std::move(step), acts && captured.field ? captured.control : nullptr, warnings);
}

void Recorder::Insert(Step step, HWND field, const std::vector<std::string>& warnings) {
  lastClick_.reset();
  recording_.steps.insert(recording_.steps.begin() + static_cast<std::ptrdiff_t>(next_), std::move(step));
  ++next_;
  fields_.push_back(field);
  listener_.stepChanged(next_ - 1, *Last(), warnings);
}

void Recorder::EraseLast() {
  lastClick_.reset();
  fields_.pop_back();
  --next_;
  recording_.steps.erase(recording_.steps.begin() + static_cast<std::ptrdiff_t>(next_));
}

void Recorder::RemoveLast() {
  EraseLast();
  listener_.stepRemoved(next_);
}

Step* Recorder::Last() {
  return &recording_.steps[next_ - 1];
}

std::string Recorder::NextVariable(const std::string& prefix) const {
  const auto isTaken = [&](const std::string& name) {
    return std::any_of(recording_.steps.begin(), recording_.steps.end(), [&](const Step& step) {
      return step.text == name || step.text.find("${" + name + "}") != std::string::npos;
    });
  };
  for (int number = 1;; ++number) {
    if (std::string name = prefix + std::to_string(number); !isTaken(name)) {
      return name;
    }
  }
}

std::size_t Recorder::IndexOf(const world::Window& window) {
  const WindowName name = NameOf(window);
  for (std::size_t i = 0; i < handles_.size(); ++i) {
    const WindowName& known = recording_.windows[i];
    // A window of the recording that goes on is known by its name only.
    if (handles_[i] == window.handle || (handles_[i] == nullptr && known.title == name.title &&
                                         known.className == name.className && known.process == name.process)) {
      handles_[i] = window.handle;
      return i;
    }
  }
  handles_.push_back(window.handle);
  recording_.windows.push_back(name);
  recording_.screen = world::TheScreen();
  return handles_.size() - 1;
}

}  // namespace host
