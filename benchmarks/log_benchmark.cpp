// One line of the log beside one bare write of the same bytes, and beside a wide stream with endl; and a line at the
// end of a large log beside one at the end of a small one.
#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>

#include "benchmarks/desk.h"
#include "platform/platform.h"

namespace {

constexpr char kLine[] = "2026-11-18 09:00:00.000 - paste the article | Result: 0 | Duration: 41ms\r\n";

void LogLine(benchmark::State& state) {
  bench::SetUpForm();
  initializeLog(bench::Wide(bench::NewFile("line.log")).c_str());
  for (auto _ : state) {
    logAction(u"paste the article", 0, 41);
  }
  cleanupAutomation();
}

void BareWrite(benchmark::State& state) {
  bench::SetUpForm();
  const HANDLE file =
      CreateFileW(bench::Wide(bench::NewFile("bare.log")).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  for (auto _ : state) {
    DWORD written = 0;
    WriteFile(file, kLine, sizeof kLine - 1, &written, nullptr);
  }
  CloseHandle(file);
}

void WideStream(benchmark::State& state) {
  std::wofstream file(bench::NewFile("stream.log"), std::ios::app);
  for (auto _ : state) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    file << std::put_time(std::localtime(&seconds), L"%Y-%m-%d %H:%M:%S") << L"." << std::setfill(L'0') << std::setw(3)
         << milliseconds << L" - " << L"paste the article" << L" | Result: " << 0 << L" | Duration: " << 41 << L"ms"
         << std::endl;
  }
}

// Argument: megabytes that the log holds already.
void LineOfLargeLog(benchmark::State& state) {
  bench::SetUpForm();
  const std::string path = bench::NewFile("large.log");
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(state.range(0)) << 20);
  initializeLog(bench::Wide(path).c_str());
  for (auto _ : state) {
    logAction(u"paste the article", 0, 41);
  }
  cleanupAutomation();
  std::filesystem::resize_file(path, 0);
}

}  // namespace

BENCHMARK(LogLine)->Name("log/line");
BENCHMARK(BareWrite)->Name("log/bare write");
BENCHMARK(WideStream)->Name("log/wide stream");
BENCHMARK(LineOfLargeLog)->Name("growth/log")->ArgName("MB")->Arg(0)->Arg(1)->Arg(1024);
