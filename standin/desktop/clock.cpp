// The clock. In virtual time only one thread runs. When it waits, the next thread that can run has its turn, in the
// order in which threads were made. When none can run, the clock jumps to the next time that something waits for.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "standin/desktop/state.h"

namespace standin {

namespace {

Nanoseconds MachineTime() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// A thread that has ended may still be running an action that was due at that moment.
bool IsGone(const Thread& thread) {
  return !thread.takesTurns || thread.terminated || (thread.ended && thread.waiting == nullptr);
}

[[noreturn]] void AbortBecauseNothingMoves(const State& state) {
  std::fprintf(stderr, "stand-in desktop: every thread waits and nothing is scheduled\n");
  for (const auto& thread : state.threads) {
    if (!IsGone(*thread)) {
      std::fprintf(stderr, "  thread %u waits for %s\n", thread->id,
                   thread->waiting == nullptr ? "its turn" : thread->waiting->what);
    }
  }
  std::abort();
}

void AbortIfForeign(const Thread& thread) {
  if (thread.takesTurns) {
    return;
  }
  std::fprintf(stderr, "stand-in desktop: a thread that CreateThread did not make waits for %s in virtual time\n",
               thread.waiting->what);
  std::abort();
}

bool CanRun(const Thread& thread, Nanoseconds now) {
  if (IsGone(thread)) {
    return false;
  }
  const Waiting* waiting = thread.waiting;
  return waiting == nullptr || waiting->until <= now || (waiting->ready && waiting->ready());
}

// The next thread that can run: first those after the given one, at last the given one itself.
Thread* NextToRun(const State& state, const Thread& behind) {
  const auto& threads = state.threads;
  const auto at =
      std::find_if(threads.begin(), threads.end(), [&](const auto& thread) { return thread.get() == &behind; });
  const auto start = static_cast<std::size_t>(at - threads.begin()) + 1;
  for (std::size_t i = 0; i < threads.size(); ++i) {
    Thread& candidate = *threads[(start + i) % threads.size()];
    if (CanRun(candidate, state.clock)) {
      return &candidate;
    }
  }
  return nullptr;
}

Nanoseconds NextDue(const State& state) {
  Nanoseconds due = kNever;
  for (const auto& thread : state.threads) {
    if (!IsGone(*thread) && thread->waiting != nullptr) {
      due = std::min(due, thread->waiting->until);
    }
  }
  for (const auto& action : state.scheduled) {
    due = std::min(due, action.at);
  }
  return due;
}

// The next two return false when the clock changed between virtual and real time while they waited.
bool WaitForTurn(State& state, const Thread& self) {
  AbortIfForeign(self);
  ModelMutex::Whole whole(state.mutex);
  state.changed.wait(whole, [&] { return state.running == &self || self.terminated || !state.virtualTime; });
  return state.virtualTime || self.terminated;
}

bool WaitInRealTime(State& state, const Thread& self) {
  // Not every change is announced by a notification, so a wait never lasts longer than this without a look.
  constexpr Nanoseconds kLongestNap = 20'000'000;
  const Waiting& waiting = *self.waiting;
  while (!state.virtualTime) {
    state.RunDueActions();
    const Nanoseconds now = state.Now();
    if (self.terminated || now >= waiting.until || (waiting.ready && waiting.ready())) {
      return true;
    }
    Nanoseconds next = waiting.until;
    if (!state.runningActions) {
      for (const auto& action : state.scheduled) {
        next = std::min(next, action.at);
      }
    }
    ModelMutex::Whole whole(state.mutex);
    state.changed.wait_for(whole, std::chrono::nanoseconds(std::clamp<Nanoseconds>(next - now, 0, kLongestNap)));
  }
  return false;
}

}  // namespace

Nanoseconds State::Now() const {
  return virtualTime ? clock : MachineTime() - realStart;
}

bool State::Wait(Nanoseconds deadline, const std::function<bool()>& ready, const char* what) {
  Thread& self = Self();
  const Waiting waiting{deadline, ready, what};
  // A scheduled action runs on a thread that is waiting, so a wait within it is the second one of that thread.
  const Waiting* const outer = std::exchange(self.waiting, &waiting);
  if (virtualTime) {
    AbortIfForeign(self);
    PassTurn(self);
  }
  while (!(virtualTime ? WaitForTurn(*this, self) : WaitInRealTime(*this, self))) {
  }
  self.waiting = outer;
  if (self.terminated) {
    EndSelf();
  }
  return ready && ready();
}

// Lets the clock jump until a thread can run, and gives it the turn.
void State::PassTurn(const Thread& from) {
  for (;;) {
    RunDueActions();
    if (Thread* const next = NextToRun(*this, from)) {
      running = next;
      changed.notify_all();
      return;
    }
    const Nanoseconds due = NextDue(*this);
    if (due == kNever) {
      AbortBecauseNothingMoves(*this);
    }
    clock = std::max(clock, due);
  }
}

// Time that passes inside a call: everything due happens, but no other thread has its turn.
void State::MoveClock(Nanoseconds duration) {
  if (virtualTime) {
    clock += duration;
    RunDueActions();
    return;
  }
  const CallOut out(*this, CallOut::To::Script);
  const Nanoseconds until = MachineTime() + duration;
  while (MachineTime() < until) {
  }
}

void State::Schedule(Nanoseconds at, std::function<void()> run) {
  scheduled.push_back({at, scheduledCount++, std::move(run)});
  changed.notify_all();
}

void State::RunDueActions() {
  // In real time two threads must not run scheduled actions at once.
  if (runningActions && !virtualTime) {
    return;
  }
  for (;;) {
    const auto next = std::min_element(scheduled.begin(), scheduled.end(), [](const auto& a, const auto& b) {
      return a.at != b.at ? a.at < b.at : a.order < b.order;
    });
    if (next == scheduled.end() || next->at > Now()) {
      return;
    }
    const auto run = std::move(next->run);
    scheduled.erase(next);
    const bool outer = std::exchange(runningActions, true);
    {
      const CallOut out(*this, CallOut::To::Script);
      run();
    }
    runningActions = outer;
  }
}

// ---- Scripting ----

void Clock::UseVirtualTime() {
  const std::lock_guard guard(state_->mutex);
  state_->clock = state_->Now();
  state_->virtualTime = true;
  Thread& self = state_->Self();
  self.takesTurns = true;
  state_->running = &self;
  state_->changed.notify_all();
}

void Clock::UseRealTime() {
  const std::lock_guard guard(state_->mutex);
  state_->realStart = MachineTime() - state_->Now();
  state_->virtualTime = false;
  state_->changed.notify_all();
}

double Clock::Now() const {
  const std::lock_guard guard(state_->mutex);
  return static_cast<double>(state_->Now()) / 1e6;
}

void Clock::Advance(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->Wait(state_->Now() + FromMilliseconds(milliseconds), nullptr, "Advance");
}

void Clock::After(double milliseconds, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  state_->Schedule(state_->Now() + FromMilliseconds(milliseconds), std::move(action));
}

void Clock::SetTickCount(DWORD ticks) {
  const std::lock_guard guard(state_->mutex);
  state_->tickOffset = std::int64_t{ticks} - state_->Now() / 1'000'000;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

void Sleep(DWORD milliseconds) {
  STANDIN_COUNTED_CALL(Sleep);
  call->Note("Sleep", milliseconds);
  call->Wait(milliseconds == INFINITE ? kNever : call->Now() + FromMilliseconds(milliseconds), nullptr, "Sleep");
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

}  // extern "C"
