#include "log/console_trace.h"

#include <cstdarg>
#include <cstdio>

void ConsoleTrace(const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stdout, format, arguments);
  va_end(arguments);
  std::fflush(stdout);
}
