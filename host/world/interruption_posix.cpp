#include <csignal>

#include "host/world/interruption.h"

namespace host::world {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_interrupted = 0;

void Note(int signal) {
  g_interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

InterruptionWatch::InterruptionWatch() {
  g_interrupted = 0;
  for (const int signal : kSignals) {
    // Whoever started the program may want it to outlive one of them.
    if (std::signal(signal, Note) == SIG_IGN) {
      std::signal(signal, SIG_IGN);
    }
  }
}

InterruptionWatch::~InterruptionWatch() {
  for (const int signal : kSignals) {
    if (std::signal(signal, SIG_DFL) == SIG_IGN) {
      std::signal(signal, SIG_IGN);
    }
  }
}

bool IsInterrupted() {
  return g_interrupted != 0;
}

}  // namespace host::world
