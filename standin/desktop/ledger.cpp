// What was handed out and is not given back yet.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

void Desktop::State::Give(const void* thing, std::string kind) {
  given[thing] = std::move(kind);
}

bool Desktop::State::Take(const void* thing, std::string_view kind) {
  const auto entry = given.find(thing);
  if (entry == given.end() || entry->second != kind) {
    Misuse("given back though not handed out: " + std::string(kind));
    return false;
  }
  given.erase(entry);
  return true;
}

void Desktop::State::Misuse(std::string what) {
  misuses.push_back(std::move(what));
}

void Desktop::State::Note(std::string name, std::string detail) {
  if (tracing) {
    trace.push_back({std::move(name), std::move(detail)});
  }
}

void Desktop::State::Made(const void* object, const char* interfaceName) {
  const std::lock_guard guard(mutex);
  Give(object, interfaceName);
}

void Desktop::State::Destroyed(const void* object) {
  const std::lock_guard guard(mutex);
  given.erase(object);
}

std::vector<std::string> Desktop::Outstanding() const {
  const std::lock_guard guard(state_->mutex);
  std::vector<std::string> all;
  for (const auto& [thing, kind] : state_->given) {
    all.push_back(kind);
  }
  if (state_->clipboardThread != 0) {
    all.emplace_back("clipboard held open");
  }
  for (std::size_t i = 0; i < state_->hooks.size(); ++i) {
    all.emplace_back("hook");
  }
  for (const auto& [id, node] : state_->nodes) {
    for (std::size_t i = 0; i < node.properties.size(); ++i) {
      all.emplace_back("window property");
    }
  }
  for (const auto& [block, memory] : state_->globals) {
    if (!memory.systemOwned) {
      all.emplace_back("global memory");
    }
    if (memory.locks > 0) {
      all.emplace_back("locked global memory");
    }
  }
  for (const auto& thread : state_->threads) {
    if (thread->comInitializations > 0) {
      all.emplace_back("COM initialisation");
    }
    if (!thread->attachedTo.empty()) {
      all.emplace_back("attached input queue");
    }
    if (thread->start != nullptr && !thread->ended) {
      all.emplace_back("thread still running");
    }
  }
  for (int key = 0; key < 256; ++key) {
    if (state_->synthesizedDown[key]) {
      all.push_back("key left down: " + std::to_string(key));
    }
  }
  if (state_->synthesizedButtonDown) {
    all.emplace_back("mouse button left down");
  }
  std::sort(all.begin(), all.end());
  return all;
}

std::vector<std::string> Desktop::Misuses() const {
  const std::lock_guard guard(state_->mutex);
  return state_->misuses;
}

std::vector<TraceEntry> Desktop::Trace() const {
  const std::lock_guard guard(state_->mutex);
  return state_->trace;
}

void Desktop::ClearTrace() {
  const std::lock_guard guard(state_->mutex);
  state_->trace.clear();
}

void Desktop::SetTracing(bool on) {
  const std::lock_guard guard(state_->mutex);
  state_->tracing = on;
}

CallGate& Desktop::Gate() {
  return gate_;
}

}  // namespace standin
