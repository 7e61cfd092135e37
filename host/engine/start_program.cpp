#include "host/engine/start_program.h"

#include "host/base/failure.h"
#include "host/engine/await.h"
#include "host/engine/find_window.h"
#include "host/world/program.h"

namespace host {

bool StartIfNeeded(const Recording& recording, int timeoutMs) {
  if (recording.start.empty() || FindWindow(recording.windows.front())) {
    return false;
  }
  world::StartProgram(recording.start);
  if (!AwaitWindow(recording.windows.front(), timeoutMs, IsCancelled)) {
    throw Failure(IsCancelled() ? ExitCode::Cancelled : ExitCode::NoWindow,
                  recording.start + " was started, but its window " + Describe(recording.windows.front()) +
                      " did not come within " + std::to_string(timeoutMs) + " ms");
  }
  return true;
}

bool CloseStarted(const Recording& recording, int timeoutMs) {
  if (const auto window = FindWindow(recording.windows.front())) {
    world::AskToClose(window->handle);
  }
  return Await(timeoutMs, [&] { return !FindWindow(recording.windows.front()); });
}

}  // namespace host
