// Time, and the threads that share it. In virtual time one thread runs at a time; the others have their turn when it
// waits, in the order of their making, and the clock jumps to the next thing that is due when nobody can run.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "standin/desktop/state.h"

namespace standin {

namespace {

// Carries a thread out of its procedure when it is terminated.
struct ThreadTerminated {};

thread_local std::shared_ptr<Thread> t_self;
thread_local const Desktop::State* t_selfOwner = nullptr;

Nanoseconds MachineTime() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

[[noreturn]] void AbortBecauseNothingMoves(const Desktop::State& state) {
  std::fprintf(stderr, "stand-in desktop: every thread waits and nothing is scheduled\n");
  for (const auto& thread : state.threads) {
    std::fprintf(stderr, "  thread %u: %s\n", thread->id, thread->ended ? "ended" : thread->waitsFor.c_str());
  }
  std::abort();
}

bool CanRun(const Thread& thread, Nanoseconds now) {
  return !thread.ended &&
         (!thread.waiting || thread.terminated || thread.wakeAt <= now || (thread.ready && thread.ready()));
}

// The next thread that can run, beginning behind the given one; the given one comes last.
std::shared_ptr<Thread> NextToRun(const Desktop::State& state, const Thread* behind) {
  const auto& threads = state.threads;
  const auto at =
      std::find_if(threads.begin(), threads.end(), [&](const auto& thread) { return thread.get() == behind; });
  const auto start = static_cast<std::size_t>(at - threads.begin()) + 1;
  for (std::size_t i = 0; i < threads.size(); ++i) {
    const auto& candidate = threads[(start + i) % threads.size()];
    if (CanRun(*candidate, state.clock)) {
      return candidate;
    }
  }
  return nullptr;
}

// Lets the clock jump until a thread can run, and gives it the turn.
void PassTurn(Desktop::State& state, const Thread* from) {
  for (;;) {
    state.RunDueActions();
    if (auto next = NextToRun(state, from)) {
      state.running = std::move(next);
      state.changed.notify_all();
      return;
    }
    Nanoseconds due = kNever;
    for (const auto& thread : state.threads) {
      due = std::min(due, thread->ended ? kNever : thread->wakeAt);
    }
    for (const auto& action : state.scheduled) {
      due = std::min(due, action.at);
    }
    if (due == kNever) {
      AbortBecauseNothingMoves(state);
    }
    state.clock = std::max(state.clock, due);
  }
}

void RunThread(Desktop::State& state, const std::shared_ptr<Thread>& self) {
  t_self = self;
  t_selfOwner = &state;
  {
    std::unique_lock lock(state.mutex);
    state.changed.wait(lock, [&] { return !state.virtualTime || state.running == self; });
  }
  try {
    if (!self->terminated) {
      self->start(self->parameter);
    }
  } catch (const ThreadTerminated&) {
  }
  const std::lock_guard guard(state.mutex);
  self->ended = true;
  if (state.virtualTime && state.running == self) {
    PassTurn(state, self.get());
  }
  state.changed.notify_all();
}

}  // namespace

Nanoseconds Desktop::State::Now() const {
  return virtualTime ? clock : MachineTime() - realStart;
}

Thread& Desktop::State::Self() {
  const bool known =
      t_self && t_selfOwner == this && std::find(threads.begin(), threads.end(), t_self) != threads.end();
  if (!known) {
    t_self = std::make_shared<Thread>();
    t_selfOwner = this;
    t_self->id = nextThread++;
    threads.push_back(t_self);
    if (!running) {
      running = t_self;
    }
  }
  return *t_self;
}

bool Desktop::State::Wait(Nanoseconds deadline, std::function<bool()> ready, const char* waitsFor) {
  if (runningActions) {
    std::fprintf(stderr, "stand-in desktop: a scheduled action waits for %s\n", waitsFor);
    std::abort();
  }
  Thread& self = Self();
  const std::shared_ptr<Thread> keep = t_self;
  self.waiting = true;
  self.wakeAt = deadline;
  self.ready = ready;
  self.waitsFor = waitsFor;
  if (virtualTime) {
    PassTurn(*this, &self);
    changed.wait(mutex, [&] { return running == keep; });
  } else {
    for (;;) {
      RunDueActions();
      const Nanoseconds now = Now();
      if (self.terminated || (ready && ready()) || now >= deadline) {
        break;
      }
      Nanoseconds next = deadline;
      for (const auto& action : scheduled) {
        next = std::min(next, action.at);
      }
      // A bound, so that readiness that nobody announces is seen as well.
      constexpr Nanoseconds kLongestNap = 20'000'000;
      changed.wait_for(mutex, std::chrono::nanoseconds(std::clamp<Nanoseconds>(next - now, 0, kLongestNap)));
    }
  }
  self.waiting = false;
  self.wakeAt = kNever;
  self.ready = nullptr;
  if (self.terminated) {
    throw ThreadTerminated{};
  }
  return ready && ready();
}

// Time that passes inside a call: everything due happens, but no other thread has its turn.
void Desktop::State::MoveClock(Nanoseconds duration) {
  if (!virtualTime) {
    const Nanoseconds until = MachineTime() + duration;
    while (MachineTime() < until) {
    }
    return;
  }
  clock += duration;
  RunDueActions();
}

void Desktop::State::RunDueActions() {
  if (runningActions) {
    return;
  }
  runningActions = true;
  for (;;) {
    const auto next = std::min_element(scheduled.begin(), scheduled.end(), [](const auto& a, const auto& b) {
      return a.at != b.at ? a.at < b.at : a.order < b.order;
    });
    if (next == scheduled.end() || next->at > Now()) {
      break;
    }
    const auto run = std::move(next->run);
    scheduled.erase(next);
    run();
  }
  runningActions = false;
}

void Desktop::State::Schedule(Nanoseconds at, std::function<void()> run) {
  scheduled.push_back({at, scheduledCount++, std::move(run)});
  changed.notify_all();
}

void Desktop::State::StartThread(const std::shared_ptr<Thread>& thread) {
  Self();
  thread->id = nextThread++;
  threads.push_back(thread);
  thread->runner = std::thread([this, thread] { RunThread(*this, thread); });
}

// ---- Scripting ----

void Desktop::UseVirtualTime() {
  const std::lock_guard guard(state_->mutex);
  state_->clock = state_->Now();
  state_->virtualTime = true;
  // The caller goes on, and the host's other threads, which real time allowed, have no turns any more.
  state_->Self();
  std::erase_if(state_->threads, [](const auto& thread) { return thread->start == nullptr && thread != t_self; });
  state_->running = t_self;
}

void Desktop::UseRealTime() {
  const std::lock_guard guard(state_->mutex);
  state_->realStart = MachineTime() - state_->Now();
  state_->virtualTime = false;
  state_->changed.notify_all();
}

double Desktop::Now() const {
  const std::lock_guard guard(state_->mutex);
  return static_cast<double>(state_->Now()) / kNanosecondsPerMillisecond;
}

void Desktop::Advance(double milliseconds) {
  std::unique_lock lock(state_->mutex);
  state_->Wait(state_->Now() + FromMilliseconds(milliseconds), nullptr, "Advance");
}

void Desktop::After(double milliseconds, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  state_->Schedule(state_->Now() + FromMilliseconds(milliseconds), std::move(action));
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

void Sleep(DWORD milliseconds) {
  STANDIN_COUNTED_CALL(Sleep);
  call->Note("Sleep", std::to_string(milliseconds));
  call->Wait(call->Now() + FromMilliseconds(milliseconds), nullptr, "Sleep");
}

DWORD GetTickCount() {
  STANDIN_COUNTED_CALL(GetTickCount);
  return static_cast<DWORD>(call->Now() / 1'000'000 + call->tickOffset);
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* count) {
  STANDIN_COUNTED_CALL(QueryPerformanceCounter);
  count->QuadPart = call->Now() / 100;
  return TRUE;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  STANDIN_COUNTED_CALL(QueryPerformanceFrequency);
  frequency->QuadPart = 10'000'000;
  return TRUE;
}

DWORD GetCurrentThreadId() {
  STANDIN_COUNTED_CALL(GetCurrentThreadId);
  return call->Self().id;
}

HANDLE CreateThread(void* /*security*/, SIZE_T /*stackSize*/, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                    DWORD /*flags*/, DWORD* threadId) {
  STANDIN_CALL(CreateThread);
  if (call.Fails()) {
    return nullptr;
  }
  const auto thread = std::make_shared<Thread>();
  thread->start = start;
  thread->parameter = parameter;
  thread->handles = 1;
  call->StartThread(thread);
  if (threadId != nullptr) {
    *threadId = thread->id;
  }
  const auto handle = reinterpret_cast<HANDLE>(call->nextHandle += 4);
  call->handles[handle] = {.kind = KernelObject::Kind::Thread, .thread = thread};
  call->Give(handle, "handle of a thread");
  return handle;
}

BOOL TerminateThread(HANDLE thread, DWORD /*exitCode*/) {
  STANDIN_CALL(TerminateThread);
  if (call.Fails()) {
    return FALSE;
  }
  const auto entry = call->handles.find(thread);
  if (entry == call->handles.end() || !entry->second.thread) {
    return FALSE;
  }
  entry->second.thread->terminated = true;
  call->changed.notify_all();
  return TRUE;
}

HANDLE CreateEventW(void* /*security*/, BOOL /*manualReset*/, BOOL initiallySet, const WCHAR* /*name*/) {
  STANDIN_CALL(CreateEventW);
  if (call.Fails()) {
    return nullptr;
  }
  const auto handle = reinterpret_cast<HANDLE>(call->nextHandle += 4);
  KernelObject event{.kind = KernelObject::Kind::Event};
  event.set = std::make_shared<bool>(initiallySet != FALSE);
  call->handles[handle] = std::move(event);
  call->Give(handle, "handle of an event");
  return handle;
}

BOOL SetEvent(HANDLE event) {
  STANDIN_CALL(SetEvent);
  const auto entry = call->handles.find(event);
  if (call.Fails() || entry == call->handles.end() || !entry->second.set) {
    return FALSE;
  }
  *entry->second.set = true;
  call->changed.notify_all();
  return TRUE;
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  STANDIN_CALL(WaitForSingleObject);
  constexpr DWORD kWaitFailed = 0xFFFFFFFF;
  const auto entry = call->handles.find(object);
  if (call.Fails() || entry == call->handles.end() || (!entry->second.thread && !entry->second.set)) {
    return kWaitFailed;
  }
  const auto happened = [thread = entry->second.thread, event = entry->second.set] {
    return event ? *event : thread->ended;
  };
  const Nanoseconds deadline = milliseconds == INFINITE ? kNever : call->Now() + FromMilliseconds(milliseconds);
  return call->Wait(deadline, happened, "a thread or an event") ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

}  // extern "C"
