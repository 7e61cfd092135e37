#include "util/cancel_monitor.h"

#include <atomic>
#include <cstdint>
#include <mutex>

#include "korvane/korvane.h"
#include "platform/mutex.h"
#include "platform/owners.h"
#include "platform/thread_start.h"

namespace {

constexpr DWORD kStopWaitMilliseconds = 300;

std::atomic<bool> g_cancelled{false};
// Set by the monitor when it is out of our code, while the library is being unloaded.
std::atomic<HANDLE> g_outOfOurCode{nullptr};

// Guards the handle, and the order of its changes against the turn's. Never held while waiting for a monitor to end.
Mutex g_monitorMutex;
HANDLE g_monitorThread = nullptr;

// A monitor runs for as long as the turn it began in lasts; raising the turn is the request to stop. With a plain flag,
// a start beside a stop could take the request back before the old thread had seen it.
std::atomic<std::uint32_t> g_turn{0};
std::atomic<std::uint32_t> g_enteredTurn{0};

bool EscapeIsDown() noexcept {
  return GetAsyncKeyState(VK_ESCAPE) < 0;
}

void WatchEscapeUntilTurnEnds(std::uint32_t turn) noexcept {
  constexpr DWORD kPollMilliseconds = 10;
  constexpr DWORD kHeldPollMilliseconds = 50;
  while (g_turn == turn) {
    if (EscapeIsDown() && !g_cancelled) {
      g_cancelled.exchange(true);
      do {
        if (g_turn != turn) {
          break;
        }
        Sleep(kHeldPollMilliseconds);
      } while (EscapeIsDown());
    }
    Sleep(kPollMilliseconds);
  }
}

KernelHandle TakeMonitor() noexcept {
  const std::lock_guard guard(g_monitorMutex);
  KernelHandle thread(g_monitorThread);
  if (thread) {
    g_monitorThread = nullptr;
    ++g_turn;
  }
  return thread;
}

bool HappensInTime(HANDLE object) noexcept {
  return WaitForSingleObject(object, kStopWaitMilliseconds) == WAIT_OBJECT_0;
}

// Waits until the new thread is in our code: a thread that has not come so far needs the loader's lock to do so, and an
// unload at once after the start could not wait for it.
void WaitUntilEntered(std::uint32_t turn) noexcept {
  const DWORD start = GetTickCount();
  while (g_enteredTurn != turn && GetTickCount() - start < kStopWaitMilliseconds) {
    Sleep(0);
  }
}

// False when a monitor that was started meanwhile has to be stopped first.
bool StartIfNoneRuns() noexcept {
  const std::lock_guard guard(g_monitorMutex);
  if (g_monitorThread != nullptr) {
    return false;
  }
  g_cancelled.exchange(false);
  const std::uint32_t turn = ++g_turn;
  const HANDLE thread = CreateThread(nullptr, 0, StartThreadBody, nullptr, 0, nullptr);
  if (thread != nullptr) {
    WaitUntilEntered(turn);
    g_monitorThread = thread;
  }
  return true;
}

}  // namespace

// What the monitor thread runs. An ordinary end needs the loader's lock, which an unloading thread holds while it
// waits, so that one waits for the event instead of the thread.
HANDLE ThreadBody(LPVOID /*parameter*/) {
  const std::uint32_t turn = g_turn;
  g_enteredTurn = turn;
  WatchEscapeUntilTurnEnds(turn);
  return g_outOfOurCode;
}

bool IsCancelled() noexcept {
  return g_cancelled;
}

void StopCancelMonitor() noexcept {
  const KernelHandle thread = TakeMonitor();
  if (thread && !HappensInTime(thread.Get())) {
    // It will end by itself, but until then our code must stay where it is: the library is not unloaded any more.
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<const WCHAR*>(&StartThreadBody), &self);
  }
}

void StopCancelMonitorAtUnload() noexcept {
  const KernelHandle outOfOurCode(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  g_outOfOurCode = outOfOurCode.Get();
  const KernelHandle thread = TakeMonitor();
  if (thread && !HappensInTime(outOfOurCode ? outOfOurCode.Get() : thread.Get())) {
    // It has not run at all for so long. Better no thread than one that wakes up where no code is left.
    TerminateThread(thread.Get(), 0);
  }
  g_outOfOurCode = nullptr;
}

void startCancelMonitor() noexcept {
  do {
    StopCancelMonitor();
  } while (!StartIfNoneRuns());
}

void stopCancelMonitor() noexcept {
  StopCancelMonitor();
}

int isCancelled() noexcept {
  return IsCancelled() ? 1 : 0;
}
