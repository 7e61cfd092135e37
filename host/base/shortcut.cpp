#include "host/base/shortcut.h"

#include <algorithm>

#include "host/base/text.h"

namespace host {

namespace {

struct Key {
  const char* name;
  int code;
};
constexpr Key kModifiers[] = {{"Ctrl", 0x11}, {"Shift", 0x10}, {"Alt", 0x12}, {"Win", 0x5B}};
constexpr Key kKeys[] = {
    {"Backspace", 0x08}, {"Tab", 0x09},   {"Enter", 0x0D},  {"Escape", 0x1B}, {"Space", 0x20}, {"PageUp", 0x21},
    {"PageDown", 0x22},  {"End", 0x23},   {"Home", 0x24},   {"Left", 0x25},   {"Up", 0x26},    {"Right", 0x27},
    {"Down", 0x28},      {"Pause", 0x13}, {"Insert", 0x2D}, {"Delete", 0x2E}, {"Menu", 0x5D},  {"Plus", 0xBB},
    {"Comma", 0xBC},     {"Minus", 0xBD}, {"Period", 0xBE},
};

template <std::size_t size>
std::optional<int> CodeIn(const Key (&keys)[size], const std::string& name) {
  const auto* const known = std::find_if(std::begin(keys), std::end(keys),
                                         [&](const Key& key) { return EqualsIgnoringCase(key.name, name); });
  return known == std::end(keys) ? std::nullopt : std::optional(known->code);
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

std::optional<int> CodeOfKey(const std::string& name) {
  const std::string lower = Lower(name);
  if (lower.size() == 1 && (IsDigit(lower[0]) || (lower[0] >= 'a' && lower[0] <= 'z'))) {
    return IsDigit(lower[0]) ? lower[0] : lower[0] - 'a' + 'A';
  }
  if (lower.size() >= 2 && lower.size() <= 3 && lower[0] == 'f' &&
      std::all_of(lower.begin() + 1, lower.end(), IsDigit)) {
    const int number = std::stoi(lower.substr(1));
    return number >= 1 && number <= 24 && lower[1] != '0' ? std::optional(0x70 + number - 1) : std::nullopt;
  }
  return CodeIn(kKeys, name);
}

std::optional<std::string> NameOfKey(int code) {
  constexpr int kFirstFunctionKey = 0x70;
  constexpr int kLastFunctionKey = 0x87;
  if ((code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z')) {
    return std::string(1, static_cast<char>(code));
  }
  if (code >= kFirstFunctionKey && code <= kLastFunctionKey) {
    return "F" + std::to_string(code - kFirstFunctionKey + 1);
  }
  const auto* const known =
      std::find_if(std::begin(kKeys), std::end(kKeys), [code](const Key& key) { return key.code == code; });
  return known == std::end(kKeys) ? std::nullopt : std::optional<std::string>(known->name);
}

}  // namespace

std::optional<std::vector<int>> FindShortcut(const std::string& keys) {
  std::vector<int> codes;
  std::size_t begin = 0;
  for (auto plus = keys.find('+'); plus != std::string::npos; plus = keys.find('+', begin)) {
    const auto modifier = CodeIn(kModifiers, keys.substr(begin, plus - begin));
    if (!modifier || std::find(codes.begin(), codes.end(), *modifier) != codes.end()) {
      return std::nullopt;
    }
    codes.push_back(*modifier);
    begin = plus + 1;
  }
  const auto key = CodeOfKey(keys.substr(begin));
  if (!key) {
    return std::nullopt;
  }
  codes.push_back(*key);
  return codes;
}

std::optional<std::string> NameOfShortcut(const std::vector<int>& codes) {
  const auto key = codes.empty() ? std::nullopt : NameOfKey(codes.back());
  if (!key) {
    return std::nullopt;
  }
  std::string name;
  for (const Key& modifier : kModifiers) {
    if (std::find(codes.begin(), codes.end() - 1, modifier.code) != codes.end() - 1) {
      name += std::string(modifier.name) + "+";
    }
  }
  return name + *key;
}

std::string AllShortcuts() {
  std::string names;
  for (const Key& key : kModifiers) {
    names += std::string(key.name) + "+, ";
  }
  names += "A to Z, 0 to 9, F1 to F24";
  for (const Key& key : kKeys) {
    names += std::string(", ") + key.name;
  }
  return names;
}

}  // namespace host
