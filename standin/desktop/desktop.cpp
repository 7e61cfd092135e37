#include "standin/desktop/desktop.h"

#include <cstdlib>
#include <filesystem>

#include "standin/desktop/state.h"

namespace standin {

void ResetCallCounts();

thread_local DWORD Desktop::State::lastError = 0;

// Everything but the caller's thread; threads of the library have ended by now, or their end is waited for.
void Desktop::State::Clear() {
  std::vector<std::shared_ptr<Thread>> ended;
  {
    const std::lock_guard guard(mutex);
    for (auto& thread : threads) {
      if (thread->start != nullptr) {
        thread->terminated = true;
        ended.push_back(thread);
      }
    }
  }
  for (const auto& thread : ended) {
    {
      std::unique_lock lock(mutex);
      Wait(
          kNever, [thread] { return thread->ended; }, "the end of a thread left over");
    }
    thread->runner.join();
  }
}

Desktop::Desktop() : state_(std::make_unique<State>()) {}

Desktop::~Desktop() {
  state_->Clear();
  if (!state_->ownLocalAppData.empty()) {
    std::filesystem::remove_all(state_->ownLocalAppData);
  }
}

void Desktop::Reset() {
  state_->Clear();
  const std::lock_guard guard(state_->mutex);
  State& state = *state_;
  state.virtualTime = true;
  state.clock = 0;
  state.utcOffsetMinutes = 60;
  state.scheduled.clear();
  state.callActions.clear();
  state.threads.clear();
  state.running.reset();
  state.Self();

  state.nodes.clear();
  state.nodes[kRootElement].id = kRootElement;
  state.processes.clear();
  state.focus = nullptr;
  state.foreground = nullptr;
  state.foregroundRefusals = 0;
  state.attachRefused = false;
  state.cursor = {};
  std::fill(std::begin(state.keyDown), std::end(state.keyDown), false);
  std::fill(std::begin(state.synthesizedDown), std::end(state.synthesizedDown), false);
  state.buttonDown = false;
  state.synthesizedButtonDown = false;
  state.pressed = nullptr;
  state.insertedPerCall.reset();
  state.batches.clear();
  state.keyMessages.clear();
  state.keyOverrides.clear();
  state.pasteDelay = 0;
  state.hooks.clear();
  state.cursorShape = "arrow";
  state.clipboard.clear();
  state.clipboardThread = 0;
  state.clipboardHeldUntil = 0;
  state.globals.clear();
  state.handles.clear();
  state.given.clear();
  state.misuses.clear();
  state.trace.clear();
  state.tracing = true;
  state.calls = 0;
  state.crossProcessCalls = 0;
  state.crossProcessCost = 0;
  state.sequence.clear();
  state.faults = {};
  state.failureResults.clear();
  state.tickOffset = 0x10000;
  ResetCallCounts();

  if (state.ownLocalAppData.empty()) {
    std::string folder = (std::filesystem::temp_directory_path() / "standin-desktop-XXXXXX").string();
    state.ownLocalAppData = mkdtemp(folder.data());
  }
  state.localAppData = state.ownLocalAppData;
  SetLocalTime({2026, 11, 3, 18, 9, 5, 7, 45});
}

Desktop& TheDesktop() {
  static Desktop* const desktop = [] {
    static Desktop instance;
    instance.Reset();
    return &instance;
  }();
  return *desktop;
}

}  // namespace standin
