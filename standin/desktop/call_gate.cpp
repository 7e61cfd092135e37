#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "standin/desktop/state.h"

namespace standin {

namespace {

thread_local int t_callDepth = 0;

// Every function that was ever called, so that counts can start again from zero.
std::vector<CallSite*>& Sites() {
  static std::vector<CallSite*> sites;
  return sites;
}

std::mutex& SitesMutex() {
  static std::mutex mutex;
  return mutex;
}

// What needs another process to answer.
bool LeavesTheProcess(std::string_view name) {
  if (name == "SendMessageW") {
    return true;
  }
  constexpr std::string_view kLocal[] = {
      "::Create", "Cached", "ElementArray::", "CacheRequest::", "get_ControlView", "CompareElements"};
  return name.find("IUIAutomation") == 0 && std::none_of(std::begin(kLocal), std::end(kLocal), [&](auto part) {
           return name.find(part) != std::string_view::npos;
         });
}

bool IsToFail(Desktop::State& state, const CallSite& site) {
  Faults& faults = state.faults;
  if (faults.calls.contains(state.calls) || state.calls >= faults.from) {
    return true;
  }
  if (const auto named = faults.named.find(site.name); named != faults.named.end()) {
    if (named->second.contains(site.count)) {
      return true;
    }
  }
  const auto from = faults.namedFrom.find(site.name);
  return from != faults.namedFrom.end() && site.count >= from->second;
}

std::uint64_t CountOf(std::string_view name) {
  const std::lock_guard guard(SitesMutex());
  std::uint64_t count = 0;
  for (const CallSite* site : Sites()) {
    count += site->name == name ? site->count : 0;
  }
  return count;
}

}  // namespace

CallSite::CallSite(const char* functionName) : name(functionName), crossProcess(LeavesTheProcess(functionName)) {
  // The first call of a function is not yet counted as one here, but its memory is the stand-in's all the same.
  ++t_callDepth;
  {
    const std::lock_guard guard(SitesMutex());
    Sites().push_back(this);
  }
  --t_callDepth;
}

bool InsidePlatformCall() {
  return t_callDepth > 0;
}

Call::Call(CallSite& site, Can can) : state_(TheState()), site_(site), fails_(false) {
  ++t_callDepth;
  state_.mutex.lock();
  ++state_.calls;
  ++site_.count;
  if (state_.tracing) {
    state_.sequence.push_back(&site_);
  }
  if (!state_.virtualTime && !state_.scheduled.empty()) {
    state_.RunDueActions();
  }
  if (can == Can::Fail && state_.faults.armed && IsToFail(state_, site_)) {
    ++state_.faults.injected;
    fails_ = true;
    Desktop::State::lastError = 31;  // ERROR_GEN_FAILURE
  }
  if (site_.crossProcess) {
    ++state_.crossProcessCalls;
    if (state_.crossProcessCost > 0) {
      state_.MoveClock(state_.crossProcessCost);
    }
  }
}

Call::~Call() {
  if (!state_.callActions.empty()) {
    auto due = std::find_if(state_.callActions.begin(), state_.callActions.end(), [&](const CallAction& action) {
      return action.at == site_.count && action.name == site_.name;
    });
    if (due != state_.callActions.end()) {
      const auto run = std::move(due->run);
      state_.callActions.erase(due);
      run();
    }
  }
  state_.mutex.unlock();
  --t_callDepth;
}

HRESULT Call::Failure() const {
  const auto result = state_.failureResults.find(site_.name);
  return result == state_.failureResults.end() ? E_FAIL : result->second;
}

// A client method counts as inside until it leaves, though the tree does its work under the mutex bit by bit.
HRESULT Desktop::State::Enter(const char* method) {
  ++t_callDepth;
  static std::unordered_map<const char*, std::unique_ptr<CallSite>> sites;
  CallSite* site = nullptr;
  {
    const std::lock_guard guard(mutex);
    auto& entry = sites[method];
    if (!entry) {
      entry = std::make_unique<CallSite>(method);
    }
    site = entry.get();
  }
  const Call call(*site);
  return call.Fails() ? call.Failure() : S_OK;
}

void Desktop::State::Leave() {
  --t_callDepth;
}

// ---- The gate ----

std::uint64_t CallGate::Count() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().calls;
}

std::uint64_t CallGate::Count(std::string_view name) const {
  const std::lock_guard guard(TheState().mutex);
  return CountOf(name);
}

std::vector<std::string> CallGate::Sequence() const {
  const std::lock_guard guard(TheState().mutex);
  std::vector<std::string> names;
  for (const CallSite* site : TheState().sequence) {
    names.emplace_back(site->name);
  }
  return names;
}

void CallGate::FailNth(std::uint64_t n) {
  StopFailing();
  const std::lock_guard guard(TheState().mutex);
  TheState().faults.calls = {TheState().calls + n};
  TheState().faults.armed = true;
}

void CallGate::FailFromNth(std::uint64_t n) {
  StopFailing();
  const std::lock_guard guard(TheState().mutex);
  TheState().faults.from = TheState().calls + n;
  TheState().faults.armed = true;
}

void CallGate::FailPair(std::uint64_t first, std::uint64_t second) {
  FailNth(first);
  const std::lock_guard guard(TheState().mutex);
  TheState().faults.calls.insert(TheState().calls + second);
}

void CallGate::FailNth(std::string_view name, std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  TheState().faults.injected = 0;
  TheState().faults.named[std::string(name)].insert(CountOf(name) + n);
  TheState().faults.armed = true;
}

void CallGate::FailFromNth(std::string_view name, std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  TheState().faults.injected = 0;
  TheState().faults.namedFrom[std::string(name)] = CountOf(name) + n;
  TheState().faults.armed = true;
}

void CallGate::FailWith(std::string_view name, HRESULT result) {
  const std::lock_guard guard(TheState().mutex);
  TheState().failureResults[std::string(name)] = result;
}

void CallGate::StopFailing() {
  const std::lock_guard guard(TheState().mutex);
  TheState().faults = {};
}

std::uint64_t CallGate::Injected() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().faults.injected;
}

void CallGate::SetCrossProcessCost(double milliseconds) {
  const std::lock_guard guard(TheState().mutex);
  TheState().crossProcessCost = FromMilliseconds(milliseconds);
}

std::uint64_t CallGate::CrossProcessCalls() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().crossProcessCalls;
}

void Desktop::AfterCall(std::string_view name, std::uint64_t nth, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  state_->callActions.push_back({std::string(name), CountOf(name) + nth, std::move(action)});
}

void ResetCallCounts() {
  const std::lock_guard guard(SitesMutex());
  for (CallSite* site : Sites()) {
    site->count = 0;
  }
}

}  // namespace standin
