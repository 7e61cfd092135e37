// What a person does with mouse and keyboard in other programs, told while it happens, so that it can be recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/world/world.h"

namespace host::world {

struct Modifiers {
  bool control = false;
  bool shift = false;
  bool alt = false;
  bool windows = false;

  bool operator==(const Modifiers&) const = default;
};

// A key together with the modifiers that are down with it.
struct KeyChord {
  int virtualKey = 0;
  Modifiers modifiers;

  bool operator==(const KeyChord&) const = default;
};

// Virtual-key codes, the key last.
KeyChord ChordOf(const std::vector<int>& codes);
std::vector<int> CodesOf(const KeyChord& chord);

struct UserInput {
  enum class Kind {
    Press,        // the left button went down
    OtherPress,   // another button, or the wheel
    Drag,         // the mouse was moved away while the left button of the last Press was down
    Key,          // a key other than a modifier went down
    Hotkey,       // one of the watch's own keys, which no program receives
    Interrupted,  // the system had stopped telling; what was done meanwhile is not known
  };
  Kind kind = Kind::Press;
  double time = 0;         // on Now()
  Point at;                // of presses and drags
  std::uint64_t held = 0;  // of a Press: names it for LetGo and Swallow
  KeyChord key;            // of Key
  HWND window = nullptr;   // of Key: the one in front before the key; the key may close it
  std::string text;        // what the key types on the person's layout, in UTF-8; empty when nothing
  std::size_t hotkey = 0;  // index into the hotkeys that the watch was made with
};

// When the system takes two presses for a double click.
struct DoubleClick {
  double milliseconds = 500;
  int width = 4;
  int height = 4;
};

// Watches as long as it lives; there is one at a time. What this program and its terminal receive, and what programs
// send by themselves, is not told.
//
// A Press is told before the program under the mouse gets it, so that the screen is still as the person saw it. It
// waits there until LetGo or Swallow, kLongestHoldMs at most; everything else goes its way at once.
class InputWatch {
 public:
  static constexpr int kLongestHoldMs = 300;

  // Failure NotHere: this desktop does not tell what its user does.
  explicit InputWatch(const std::vector<KeyChord>& hotkeys);
  ~InputWatch();
  InputWatch(const InputWatch&) = delete;
  InputWatch& operator=(const InputWatch&) = delete;

  // The next input, waiting so long for it.
  std::optional<UserInput> Next(int timeoutMs);
  // The program under the mouse gets the press. False: it had it before, because it was held for too long.
  bool LetGo(const UserInput& press);
  // No program gets the press. False: one had it before.
  bool Swallow(const UserInput& press);

  struct State;

 private:
  std::unique_ptr<State> state_;
};

DoubleClick DoubleClickOfSystem();

// A key that an input method takes to make characters of.
inline constexpr int kKeyOfInputMethod = 0xE5;

}  // namespace host::world
