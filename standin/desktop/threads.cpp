// Threads made by CreateThread, which are real ones, and the others that call in.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "standin/desktop/state.h"

namespace standin {

namespace {

thread_local std::shared_ptr<Thread> t_self;

// A terminated thread jumps to the setjmp without unwinding: on Windows, too, no destructor runs in such a thread.
void RunProcedure(Thread& self) {
  if (setjmp(self.top) == 0) {
    self.start(self.parameter);
  }
}

void RunThread(State& state, const std::shared_ptr<Thread>& self) {
  t_self = self;
  bool begins = false;
  {
    const std::lock_guard guard(state.mutex);
    ModelMutex::Whole whole(state.mutex);
    state.changed.wait(whole, [&] { return !state.virtualTime || state.running == self.get() || self->terminated; });
    begins = !self->terminated;
    self->waiting = nullptr;
  }
  if (begins) {
    RunProcedure(*self);
  }
  const std::lock_guard guard(state.mutex);
  self->ended = true;
  if (state.virtualTime && state.running == self.get()) {
    state.PassTurn(*self);
  }
  self->over = true;
  state.changed.notify_all();
}

}  // namespace

Thread& State::Self() {
  if (!t_self || std::find(threads.begin(), threads.end(), t_self) == threads.end()) {
    t_self = std::make_shared<Thread>();
    t_self->id = nextThread++;
    threads.push_back(t_self);
  }
  return *t_self;
}

std::shared_ptr<Thread> State::FindThread(DWORD id) {
  const auto found =
      std::find_if(threads.begin(), threads.end(), [id](const auto& thread) { return thread->id == id; });
  return found == threads.end() ? nullptr : *found;
}

bool State::IsThread(DWORD id) {
  return FindThread(id) != nullptr || std::any_of(processes.begin(), processes.end(),
                                                  [id](const auto& process) { return process.second.uiThread == id; });
}

// Joins threads that have ended, whenever another one starts: in a long run each of them would keep a stack. A thread
// that left something behind is kept, so that the ledger can name it.
void State::ForgetThreadsThatAreOver() {
  std::erase_if(threads, [](const auto& thread) {
    if (!thread->over || thread->comInitializations != 0 || !thread->attachedTo.empty()) {
      return false;
    }
    thread->runner.join();
    return true;
  });
}

HANDLE State::StartThread(LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD* id) {
  ForgetThreadsThatAreOver();
  const auto thread = std::make_shared<Thread>();
  thread->id = nextThread++;
  thread->takesTurns = true;
  thread->start = start;
  thread->parameter = parameter;
  if (threadDelay > 0) {
    static const std::function<bool()> onlyTheTime;
    thread->beginning.emplace(Waiting{Now() + threadDelay, onlyTheTime, "its beginning"});
    thread->waiting = &*thread->beginning;
  }
  threads.push_back(thread);
  if (id != nullptr) {
    *id = thread->id;
  }
  thread->runner = std::thread([this, thread] { RunThread(*this, thread); });
  return MakeHandle({.kind = KernelObject::Kind::Thread, .thread = thread});
}

void State::EndSelf() {
  Thread& self = Self();
  if (self.start == nullptr) {
    std::fprintf(stderr, "stand-in desktop: a thread that CreateThread did not make is terminated\n");
    std::abort();
  }
  const CallOut out(*this, CallOut::To::Library);
  longjmp(self.top, 1);
}

bool State::JoinThreads() {
  constexpr double kPatience = 1000;
  const auto ended = [this] {
    return std::all_of(threads.begin(), threads.end(),
                       [](const auto& thread) { return thread->start == nullptr || thread->ended; });
  };
  if (!ended() && !Wait(Now() + FromMilliseconds(kPatience), ended, "the threads left over")) {
    return false;
  }
  ModelMutex::Whole whole(mutex);
  for (const auto& thread : std::vector(threads)) {
    if (thread->runner.joinable()) {
      // It needs the mutex for its last steps.
      whole.unlock();
      thread->runner.join();
      whole.lock();
    }
  }
  return true;
}

void State::TerminateThreads() {
  for (const auto& thread : threads) {
    if (thread->start != nullptr) {
      thread->terminated = true;
      thread->ended = true;
    }
  }
  changed.notify_all();
}

void Clock::DelayNewThreads(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->threadDelay = FromMilliseconds(milliseconds);
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

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
  return call->StartThread(start, parameter, threadId);
}

BOOL TerminateThread(HANDLE handle, DWORD /*exitCode*/) {
  STANDIN_CALL(TerminateThread);
  const auto entry = call->handles.find(handle);
  if (call.Fails() || entry == call->handles.end() || !entry->second.thread) {
    return FALSE;
  }
  // In real time it runs on until its next call that waits.
  entry->second.thread->terminated = true;
  entry->second.thread->ended = true;
  call->changed.notify_all();
  return TRUE;
}

// Answers only calls that make an unnamed manual-reset event.
HANDLE CreateEventW(void* /*security*/, BOOL manualReset, BOOL initiallySet, const WCHAR* name) {
  STANDIN_CALL(CreateEventW);
  if (call.Fails() || !manualReset || name != nullptr) {
    return nullptr;
  }
  return call->MakeHandle({.kind = KernelObject::Kind::Event, .set = std::make_shared<bool>(initiallySet != FALSE)});
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
  const auto deadline = milliseconds == INFINITE ? kNever : call->Now() + FromMilliseconds(milliseconds);
  const auto happened = [thread = entry->second.thread, event = entry->second.set] {
    return event ? *event : thread->ended;
  };
  return call->Wait(deadline, happened, entry->second.set ? "an event" : "the end of a thread") ? WAIT_OBJECT_0
                                                                                                : WAIT_TIMEOUT;
}

}  // extern "C"
