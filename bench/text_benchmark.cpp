// How the time of text tests grows with the text, on texts that make a naive search quadratic: nanoseconds per unit
// stay flat from a thousand units to sixteen million.
#include <benchmark/benchmark.h>

#include "korvane/korvane.h"
#include "platform/wide_text.h"
#include "standin/desktop/desktop.h"

namespace {

constexpr std::int64_t kSmallest = 1 << 10;
constexpr std::int64_t kLargest = 1 << 24;

void CountUnits(benchmark::State& state) {
  state.counters["per unit"] = benchmark::Counter(
      static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Every unit alike but the last of the part: each place of the text nearly fits.
void ContainsInRepetitiveText(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const WideText text(size, TEXT('a'));
  WideText part(size / 2, TEXT('a'));
  part.back() = TEXT('b');
  for (auto _ : state) {
    benchmark::DoNotOptimize(Contains(text, part));
  }
  CountUnits(state);
}

// The part is found at the very end.
void ContainsInPlainText(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  WideText text(size, TEXT('x'));
  for (std::size_t i = 0; i < size; ++i) {
    text[i] = static_cast<WCHAR>(TEXT('a') + i * 7919 % 26);
  }
  const WideText part = text.substr(size - size / 4) + TEXT('!');
  text += TEXT('!');
  for (auto _ : state) {
    benchmark::DoNotOptimize(Contains(text, part));
  }
  CountUnits(state);
}

// Copying the focused field, normalising both texts and comparing them.
void VerifySimpleOfRepetitiveText(benchmark::State& state) {
  auto& desktop = standin::TheDesktop();
  desktop.Reset();
  desktop.SetTracing(false);
  const standin::Text text(static_cast<std::size_t>(state.range(0)), u'a');
  const HWND edit = desktop.AddWindow(
      {.className = u"Edit", .title = text, .rect = {0, 0, 100, 20}, .behaviour = standin::Behaviour::Edit});
  desktop.ClickAsUser(50, 10);
  const standin::Text expected = text.substr(0, text.size() / 2) + u'b';
  for (auto _ : state) {
    benchmark::DoNotOptimize(verifySimple(expected.c_str(), edit));
  }
  CountUnits(state);
}

}  // namespace

BENCHMARK(ContainsInRepetitiveText)
    ->Name("growth/text, repetitive")
    ->ArgName("units")
    ->RangeMultiplier(16)
    ->Range(kSmallest, kLargest);
BENCHMARK(ContainsInPlainText)
    ->Name("growth/text, plain")
    ->ArgName("units")
    ->RangeMultiplier(16)
    ->Range(kSmallest, kLargest);
BENCHMARK(VerifySimpleOfRepetitiveText)
    ->Name("growth/verifySimple")
    ->ArgName("units")
    ->RangeMultiplier(16)
    ->Range(kSmallest, kLargest);
