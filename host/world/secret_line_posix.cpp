#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <iostream>

#include "host/base/failure.h"
#include "host/world/interruption.h"
#include "host/world/secret_line.h"

namespace host::world {

namespace {

class Unseen {
 public:
  Unseen() {
    tcgetattr(STDIN_FILENO, &before_);
    termios unseen = before_;
    unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &unseen);
  }
  Unseen(const Unseen&) = delete;
  Unseen& operator=(const Unseen&) = delete;
  ~Unseen() {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    std::cerr << "\n" << std::flush;
  }

 private:
  termios before_{};
};

}  // namespace

std::optional<std::string> AskForSecret(const std::string& question) {
  if (isatty(STDIN_FILENO) == 0) {
    return std::nullopt;
  }
  // A signal that ended the program here would leave the terminal without echo.
  const InterruptionWatch watch;
  const Unseen unseen;
  std::cerr << question << std::flush;
  std::string line;
  for (;;) {
    // A signal may come just before the wait, which then does not end by it.
    constexpr int kSliceMs = 50;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    int ready = 0;
    while (ready == 0 && !IsInterrupted()) {
      ready = poll(&input, 1, kSliceMs);
    }
    char unit = 0;
    if (IsInterrupted() || read(STDIN_FILENO, &unit, 1) != 1) {
      throw Failure(ExitCode::Cancelled, "nothing was typed; nothing was done");
    }
    if (unit == '\n') {
      return line;
    }
    line += unit;
  }
}

}  // namespace host::world
