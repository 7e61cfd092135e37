// Finding an element by its tree path, and capturing it: calls that leave the process, exactly, and what they cost when
// each takes as long as it does between real processes.
#include <benchmark/benchmark.h>

#include "automation/automation_context.h"
#include "benchmarks/child_walk.h"
#include "benchmarks/desk.h"
#include "resolve/tree_path_navigation.h"

namespace {

using namespace korvane;

using standin::TheDesktop;

template <class Action>
double CrossProcessCallsOf(Action&& action) {
  const auto before = TheDesktop().Calls().CrossProcessCount();
  action();
  return static_cast<double>(TheDesktop().Calls().CrossProcessCount() - before);
}

ElementPtr Find(const bench::Desk& desk, bool byWalking) {
  return byWalking ? bench::FindByWalkingChildren(*CurrentAutomation().Get(), desk.window, desk.target)
                   : FindElementByTreePath(desk.window, &desk.target);
}

// Arguments: depth, siblings, microseconds a call.
void FindByPath(benchmark::State& state, bool byWalking) {
  const bench::Desk desk = bench::SetUpTree(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  initializeAutomation();
  state.counters["calls"] = CrossProcessCallsOf([&] {
    if (!Find(desk, byWalking)) {
      state.SkipWithError("not found");
    }
  });
  TheDesktop().Clock().UseRealTime();
  TheDesktop().Calls().SetCrossProcessCost(static_cast<double>(state.range(2)) / 1000);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Find(desk, byWalking).Get());
  }
  TheDesktop().Calls().SetCrossProcessCost(0);
  TheDesktop().Clock().UseVirtualTime();
}

// Arguments: depth, siblings.
void Capture(benchmark::State& state) {
  const bench::Desk desk = bench::SetUpTree(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  initializeAutomation();
  TargetRecord record{};
  for (auto _ : state) {
    captureTargetAtPoint(&record, desk.point.x, desk.point.y);
  }
  if (record.pathLength != desk.target.pathLength) {
    state.SkipWithError("captured another path");
  }
  state.counters["calls"] = CrossProcessCallsOf([&] { captureTargetAtPoint(&record, desk.point.x, desk.point.y); });
  state.counters["levels"] = record.pathLength;
}

}  // namespace

BENCHMARK_CAPTURE(FindByPath, ours, false)
    ->Name("path/ours")
    ->ArgNames({"depth", "siblings", "us"})
    ->Args({5, 20, 0})
    ->Args({5, 20, 100})
    ->Args({5, 20, 1000})
    ->Args({19, 1000, 0})
    ->Args({1, 10, 0})
    ->Args({1, 100, 0})
    ->Args({1, 1000, 0})
    ->Args({1, 10000, 0})
    ->Args({10, 10, 0})
    ->Args({19, 10, 0});
BENCHMARK_CAPTURE(FindByPath, walking, true)
    ->Name("path/walking")
    ->ArgNames({"depth", "siblings", "us"})
    ->Args({5, 20, 0})
    ->Args({5, 20, 100})
    ->Args({5, 20, 1000})
    ->Args({19, 1000, 0});
BENCHMARK(Capture)->Name("capture")->ArgNames({"depth", "siblings"})->Args({1, 20})->Args({5, 20})->Args({19, 1000});
