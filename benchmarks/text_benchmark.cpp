// How the time of text tests grows with the text, on texts that make a naive search quadratic: nanoseconds per unit
// stay flat from a thousand units to sixteen million.
#include <benchmark/benchmark.h>

#include "korvane/korvane.h"
#include "platform/platform.h"
#include "platform/wide_text.h"
#include "standin/desktop/desktop.h"
#include "util/text_search.h"

namespace {

using namespace korvane;

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

HWND AddField(const standin::Text& text) {
  auto& desktop = standin::TheDesktop();
  desktop.Reset();
  desktop.Calls().SetTracing(false);
  const HWND edit = desktop.Windows().Add(
      {.className = u"Edit", .title = text, .rect = {0, 0, 100, 20}, .behaviour = standin::Behaviour::Edit});
  desktop.User().Click(50, 10);
  return edit;
}

// What copying the focused field and taking a copy of the clipboard costs any program.
void CopyFieldByHand(benchmark::State& state) {
  AddField(standin::Text(static_cast<std::size_t>(state.range(0)), u'a'));
  for (auto _ : state) {
    sendCtrlA();
    INPUT records[4] = {};
    for (int i = 0; i < 4; ++i) {
      records[i].type = INPUT_KEYBOARD;
      records[i].ki.wVk = i == 0 || i == 3 ? WORD{VK_CONTROL} : WORD{'C'};
      records[i].ki.dwFlags = i < 2 ? 0 : KEYEVENTF_KEYUP;
    }
    SendInput(4, records, sizeof(INPUT));
    OpenClipboard(nullptr);
    const HGLOBAL block = GetClipboardData(CF_UNICODETEXT);
    const WideText copy = static_cast<const WCHAR*>(GlobalLock(block));
    GlobalUnlock(block);
    CloseClipboard();
    benchmark::DoNotOptimize(copy.data());
  }
}

// Copying the focused field, normalising both texts and comparing them.
void VerifySimpleOfRepetitiveText(benchmark::State& state) {
  const standin::Text text(static_cast<std::size_t>(state.range(0)), u'a');
  const HWND edit = AddField(text);
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
BENCHMARK(CopyFieldByHand)
    ->Name("growth/verifySimple by hand")
    ->ArgName("units")
    ->RangeMultiplier(16)
    ->Range(kSmallest, kLargest);
