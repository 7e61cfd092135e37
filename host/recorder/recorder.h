// Makes steps of what a person does. Each step is identified while the screen is still as the person saw it, and each
// identification is tried at once.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/recorder/text_entry.h"
#include "host/recording/recording.h"
#include "host/world/keyboard_focus.h"
#include "host/world/outline.h"
#include "host/world/user_input.h"

namespace host {

// What a hotkey does while recording.
enum class RecorderCommand { CheckNext, WaitNext, ReadNext, Undo, Pause, End };

struct RecorderHotkey {
  RecorderCommand command = RecorderCommand::End;
  world::KeyChord chord;
};

// What is told while recording.
struct RecorderListener {
  // A step is there, or was changed by what was done next.
  std::function<void(std::size_t index, const Step& step, const std::vector<std::string>& warnings)> stepChanged;
  std::function<void(std::size_t left)> stepRemoved;
  // What happened that is no step, in a sentence.
  std::function<void(const std::string& line)> told;
};

class Recorder {
 public:
  // Puts its steps behind the first `after` ones of the recording. Failure: NotHere, when nobody can be watched.
  // `outlines`: what is pointed at is framed on the screen.
  Recorder(Recording recording, std::size_t after, std::vector<RecorderHotkey> hotkeys, bool outlines,
           RecorderListener listener);

  // Until the end's hotkey, or until `stop` says so, which is asked several times a second.
  void Run(const std::function<bool()>& stop);
  const Recording& Result() const {
    return recording_;
  }
  // How long each click was kept from its program, in milliseconds.
  const std::vector<double>& Delays() const {
    return delays_;
  }

 private:
  struct Captured {
    TargetRecord target{};
    std::string label;
    std::string name;
    std::size_t window = 0;
    HWND control = nullptr;               // null: it has no window of its own
    std::optional<world::Element> field;  // when it is one for texts
    std::vector<std::string> warnings;
  };
  struct LastClick {
    world::Point at;
    double time = 0;
  };

  void Handle(const world::UserInput& input);
  void OnPress(const world::UserInput& press);
  void OnDrag();
  void OnKey(const world::UserInput& key);
  void Obey(RecorderCommand command);
  void Idle();
  bool IsSecondOfDoubleClick(const world::UserInput& press) const;
  std::optional<Captured> Capture(world::Point point);
  void LetGo(const world::UserInput& press, std::vector<std::string>& warnings);
  void AddAsked(const Captured& captured);
  std::optional<world::KeyboardFocus> FocusAfterClick() const;
  void FollowFocus();
  void BeginEntry(Captured field);
  void FinishEntry();
  void AddShortcut(const world::UserInput& key);
  void LookAtFront();
  void FramePointedAt();
  void AddEntered(const TextEntry::Result& entered);
  void Add(const Captured& captured, Action action, const std::string& text, const std::vector<std::string>& warnings);
  void Insert(Step step, HWND field, const std::vector<std::string>& warnings);
  void EraseLast();
  void RemoveLast();
  Step* Last();
  std::string NextVariable(const std::string& prefix) const;
  std::size_t IndexOf(const world::Window& window);

  Recording recording_;
  std::size_t first_;  // of the steps that are recorded now
  std::size_t next_;   // where the next one goes
  std::vector<RecorderHotkey> hotkeys_;
  RecorderListener listener_;
  world::InputWatch watch_;
  world::DoubleClick doubleClick_ = world::DoubleClickOfSystem();
  std::vector<HWND> handles_;  // of the recording's windows; null: not seen yet
  std::optional<world::Outline> outline_;
  world::Point pointed_;              // where the mouse was when it was last looked at
  std::optional<double> restsSince_;  // nothing: what is there has been framed
  std::optional<Action> asked_;
  bool paused_ = false;
  bool ended_ = false;
  std::optional<LastClick> lastClick_;  // of the last step, when that is a click
  // For each step that is recorded now: the field that it only clicks, or puts a text into.
  std::vector<HWND> fields_;
  std::optional<world::Window> front_;  // the window in front when it was last looked at
  HWND followed_ = nullptr;             // the control that had the focus when it was last looked at
  std::optional<Captured> field_;       // the one that has the focus
  std::optional<TextEntry> entry_;      // into it
  std::vector<double> delays_;
};

}  // namespace host
