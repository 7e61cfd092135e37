#include "host/world/user_input.h"

#include <algorithm>

namespace host::world {

namespace {

constexpr int kShift = 0x10;
constexpr int kControl = 0x11;
constexpr int kAlt = 0x12;
constexpr int kWindows = 0x5B;

}  // namespace

KeyChord ChordOf(const std::vector<int>& codes) {
  const auto holds = [&](int code) { return std::find(codes.begin(), codes.end() - 1, code) != codes.end() - 1; };
  return {codes.back(), {holds(kControl), holds(kShift), holds(kAlt), holds(kWindows)}};
}

std::vector<int> CodesOf(const KeyChord& chord) {
  std::vector<int> codes;
  const auto add = [&](bool held, int code) { held ? codes.push_back(code) : void(); };
  add(chord.modifiers.control, kControl);
  add(chord.modifiers.shift, kShift);
  add(chord.modifiers.alt, kAlt);
  add(chord.modifiers.windows, kWindows);
  codes.push_back(chord.virtualKey);
  return codes;
}

}  // namespace host::world
