// Waiting for what comes in a moment, for as long as nobody cancels.
#pragma once

#include "host/world/world.h"

namespace host {

// With Escape, or from outside of the program.
bool IsCancelled();

// The code, or that of a cancellation.
int Cancelled(int otherwise);

// True as soon as it holds; false when the time is up or the replay was cancelled.
template <class Condition>
bool Await(int milliseconds, Condition condition) {
  const double end = world::Now() + milliseconds;
  for (;;) {
    if (condition()) {
      return true;
    }
    if (world::Now() >= end || IsCancelled()) {
      return false;
    }
    delay(10);
  }
}

}  // namespace host
