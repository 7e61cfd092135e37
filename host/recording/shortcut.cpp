#include "host/recording/shortcut.h"

#include "host/base/text.h"
#include "korvane/korvane.h"

namespace host {

namespace {

struct Combination {
  const char* name;
  int (*send)();
};
constexpr Combination kCombinations[] = {
    {"Alt+A", sendAltA},          {"Alt+B", sendAltB},
    {"Alt+D", sendAltD},          {"Alt+E", sendAltE},
    {"Alt+P", sendAltP},          {"Alt+T", sendAltT},
    {"Alt+Z", sendAltZ},          {"Ctrl+A", sendCtrlA},
    {"Ctrl+Alt+N", sendCtrlAltN}, {"Ctrl+L", sendCtrlL},
    {"Ctrl+N", sendCtrlN},        {"Ctrl+Q", sendCtrlQ},
    {"Ctrl+S", sendCtrlS},        {"Ctrl+Shift+F3", sendCtrlShiftF3},
    {"Ctrl+V", sendCtrlV},        {"Shift+F2", sendShiftF2},
    {"Shift+F4", sendShiftF4},    {"Shift+Insert", sendShiftInsert},
};

struct Key {
  const char* name;
  int code;
};
constexpr Key kKeys[] = {
    {"Backspace", 0x08}, {"Tab", 0x09},    {"Enter", 0x0D},  {"Escape", 0x1B}, {"Space", 0x20}, {"PageUp", 0x21},
    {"PageDown", 0x22},  {"End", 0x23},    {"Home", 0x24},   {"Left", 0x25},   {"Up", 0x26},    {"Right", 0x27},
    {"Down", 0x28},      {"Insert", 0x2D}, {"Delete", 0x2E}, {"F1", 0x70},     {"F2", 0x71},    {"F3", 0x72},
    {"F4", 0x73},        {"F5", 0x74},     {"F6", 0x75},     {"F7", 0x76},     {"F8", 0x77},    {"F9", 0x78},
    {"F10", 0x79},       {"F11", 0x7A},    {"F12", 0x7B},
};

}  // namespace

std::optional<std::function<int()>> FindShortcut(const std::string& keys) {
  for (const Combination& combination : kCombinations) {
    if (EqualsIgnoringCase(keys, combination.name)) {
      return combination.send;
    }
  }
  for (const Key& key : kKeys) {
    if (EqualsIgnoringCase(keys, key.name)) {
      return [code = key.code] { return sendKey(code); };
    }
  }
  return std::nullopt;
}

std::string AllShortcuts() {
  std::string names;
  for (const Combination& combination : kCombinations) {
    names += std::string(combination.name) + ", ";
  }
  for (const Key& key : kKeys) {
    names += std::string(key.name) + ", ";
  }
  return names.substr(0, names.size() - 2);
}

}  // namespace host
