// Presses of the left button that are kept from the program under the mouse until they have been looked at: in which
// order what goes on, and what the button's releases and the mouse's moves mean meanwhile. Pure bookkeeping; who calls
// it sees to locks and sends what it says.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "host/world/world.h"

namespace host::world {

class PressHold {
 public:
  // A mouse further away than this with its button down is a drag.
  PressHold(int dragWidth, int dragHeight) : dragWidth_(dragWidth), dragHeight_(dragHeight) {}

  // The button went down; the press is kept. Names it.
  std::uint64_t Down(Point at, double now);
  // The button went up. True: its press is still kept, and so is this.
  bool Up(Point at);
  // The mouse was moved. True: this turns the last press into a drag, which is told once.
  bool Move(Point at);

  // The first press that is kept, when it is a drag or has been kept for longer than `mostMilliseconds`.
  std::optional<std::uint64_t> Due(double now, double mostMilliseconds) const;
  bool IsKept(std::uint64_t press) const;

  // The press may go: where to. Nothing: it is not the first one kept, or is going already.
  std::optional<Point> BeginLettingGo(std::uint64_t press);
  // Its program has it. Where the button went up meanwhile, which is to follow; nothing: it is still down.
  std::optional<Point> EndLettingGo(std::uint64_t press);
  // Nobody gets the press, nor its release. False: it is not kept any more.
  bool Drop(std::uint64_t press);

 private:
  struct Kept {
    std::uint64_t press;
    Point at;
    double since;
    std::optional<Point> releasedAt;
    bool dragged = false;
    bool going = false;
  };

  bool IsFar(Point from, Point to) const;

  const int dragWidth_;
  const int dragHeight_;
  std::uint64_t presses_ = 0;
  std::deque<Kept> kept_;
  std::optional<Point> down_;  // where a press went down that its program has, until it goes up or becomes a drag
  bool dropRelease_ = false;
};

}  // namespace host::world
