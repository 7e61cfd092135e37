// The window that a recording names, found again.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "host/recording/recording.h"
#include "host/world/world.h"

namespace host {

// The first of these that is there: the window with that title, class and program; the only one with that class and
// program, whatever its title is now. What the name leaves empty is not compared.
std::optional<world::Window> FindWindow(const WindowName& name);
// Looks until it is there, the time is up or `stop` says so.
std::optional<world::Window> AwaitWindow(const WindowName& name, int timeoutMs, const std::function<bool()>& stop);

WindowName NameOf(const world::Window& window);
std::string Describe(const WindowName& name);

}  // namespace host
