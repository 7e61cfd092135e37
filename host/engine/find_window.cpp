#include "host/engine/find_window.h"

#include <algorithm>

#include "host/base/text.h"

namespace host {

namespace {

bool Fits(const std::string& wanted, const std::string& there) {
  return wanted.empty() || EqualsIgnoringCase(wanted, there);
}

}  // namespace

std::optional<world::Window> FindWindow(const WindowName& name) {
  std::vector<world::Window> candidates = world::Windows();
  std::erase_if(candidates, [&](const world::Window& window) {
    return !Fits(name.className, window.className) || !Fits(name.process, window.process);
  });
  const auto exact = std::find_if(candidates.begin(), candidates.end(), [&](const world::Window& window) {
    return name.title.empty() || name.title == window.title;
  });
  if (exact != candidates.end()) {
    return *exact;
  }
  // Titles change with what is open in a window. Without class or program nothing would be left to know it by.
  const bool known = !name.className.empty() && !name.process.empty();
  return known && candidates.size() == 1 ? std::optional(candidates.front()) : std::nullopt;
}

std::optional<world::Window> AwaitWindow(const WindowName& name, int timeoutMs, const std::function<bool()>& stop) {
  constexpr int kPauseMs = 50;
  const double end = world::Now() + timeoutMs;
  for (;;) {
    if (auto window = FindWindow(name)) {
      return window;
    }
    if (world::Now() >= end || stop()) {
      return std::nullopt;
    }
    delay(kPauseMs);
  }
}

WindowName NameOf(const world::Window& window) {
  return {window.title, window.className, window.process, window.rect};
}

std::string Describe(const WindowName& name) {
  std::string text = "\"" + Shortened(name.title, kNameColumns) + "\"";
  text += name.process.empty() ? "" : " of " + Shortened(name.process, kNameColumns);
  return name.className.empty() ? text : text + " (class " + Shortened(name.className, kNameColumns) + ")";
}

}  // namespace host
