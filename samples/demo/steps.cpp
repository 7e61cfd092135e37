#include "samples/demo/steps.h"

#include <chrono>
#include <cstdio>

#include "korvane/korvane.h"

namespace demo {

namespace {

const char* NameOf(int code) {
  switch (code) {
    case KORVANE_OK:
      return "ok";
    case KORVANE_NOT_FOUND:
      return "NOT FOUND";
    case KORVANE_INVALID_ARGUMENT:
      return "INVALID ARGUMENT";
    case KORVANE_FAILED:
      return "FAILED";
    case KORVANE_CANCELLED:
      return "CANCELLED";
    default:
      return "UNKNOWN CODE";
  }
}

}  // namespace

bool Steps::Run(const std::string& what, const std::function<int()>& action) {
  using Milliseconds = std::chrono::duration<double, std::milli>;
  const auto start = std::chrono::steady_clock::now();
  const int code = action();
  const double elapsed = Milliseconds(std::chrono::steady_clock::now() - start).count();

  const std::basic_string<KorvaneChar> wide(what.begin(), what.end());
  logAction(wide.c_str(), code, static_cast<int>(elapsed));
  std::printf("  %2d  %-46s %-16s %8.1f ms\n", ++done_, what.c_str(), NameOf(code), elapsed);
  if (!remark_.empty()) {
    std::printf("      %s\n", remark_.c_str());
    remark_.clear();
  }
  failed_ += code == KORVANE_OK ? 0 : 1;
  return code == KORVANE_OK;
}

void Steps::Remark(const std::string& remark) {
  remark_ = remark;
}

}  // namespace demo
