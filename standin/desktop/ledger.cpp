// What was handed out and is not given back yet, and the trace.
#include <algorithm>
#include <cstdio>

#include "standin/desktop/state.h"

namespace standin {

namespace {

using Lines = std::vector<std::string>;

void ListMemory(const Model& model, Lines& lines) {
  for (const auto& [block, memory] : model.globals) {
    if (!memory.systemOwned) {
      lines.emplace_back("global memory");
    }
    for (int i = 0; i < memory.locks; ++i) {
      lines.emplace_back("lock of global memory");
    }
  }
  if (model.clipboardThread != 0) {
    lines.emplace_back("clipboard held open");
  }
}

void ListThreads(const Model& model, Lines& lines) {
  for (const auto& thread : model.threads) {
    for (int i = 0; i < thread->comInitializations; ++i) {
      lines.emplace_back("COM initialisation");
    }
    for (std::size_t i = 0; i < thread->attachedTo.size(); ++i) {
      lines.emplace_back("attached input queue");
    }
    if (thread->start != nullptr && !thread->ended) {
      lines.emplace_back("thread still running");
    }
  }
}

void ListWindowsAndInput(const Model& model, Lines& lines) {
  for (std::size_t i = 0; i < model.hooks.size(); ++i) {
    lines.emplace_back("hook");
  }
  for (const auto& [id, node] : model.nodes) {
    for (std::size_t i = 0; i < node.properties.size(); ++i) {
      lines.emplace_back("window property");
    }
  }
  for (int key = 0; key < 256; ++key) {
    if (model.synthesizedDown[key]) {
      char line[32];
      std::snprintf(line, sizeof line, "key left down: 0x%02X", static_cast<unsigned>(key));
      lines.emplace_back(line);
    }
  }
  if (model.synthesizedButtonDown) {
    lines.emplace_back("left mouse button left down");
  }
}

}  // namespace

void State::Give(const void* thing, const char* kind) {
  given[thing] = kind;
}

bool State::Take(const void* thing, std::string_view kind) {
  const auto entry = given.find(thing);
  if (entry == given.end() || entry->second != kind) {
    Misuse("given back though not handed out: " + std::string(kind));
    return false;
  }
  given.erase(entry);
  return true;
}

void State::Misuse(std::string what) {
  misuses.push_back(std::move(what));
}

void State::Made(const void* object, const char* interfaceName) {
  const std::lock_guard guard(mutex);
  Give(object, interfaceName);
}

void State::Destroyed(const void* object) {
  const std::lock_guard guard(mutex);
  given.erase(object);
}

// ---- Scripting ----

std::vector<std::string> Ledger::Outstanding() const {
  const std::lock_guard guard(state_->mutex);
  Lines lines;
  for (const auto& [thing, kind] : state_->given) {
    lines.emplace_back(kind);
  }
  ListMemory(*state_, lines);
  ListThreads(*state_, lines);
  ListWindowsAndInput(*state_, lines);
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> Ledger::Misuses() const {
  const std::lock_guard guard(state_->mutex);
  return state_->misuses;
}

std::vector<TraceEntry> Calls::Trace() const {
  const std::lock_guard guard(state_->mutex);
  return state_->trace;
}

void Calls::ClearTrace() {
  const std::lock_guard guard(state_->mutex);
  state_->trace.clear();
}

void Calls::SetTracing(bool on) {
  const std::lock_guard guard(state_->mutex);
  state_->tracing = on;
}

}  // namespace standin
