#include "host/world/press_hold.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace host::world {

std::uint64_t PressHold::Down(Point at, double now) {
  down_.reset();
  dropRelease_ = false;
  kept_.push_back({++presses_, at, now, std::nullopt});
  return presses_;
}

bool PressHold::Up(Point at) {
  if (!kept_.empty() && !kept_.back().releasedAt) {
    kept_.back().releasedAt = at;
    return true;
  }
  down_.reset();
  return std::exchange(dropRelease_, false);
}

bool PressHold::Move(Point at) {
  if (!kept_.empty()) {
    Kept& last = kept_.back();
    const bool begins = !last.releasedAt && !last.dragged && IsFar(last.at, at);
    last.dragged = last.dragged || begins;
    return begins;
  }
  if (!down_ || !IsFar(*down_, at)) {
    return false;
  }
  down_.reset();
  return true;
}

std::optional<std::uint64_t> PressHold::Due(double now, double mostMilliseconds) const {
  if (kept_.empty() || kept_.front().going) {
    return std::nullopt;
  }
  // A drag waits for nobody, and what was pressed before it has to go first.
  const bool due = kept_.back().dragged || now - kept_.front().since >= mostMilliseconds;
  return due ? std::optional(kept_.front().press) : std::nullopt;
}

bool PressHold::IsKept(std::uint64_t press) const {
  return std::any_of(kept_.begin(), kept_.end(), [&](const Kept& kept) { return kept.press == press; });
}

std::optional<Point> PressHold::BeginLettingGo(std::uint64_t press) {
  if (kept_.empty() || kept_.front().press != press || kept_.front().going) {
    return std::nullopt;
  }
  kept_.front().going = true;
  return kept_.front().at;
}

std::optional<Point> PressHold::EndLettingGo(std::uint64_t press) {
  if (kept_.empty() || kept_.front().press != press) {
    return std::nullopt;
  }
  const Kept gone = kept_.front();
  kept_.pop_front();
  if (!gone.releasedAt && !gone.dragged) {
    down_ = gone.at;
  }
  return gone.releasedAt;
}

bool PressHold::Drop(std::uint64_t press) {
  if (kept_.empty() || kept_.front().press != press || kept_.front().going) {
    return false;
  }
  dropRelease_ = !kept_.front().releasedAt;
  kept_.pop_front();
  return true;
}

bool PressHold::IsFar(Point from, Point to) const {
  return std::abs(to.x - from.x) > dragWidth_ || std::abs(to.y - from.y) > dragHeight_;
}

}  // namespace host::world
