#include "util/cancel_monitor.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

#include "korvane/korvane.h"
#include "platform/mutex.h"
#include "platform/owners.h"
#include "platform/thread_start.h"

namespace korvane {
namespace {

constexpr DWORD kStopWaitMilliseconds = 300;

std::atomic<bool> g_cancelled{false};

// A monitor watches for as long as the turn it was started for lasts; raising the turn is the request to stop. With a
// plain flag, a start beside a stop could take the request back before the old thread had seen it.
std::atomic<std::uint32_t> g_turn{0};
// The last turn whose monitor has come into our code.
std::atomic<std::uint32_t> g_enteredTurn{0};

class StoppedMonitor;

// Guards what follows, and the order of its changes against the turn's. Never held while waiting for anything.
Mutex g_monitorMutex;
// The monitor that is known, owned by whoever takes it to stop it: loading and unloading have nothing to do for a plain
// handle.
HANDLE g_monitorThread = nullptr;
// Those that were told to stop and are waited for.
StoppedMonitor* g_stopped = nullptr;

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

// The turn that a thread which comes into our code is to watch for; none when its monitor was stopped meanwhile, or
// another thread watches already.
std::optional<std::uint32_t> EnterTurn() noexcept {
  const std::lock_guard guard(g_monitorMutex);
  const std::uint32_t turn = g_turn;
  if (g_monitorThread == nullptr || g_enteredTurn == turn) {
    return std::nullopt;
  }
  g_enteredTurn = turn;
  return turn;
}

// A monitor that was told to stop, for as long as it is waited for. Waits for an event rather than for the thread: a
// thread cannot end while somebody holds the loader's lock.
class StoppedMonitor {
 public:
  StoppedMonitor() noexcept : outOfOurCode_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    const std::lock_guard guard(g_monitorMutex);
    thread_ = KernelHandle(std::exchange(g_monitorThread, nullptr));
    if (thread_) {
      turn_ = g_turn++;
      entered_ = g_enteredTurn == turn_;
      next_ = std::exchange(g_stopped, this);
    }
  }
  ~StoppedMonitor() {
    const std::lock_guard guard(g_monitorMutex);
    Forget();
  }
  StoppedMonitor(const StoppedMonitor&) = delete;
  StoppedMonitor& operator=(const StoppedMonitor&) = delete;

  HANDLE Thread() const noexcept {
    return thread_.Get();
  }

  bool LeavesInTime() noexcept {
    if (!thread_) {
      return true;
    }
    const HANDLE sign = entered_ && outOfOurCode_ ? outOfOurCode_.Get() : thread_.Get();
    return WaitForSingleObject(sign, kStopWaitMilliseconds) == WAIT_OBJECT_0 || LeavesJustNow();
  }

  // The event that a thread sets when it leaves the code of its turn; none when nobody waits for that.
  static HANDLE Leave(std::uint32_t turn) noexcept {
    const std::lock_guard guard(g_monitorMutex);
    for (StoppedMonitor* stopped = g_stopped; stopped != nullptr; stopped = stopped->next_) {
      if (stopped->turn_ == turn) {
        stopped->leaving_ = true;
        return stopped->outOfOurCode_.Get();
      }
    }
    return nullptr;
  }

 private:
  // Whether it came to its last instructions just when the time was over. The event is not to be closed before them,
  // and they take no time to speak of.
  bool LeavesJustNow() noexcept {
    constexpr DWORD kLastInstructionsMilliseconds = 10;
    {
      const std::lock_guard guard(g_monitorMutex);
      if (!leaving_) {
        Forget();
        return false;
      }
    }
    return WaitForSingleObject(outOfOurCode_.Get(), kLastInstructionsMilliseconds) == WAIT_OBJECT_0;
  }

  void Forget() noexcept {
    for (StoppedMonitor** link = &g_stopped; *link != nullptr; link = &(*link)->next_) {
      if (*link == this) {
        *link = next_;
        return;
      }
    }
  }

  KernelHandle outOfOurCode_;
  KernelHandle thread_;
  std::uint32_t turn_ = 0;
  bool entered_ = false;
  bool leaving_ = false;
  StoppedMonitor* next_ = nullptr;
};

// What the monitor thread runs. The event that it answers is set when the thread is out of our code.
HANDLE WatchEscape() noexcept {
  const std::optional<std::uint32_t> turn = EnterTurn();
  if (!turn) {
    return nullptr;
  }
  WatchEscapeUntilTurnEnds(*turn);
  return StoppedMonitor::Leave(*turn);
}

bool MonitorIsKnown() noexcept {
  const std::lock_guard guard(g_monitorMutex);
  return g_monitorThread != nullptr;
}

// An unload waits for a monitor that is in our code, which a thread that has not come so far would make it do in vain:
// it needs the loader's lock to come.
void WaitUntilEntered(std::uint32_t turn) noexcept {
  constexpr int kTriesWithoutSleeping = 100;
  const DWORD start = GetTickCount();
  for (int tries = 0; g_enteredTurn != turn && g_turn == turn && GetTickCount() - start < kStopWaitMilliseconds;
       ++tries) {
    Sleep(tries < kTriesWithoutSleeping ? 0 : 1);
  }
}

// False when a monitor that was started meanwhile has to be stopped first.
bool StartIfNoneRuns() noexcept {
  std::uint32_t turn = 0;
  {
    const std::lock_guard guard(g_monitorMutex);
    if (g_monitorThread != nullptr) {
      return false;
    }
    g_cancelled.exchange(false);
    turn = ++g_turn;
    g_monitorThread = CreateThread(nullptr, 0, ThreadStart(WatchEscape), nullptr, 0, nullptr);
    if (g_monitorThread == nullptr) {
      return true;
    }
  }
  WaitUntilEntered(turn);
  return true;
}

}  // namespace

bool CancelRequested() noexcept {
  return g_cancelled;
}

void EndCancelMonitor() noexcept {
  if (!MonitorIsKnown()) {
    return;
  }
  StoppedMonitor monitor;
  if (!monitor.LeavesInTime()) {
    // It will end by itself, but until then our code must stay where it is: the library is not unloaded any more.
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<const WCHAR*>(&CancelRequested), &self);
  }
}

void EndCancelMonitorAtUnload() noexcept {
  if (!MonitorIsKnown()) {
    return;
  }
  StoppedMonitor monitor;
  if (!monitor.LeavesInTime()) {
    // It has not run at all for so long. Better no thread than one that wakes up where no code is left.
    TerminateThread(monitor.Thread(), 0);
    WaitForSingleObject(monitor.Thread(), kStopWaitMilliseconds);
  }
}

void BeginCancelMonitor() noexcept {
  do {
    EndCancelMonitor();
  } while (!StartIfNoneRuns());
}

}  // namespace korvane

void startCancelMonitor() noexcept {
  korvane::BeginCancelMonitor();
}

void stopCancelMonitor() noexcept {
  korvane::EndCancelMonitor();
}

int isCancelled() noexcept {
  return korvane::CancelRequested() ? 1 : 0;
}
