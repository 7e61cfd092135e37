// The ways to end a program from outside: Ctrl+C, a signal to terminate, the closing of its console.
#pragma once

namespace host::world {

// While it lives, the first of these does not end the program, which is to come to an end by itself; a second one does.
// One at a time.
class InterruptionWatch {
 public:
  InterruptionWatch();
  InterruptionWatch(const InterruptionWatch&) = delete;
  InterruptionWatch& operator=(const InterruptionWatch&) = delete;
  ~InterruptionWatch();
};

// Whether one of them has come since the watch began.
bool IsInterrupted();

}  // namespace host::world
