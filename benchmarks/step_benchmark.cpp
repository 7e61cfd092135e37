// A whole step of a replay, and the verified paste in it: our own time without the platform's, and how often it looks.
#include <benchmark/benchmark.h>

#include <chrono>

#include "benchmarks/desk.h"

namespace {

using standin::TheDesktop;

constexpr double kPollMilliseconds = 2;

// Resolve, click, paste, watch the text arrive, read it back, with the log open. The desktop's clock is virtual, so
// that waits take no time of their own.
void WholeStep(benchmark::State& state) {
  const bench::Desk desk = bench::SetUpForm();
  initializeLog(bench::Wide(bench::NewFile("step.log")).c_str());
  initializeAutomation();
  TheDesktop().Clipboard().Set(u"pasted text");
  double own = 0;
  for (auto _ : state) {
    state.PauseTiming();
    TheDesktop().Controls().SetText(desk.edit, u"");
    clearElementCache();
    state.ResumeTiming();
    TheDesktop().Calls().MeasureTime(true);
    const auto start = std::chrono::steady_clock::now();
    const int code = pasteToTargetWithVerifyEx(&desk.target, desk.window, 150);
    KorvaneChar* const text = getTargetText(&desk.target, desk.window);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    TheDesktop().Calls().MeasureTime(false);
    if (code != KORVANE_OK || text == nullptr) {
      state.SkipWithError("the step failed");
    }
    freeTextResult(text);
    own += elapsed.count() - TheDesktop().Calls().SecondsInside();
  }
  state.counters["own us"] = benchmark::Counter(own * 1e6, benchmark::Counter::kAvgIterations);
  cleanupAutomation();
}

// Argument: microseconds until the pasted text shows. All figures are exact, on the virtual clock.
void VerifiedPaste(benchmark::State& state) {
  const bench::Desk desk = bench::SetUpForm();
  initializeAutomation();
  const double shows = static_cast<double>(state.range(0)) / 1000;
  for (auto _ : state) {
    TheDesktop().Controls().SetText(desk.edit, u"");
    TheDesktop().Clipboard().Set(u"pasted text");
    TheDesktop().Controls().DelayPaste(shows);
    const auto reads = TheDesktop().Calls().Count("IUIAutomationElement::GetCurrentPropertyValue");
    const auto pauses = TheDesktop().Calls().Count("Sleep");
    const double start = TheDesktop().Clock().Now();
    if (pasteToTargetWithVerifyEx(&desk.target, desk.window, 150) != KORVANE_OK) {
      state.SkipWithError("the paste failed");
    }
    const double polls = static_cast<double>(TheDesktop().Calls().Count("Sleep") - pauses) + 1;
    state.counters["reads per poll"] =
        static_cast<double>(TheDesktop().Calls().Count("IUIAutomationElement::GetCurrentPropertyValue") - reads) /
        polls;
    state.counters["late polls"] = (TheDesktop().Clock().Now() - start - shows) / kPollMilliseconds;
    TheDesktop().Clock().Advance(1);
  }
}

}  // namespace

BENCHMARK(WholeStep)->Name("step");
BENCHMARK(VerifiedPaste)
    ->Name("paste")
    ->ArgName("us")
    ->Arg(100)
    ->Arg(1900)
    ->Arg(2100)
    ->Arg(9900)
    ->Arg(20100)
    ->Iterations(1);
