// The gate that every platform function and UI Automation method passes.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>

#include "standin/desktop/state.h"

namespace standin {

namespace {

using MachineClock = std::chrono::steady_clock;

thread_local int t_callDepth = 0;
thread_local bool t_measuresTime = false;
thread_local MachineClock::time_point t_entered;
thread_local MachineClock::duration t_inside;
thread_local DWORD t_lastError = 0;
thread_local const CallSite* t_method = nullptr;  // the client method that this thread is in

// A list of all call sites. Adding one allocates nothing, because tests count the library's allocations meanwhile.
std::atomic<CallSite*> g_sites{nullptr};

// Whether another process has to answer the call.
bool LeavesTheProcess(std::string_view name) {
  constexpr std::string_view kLocal[] = {
      "::Create", "Cached", "ElementArray::", "CacheRequest::", "get_ControlView", "CompareElements"};
  const auto contains = [name](std::string_view part) { return name.find(part) != std::string_view::npos; };
  return name == "SendMessageW" ||
         (name.starts_with("IUIAutomation") && std::none_of(std::begin(kLocal), std::end(kLocal), contains));
}

std::uint64_t CountOf(std::string_view name) {
  std::uint64_t count = 0;
  for (const CallSite* site = g_sites; site != nullptr; site = site->next) {
    count += site->name == name ? site->count : 0;
  }
  return count;
}

bool IsToFail(const State& state, const CallSite& site) {
  const ArmedFaults& faults = state.faults;
  return faults.calls.contains(state.calls) || state.calls >= faults.from || state.FailsByName(site);
}

void EnterGate() {
  if (++t_callDepth == 1 && t_measuresTime) {
    t_entered = MachineClock::now();
  }
}

void LeaveGate() {
  if (--t_callDepth == 0 && t_measuresTime) {
    t_inside += MachineClock::now() - t_entered;
  }
}

// With the mutex held; true when the call is to fail.
bool BeginCall(State& state, CallSite& site, Call::Can can) {
  constexpr std::size_t kLongestSequence = 1'000'000;
  constexpr DWORD kGeneralFailure = 31;
  ++state.calls;
  ++site.count;
  if (state.tracing && state.sequence.size() < kLongestSequence) {
    state.sequence.push_back(&site);
  }
  bool fails = false;
  if (can == Call::Can::Fail && state.faults.armed && IsToFail(state, site)) {
    ++state.faults.injected;
    SetLastError(kGeneralFailure);
    fails = true;
  }
  if (!state.virtualTime && !state.scheduled.empty()) {
    state.RunDueActions();
  }
  if (site.crossProcess) {
    ++state.crossProcessCalls;
    if (state.crossProcessCost > 0) {
      state.MoveClock(state.crossProcessCost);
    }
  }
  return fails;
}

// With the mutex held; what is to run after the call that is over now.
std::function<void()> TakeActionAfter(State& state, const CallSite& site) {
  auto& actions = state.callActions;
  const auto due = std::find_if(actions.begin(), actions.end(), [&](const CallAction& action) {
    return action.at <= site.count && action.name == site.name;
  });
  if (due == actions.end()) {
    return nullptr;
  }
  auto run = std::move(due->run);
  actions.erase(due);
  return run;
}

void EndCall(State& state, const CallSite& site) {
  std::function<void()> action;
  if (!state.callActions.empty()) {
    action = TakeActionAfter(state, site);
  }
  state.mutex.unlock();
  if (action) {
    action();
  }
  LeaveGate();
}

// The call site of a UI Automation method. Needs the mutex. Call sites are never destroyed: the list points to them.
CallSite& SiteOfMethod(const char* method) {
  static auto& sites = *new std::unordered_map<const char*, std::unique_ptr<CallSite>>;
  auto& site = sites[method];
  if (!site) {
    site = std::make_unique<CallSite>(method);
  }
  return *site;
}

}  // namespace

CallSite::CallSite(const char* functionName) : name(functionName), crossProcess(LeavesTheProcess(functionName)) {
  next = g_sites;
  while (!g_sites.compare_exchange_weak(next, this)) {
  }
}

bool InsidePlatformCall() {
  return t_callDepth > 0;
}

void SetLastError(DWORD code) {
  t_lastError = code;
}

void ResetCallCounts() {
  for (CallSite* site = g_sites; site != nullptr; site = site->next) {
    site->count = 0;
  }
}

Call::Call(CallSite& site, Can can) : state_(TheState()), site_(site) {
  EnterGate();
  state_.mutex.lock();
  fails_ = BeginCall(state_, site_, can);
  if (const auto end = state_.faults.memoryEnds.find(site_.name);
      end != state_.faults.memoryEnds.end() && end->second == site_.count) {
    ++state_.faults.injected;
    state_.mutex.unlock();
    LeaveGate();
    throw std::bad_alloc();
  }
}

Call::~Call() {
  EndCall(state_, site_);
}

HRESULT Call::Failure() const {
  const auto result = state_.failureResults.find(site_.name);
  return result == state_.failureResults.end() ? E_FAIL : result->second;
}

bool State::FailsByName(const CallSite& site) const {
  if (!faults.armed) {
    return false;
  }
  const auto named = faults.named.find(site.name);
  if (named != faults.named.end() && named->second.contains(site.count)) {
    return true;
  }
  const auto from = faults.namedFrom.find(site.name);
  return from != faults.namedFrom.end() && site.count >= from->second;
}

CallOut::CallOut(State& state, To to) : whole_(state.mutex), callDepth_(t_callDepth) {
  t_callDepth = to == To::Library ? 0 : t_callDepth;
  whole_.unlock();
}

CallOut::~CallOut() {
  whole_.lock();
  t_callDepth = callDepth_;
}

// A client method asks the tree again and again, so the mutex is free between its entry and its end.
HRESULT State::Enter(const char* method) {
  EnterGate();
  const std::lock_guard guard(mutex);
  CallSite& site = SiteOfMethod(method);
  t_method = &site;
  if (!BeginCall(*this, site, Call::Can::Fail)) {
    return S_OK;
  }
  const auto result = failureResults.find(method);
  return result == failureResults.end() ? E_FAIL : result->second;
}

void State::Leave() {
  mutex.lock();
  EndCall(*this, *t_method);
}

// ---- Scripting ----

std::uint64_t Calls::Count() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().calls;
}

