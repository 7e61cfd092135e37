// A lock that needs no construction and no destruction, so that loading and unloading have nothing to do for it.
#pragma once

#include "platform/platform.h"

#ifdef _WIN32

namespace korvane {

class Mutex {
 public:
  void lock() {
    AcquireSRWLockExclusive(&lock_);
  }
  void unlock() {
    ReleaseSRWLockExclusive(&lock_);
  }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};

}  // namespace korvane

#else

#include <mutex>

namespace korvane {

using Mutex = std::mutex;

}  // namespace korvane

#endif
