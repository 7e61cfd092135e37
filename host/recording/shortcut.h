// Key combinations by name: those that the library sends, and single keys.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace host {

// What sends it; the names' case does not matter. Empty when there is no such shortcut.
std::optional<std::function<int()>> FindShortcut(const std::string& keys);
std::string AllShortcuts();

}  // namespace host
