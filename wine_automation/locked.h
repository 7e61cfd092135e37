// Holds a lock of the platform for a scope.
#pragma once

#include "platform/uia.h"

namespace wine_automation {

class Locked {
 public:
  explicit Locked(SRWLOCK& lock) : lock_(lock) {
    AcquireSRWLockExclusive(&lock_);
  }
  ~Locked() {
    ReleaseSRWLockExclusive(&lock_);
  }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  SRWLOCK& lock_;
};

}  // namespace wine_automation
