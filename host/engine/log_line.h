// Lines of the library's log, taken apart. A text of another program may hold line feeds and is written as it comes, so
// that a line of the file can be made by anybody: only those are believed whose stamp and tag stand in their place and
// which no text before them reaches.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct LogLine {
  enum class Kind {
    Traced,      // "11-18 09:05:07.045 TEXT": what a function did
    Error,       // "2026-11-18 09:05:07.045 ERROR FUNCTION Code:N[ Details:REASON]"
    Remembered,  // "[2026-11-18 09:05:07] [CACHE HIT] TEXT"
    Host,        // "2026-11-18 09:05:07.045 - ACTION | Result: N | Duration: Nms"
  };
  Kind kind = Kind::Traced;
  std::string_view time;
  std::string_view text;  // of an error: the function
  int code = 0;           // of an error and of a host's line
  int milliseconds = 0;   // of a host's line
  std::string_view details{};
};

// The believed ones, in their order. They refer to the lines given.
std::vector<LogLine> ReadLog(const std::vector<std::string>& lines);
// They would refer to nothing.
std::vector<LogLine> ReadLog(const std::vector<std::string>&& lines) = delete;

}  // namespace host
