// A remembered click beside the platform calls that it is made of.
#include <benchmark/benchmark.h>

#include <cstring>

#include "benchmarks/desk.h"
#include "platform/platform.h"
#include "tests/native/allocations.h"

namespace {

constexpr char kLine[] = "[2026-11-18 09:00:00] [CACHE HIT] Clicked using cached coordinates\r\n";

HANDLE OpenForAppending(const std::string& path) {
  return CreateFileW(bench::Wide(path).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

void RememberedClick(benchmark::State& state) {
  const bench::Desk desk = bench::SetUpForm();
  initializeLog(bench::Wide(bench::NewFile("click.log")).c_str());
  verifyTarget(&desk.target, desk.window);
  const auto crossProcess = standin::TheDesktop().Calls().CrossProcessCount();
  for (auto _ : state) {
    if (clickTarget(&desk.target, desk.window) != KORVANE_OK) {
      state.SkipWithError("the click failed");
    }
  }
  state.counters["automation calls"] =
      static_cast<double>(standin::TheDesktop().Calls().CrossProcessCount() - crossProcess);
  tests::allocations::StartCounting();
  clickTarget(&desk.target, desk.window);
  state.counters["allocations"] = static_cast<double>(tests::allocations::StopCounting());
  cleanupAutomation();
}

// The same calls by hand, the line composed beforehand; with the three that the line's time stamp needs, and without.
void ClickByHand(benchmark::State& state, bool withTime) {
  const bench::Desk desk = bench::SetUpForm();
  const HANDLE log = OpenForAppending(bench::NewFile("click-by-hand.log"));
  for (auto _ : state) {
    RECT rect{};
    GetWindowRect(desk.window, &rect);
    SetCursorPos(desk.point.x, desk.point.y);
    mouse_event(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
    if (withTime) {
      FILETIME utc{};
      FILETIME local{};
      SYSTEMTIME now{};
      GetSystemTimeAsFileTime(&utc);
      FileTimeToLocalFileTime(&utc, &local);
      FileTimeToSystemTime(&local, &now);
      benchmark::DoNotOptimize(now);
    }
    DWORD written = 0;
    WriteFile(log, kLine, sizeof kLine - 1, &written, nullptr);
  }
  CloseHandle(log);
}

}  // namespace

BENCHMARK(RememberedClick)->Name("click/remembered");
BENCHMARK_CAPTURE(ClickByHand, bare, false)->Name("click/by hand");
BENCHMARK_CAPTURE(ClickByHand, withTime, true)->Name("click/by hand, with the time");
