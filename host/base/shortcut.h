// Key combinations by name.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

// The virtual-key codes of "Ctrl+Shift+S", in the order in which they are pressed; the names' case does not matter.
// Empty when there is no such combination.
std::optional<std::vector<int>> FindShortcut(const std::string& keys);
// The name of such codes, modifiers in the usual order; empty when a key has none.
std::optional<std::string> NameOfShortcut(const std::vector<int>& codes);
// What a combination can consist of, for messages.
std::string AllShortcuts();

}  // namespace host
