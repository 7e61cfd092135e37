// What a recording holds: windows by name, and steps that act on targets in them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/world/world.h"
#include "korvane/korvane.h"

namespace host {

enum class Action { Click, DoubleClick, Paste, Type, Shortcut, Wait, Check, Read };
enum class Match { Contains, Equals };

struct ActionWords {
  Action action;
  const char* word;       // in files and on the screen
  const char* textField;  // the field of its text in files; null: it has none
  bool needsTarget;
};
const ActionWords& WordsOf(Action action);
const std::vector<ActionWords>& AllActions();

// How a window is named, so that it is found again after a restart of its program.
struct WindowName {
  std::string title;
  std::string className;
  std::string process;
  world::Rect rect;  // where it was; zeros when that is not known
};

inline constexpr int kLongestTimeoutMs = 3600000;

struct Step {
  std::string name;
  Action action = Action::Click;
  // What to paste, type, wait or check for, with ${VARIABLE}s in it; the keys of a shortcut; the variable of a read.
  std::string text;
  Match match = Match::Contains;
  bool replace = false;    // paste and type: the field then holds exactly the text
  int timeoutMs = 0;       // 0: as the command line says
  std::size_t window = 0;  // index into the recording's windows
  bool hasTarget = false;
  TargetRecord target{};
  // What a button, a row and the like was called; tells apart elements that differ in nothing else. Empty: not
  // compared.
  std::string label;
};

struct Recording {
  std::optional<world::Screen> screen;  // that it was recorded on
  std::string start;                    // the command line of the program to start; empty: it has to be open
  std::vector<WindowName> windows;
  std::vector<Step> steps;
};

// `step 3 "Street"`, fit to be printed.
std::string NameOf(std::size_t index, const Step& step);
// "paste Street", as progress, logs and reports call it, with the whole name.
std::string Title(const Step& step);

}  // namespace host
