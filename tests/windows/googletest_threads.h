// GoogleTest waits with std::mutex and std::condition_variable, which the C++ runtime of the compiler for Windows lacks
// before its version 13. Read before everything else in its programs.
#pragma once

#include <mutex>

#ifndef _GLIBCXX_HAS_GTHREADS

// Types and functions of the platform as its own header declares them, without that header's macros.
extern "C" {
__declspec(dllimport) void __stdcall AcquireSRWLockExclusive(struct _RTL_SRWLOCK*);
__declspec(dllimport) void __stdcall ReleaseSRWLockExclusive(struct _RTL_SRWLOCK*);
__declspec(dllimport) void __stdcall Sleep(unsigned long);
}

namespace std {

class mutex {
 public:
  void lock() {
    AcquireSRWLockExclusive(reinterpret_cast<_RTL_SRWLOCK*>(&lock_));
  }
  void unlock() {
    ReleaseSRWLockExclusive(reinterpret_cast<_RTL_SRWLOCK*>(&lock_));
  }

 private:
  void* lock_ = nullptr;
};

class condition_variable {
 public:
  void notify_all() {}
  template <class Lock, class Condition>
  void wait(Lock& lock, Condition condition) {
    while (!condition()) {
      lock.unlock();
      Sleep(1);
      lock.lock();
    }
  }
};

}  // namespace std

#endif
