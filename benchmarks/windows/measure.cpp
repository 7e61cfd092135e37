#include "benchmarks/windows/measure.h"

#include <windows.h>

#include <algorithm>
#include <fstream>

namespace bench {

namespace {

struct Sample {
  std::string name;
  double nanoseconds;
};

std::vector<Sample> g_samples;

double Now() {
  LARGE_INTEGER frequency{};
  LARGE_INTEGER count{};
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  return static_cast<double>(count.QuadPart) * 1e9 / static_cast<double>(frequency.QuadPart);
}

}  // namespace

void Compare(const Rounds& rounds, std::vector<Contestant> contestants) {
  for (int round = 0; round < rounds.count; ++round) {
    for (const Contestant& contestant : contestants) {
      rounds.prepare();
      const double start = Now();
      for (int call = 0; call < rounds.calls; ++call) {
        contestant.run();
      }
      g_samples.push_back({contestant.name, (Now() - start) / rounds.calls});
    }
    // Each follows each: what one leaves behind, such as the first half of a double click, is not always the same
    // one's.
    std::reverse(contestants.begin(), contestants.end());
  }
}

void WriteReport(const std::string& file) {
  std::ofstream report(file);
  report << "{\"benchmarks\": [";
  const char* separator = "\n";
  for (const Sample& sample : g_samples) {
    report << separator << R"({"name": ")" << sample.name << R"(", "run_type": "iteration", "real_time": )"
           << sample.nanoseconds << R"(, "cpu_time": )" << sample.nanoseconds << R"(, "time_unit": "ns"})";
    separator = ",\n";
  }
  report << "\n]}\n";
}

}  // namespace bench