std::uint64_t Calls::Count(std::string_view name) const {
  const std::lock_guard guard(TheState().mutex);
  return CountOf(name);
}

std::vector<std::string> Calls::Sequence() const {
  const std::lock_guard guard(TheState().mutex);
  std::vector<std::string> names;
  for (const CallSite* site : TheState().sequence) {
    names.emplace_back(site->name);
  }
  return names;
}

void Faults::FailNth(std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  TheState().faults = {};
  TheState().faults.armed = true;
  TheState().faults.calls = {TheState().calls + n};
}

void Faults::FailFromNth(std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  TheState().faults = {};
  TheState().faults.armed = true;
  TheState().faults.from = TheState().calls + n;
}

void Faults::FailPair(std::uint64_t first, std::uint64_t second) {
  const std::lock_guard guard(TheState().mutex);
  FailNth(first);
  TheState().faults.calls.insert(TheState().calls + second);
}

void Faults::FailNth(std::string_view name, std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  ArmedFaults& faults = TheState().faults;
  faults.armed = true;
  faults.injected = 0;
  faults.named[std::string(name)].insert(CountOf(name) + n);
}

void Faults::FailFromNth(std::string_view name, std::uint64_t n) {
  const std::lock_guard guard(TheState().mutex);
  ArmedFaults& faults = TheState().faults;
  faults.armed = true;
  faults.injected = 0;
  faults.namedFrom[std::string(name)] = CountOf(name) + n;
}

void Faults::FailWith(std::string_view name, HRESULT result) {
  const std::lock_guard guard(TheState().mutex);
  TheState().failureResults[std::string(name)] = result;
}

void Faults::EndMemoryAt(std::string_view name, std::uint64_t n) {
  const std::lock_guard guard(state_->mutex);
  state_->faults.memoryEnds[std::string(name)] = CountOf(name) + n;
}

void Faults::Stop() {
  const std::lock_guard guard(TheState().mutex);
  const std::uint64_t injected = TheState().faults.injected;
  TheState().faults = {};
  TheState().faults.injected = injected;
}

std::uint64_t Faults::Injected() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().faults.injected;
}

void Calls::SetCrossProcessCost(double milliseconds) {
  const std::lock_guard guard(TheState().mutex);
  TheState().crossProcessCost = FromMilliseconds(milliseconds);
}

std::uint64_t Calls::CrossProcessCount() const {
  const std::lock_guard guard(TheState().mutex);
  return TheState().crossProcessCalls;
}

void Calls::MeasureTime(bool on) {
  t_inside = on ? MachineClock::duration(0) : t_inside;
  t_measuresTime = on;
}

double Calls::SecondsInside() const {
  return std::chrono::duration<double>(t_inside).count();
}

void Calls::After(std::string_view name, std::uint64_t nth, std::function<void()> action) {
  const std::lock_guard guard(state_->mutex);
  state_->callActions.push_back({std::string(name), CountOf(name) + nth, std::move(action)});
}

}  // namespace standin

using namespace standin;

extern "C" DWORD GetLastError() {
  STANDIN_COUNTED_CALL(GetLastError);
  return t_lastError;
}
