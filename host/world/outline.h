// A frame on the screen around what somebody points at. It takes no clicks, and no hit test finds it.
#pragma once

#include <memory>
#include <string>

#include "host/world/world.h"

namespace host::world {

// How well what is framed can be found again.
enum class OutlineColour { Green, Yellow, Red };

class Outline {
 public:
  Outline();
  ~Outline();
  Outline(const Outline&) = delete;
  Outline& operator=(const Outline&) = delete;

  // Around `rect`, with a line of text above it. A desktop that cannot show it does nothing.
  void Show(const Rect& rect, OutlineColour colour, const std::string& text);
  void Hide();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Whether the window is this program's, or that of its terminal.
bool IsOurWindow(HWND window);

}  // namespace host::world
