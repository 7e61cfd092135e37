// What loading and freeing korvane.dll costs beside a DLL that does nothing, in a host that knows no more than their
// names.
//
//   load_benchmark REPORT.json
#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include "benchmarks/windows/measure.h"

namespace {

void LoadAndFree(const wchar_t* name) {
  const HMODULE module = LoadLibraryW(name);
  if (module == nullptr) {
    std::fprintf(stderr, "a DLL is missing\n");
    std::exit(1);
  }
  FreeLibrary(module);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: load_benchmark REPORT.json\n");
    return 2;
  }
  // What they import stays loaded, as in a host with windows and COM of its own.
  for (const wchar_t* system : {L"user32.dll", L"ole32.dll", L"oleaut32.dll", L"shell32.dll", L"advapi32.dll"}) {
    LoadLibraryW(system);
  }
  bench::Compare({.count = 60, .calls = 5}, {{"load/korvane.dll", [] { LoadAndFree(L"korvane.dll"); }},
                                             {"load/empty.dll", [] { LoadAndFree(L"empty.dll"); }}});
  bench::WriteReport(arguments[1]);
  return 0;
}
