// A lock that needs no construction and no destruction, so that loading and unloading have nothing to do for it.
#pragma once

#include "platform/platform.h"

#ifdef _WIN32

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

#else

#include <mutex>
using Mutex = std::mutex;

#endif
