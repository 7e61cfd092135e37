// Times two ways of doing the same, in turn, so that whatever else the machine does falls on both.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Contestant {
  std::string name;
  std::function<void()> run;
};

struct Rounds {
  int count;
  int calls;  // of each contestant in a round
  // Before each round of each contestant, outside the time.
  std::function<void()> prepare = [] {};
};

void Compare(const Rounds& rounds, std::vector<Contestant> contestants);

// Everything measured so far, in the form that Google Benchmark writes: one entry for a round, nanoseconds a call.
void WriteReport(const std::string& file);

}  // namespace bench
