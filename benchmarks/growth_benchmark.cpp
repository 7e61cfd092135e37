// What must not grow: a remembered click with the number of remembered points, an HTML fragment's cost a byte with its
// length.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "benchmarks/desk.h"
#include "platform/platform.h"
#include "resolve/coordinate_cache.h"

namespace {

using namespace korvane;

void SetId(TargetRecord& target, unsigned number) {
  char text[16];
  const int length = std::snprintf(text, sizeof text, "row-%08u", number);
  std::copy(text, text + length, target.automationId);
}

// Argument: remembered points. Each click is of another one, so that nothing helps but the look-up itself.
void RememberedClickAmong(benchmark::State& state) {
  const bench::Desk desk = bench::SetUpForm();
  initializeAutomation();
  const auto count = static_cast<unsigned>(state.range(0));
  TargetRecord target = desk.target;
  for (unsigned i = 0; i < count; ++i) {
    SetId(target, i);
    StoreCachedPoint(CacheKey(desk.window, target), desk.point);
  }
  std::minstd_rand random(1);
  for (auto _ : state) {
    SetId(target, static_cast<unsigned>(random()) % count);
    if (clickTarget(&target, desk.window) != KORVANE_OK) {
      state.SkipWithError("the click failed");
    }
  }
  clearElementCache();
}

HGLOBAL BlockOf(const void* bytes, std::size_t size) {
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
  std::memcpy(GlobalLock(block), bytes, size);
  GlobalUnlock(block);
  return block;
}

// What the clipboard asks of any program: two blocks, handed over.
void HtmlFragmentByHand(benchmark::State& state) {
  bench::SetUpForm();
  const std::string html(static_cast<std::size_t>(state.range(0)), 'h');
  for (auto _ : state) {
    const HGLOBAL text = BlockOf(u"text", sizeof u"text");
    const HGLOBAL fragment = BlockOf(html.c_str(), html.size() + 1);
    OpenClipboard(nullptr);
    EmptyClipboard();
    SetClipboardData(CF_UNICODETEXT, text);
    SetClipboardData(RegisterClipboardFormatW(u"HTML Format"), fragment);
    CloseClipboard();
  }
}

// Argument: bytes of the fragment.
void HtmlFragment(benchmark::State& state) {
  bench::SetUpForm();
  const std::string html(static_cast<std::size_t>(state.range(0)), 'h');
  for (auto _ : state) {
    if (setClipboardTextAndHtml(u"text", html.c_str()) != KORVANE_OK) {
      state.SkipWithError("not written");
    }
  }
}

}  // namespace

BENCHMARK(RememberedClickAmong)->Name("growth/cache")->ArgName("points")->Arg(10)->Arg(1000)->Arg(1000000);
BENCHMARK(HtmlFragment)->Name("growth/html")->ArgName("bytes")->RangeMultiplier(16)->Range(1 << 10, 1 << 24);
BENCHMARK(HtmlFragmentByHand)
    ->Name("growth/html by hand")
    ->ArgName("bytes")
    ->RangeMultiplier(16)
    ->Range(1 << 10, 1 << 24);
