// Whole elapsed milliseconds on the platform's monotonic clock, truncated.
#pragma once

#include "platform/platform.h"

namespace korvane {

class Stopwatch {
 public:
  Stopwatch() : start_(Count()) {}

  LONGLONG Milliseconds() const {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart > 0 ? (Count() - start_) * 1000 / frequency.QuadPart : 0;
  }

 private:
  static LONGLONG Count() {
    LARGE_INTEGER count{};
    QueryPerformanceCounter(&count);
    return count.QuadPart;
  }

  LONGLONG start_;
};

}  // namespace korvane
