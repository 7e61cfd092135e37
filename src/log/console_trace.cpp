#include "log/console_trace.h"

#include <cstdio>

namespace korvane {

void PrintTrace(std::string_view text) noexcept {
  // Not printf: its formatting of floating-point numbers would come along, a fifth of the library.
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace korvane
