// The diagnostic log: one file for the process, and the writers of its lines. Every writer does nothing while the log
// is closed, never fails its caller, and has its line in the file, by one write, before it returns. Messages are given
// in pieces: plain literals, wide texts, numbers, Hex.
#pragma once

#include <string_view>

#include "log/line.h"
#include "log/outcome.h"
#include "platform/platform.h"

namespace korvane {

// ---- The file ----

bool LogIsOpen() noexcept;

// Opens the log on `path` for appending, in place of the one that was open; stays closed when that fails.
void OpenLog(const WCHAR* path) noexcept;
void CloseLog() noexcept;

// Ends the line and writes it.
void WriteLine(Line& line) noexcept;

// ---- Time stamps ----

// 2026-11-18 09:05:07.045
void AppendDateTime(Line& line, const SYSTEMTIME& time) noexcept;
// The same for now, in local time.
void AppendLocalDateTime(Line& line) noexcept;
// 11-18 09:05:07.045
void AppendShortStamp(Line& line) noexcept;
// [09:05:07.045]
void AppendClockStamp(Line& line) noexcept;
// [2026-11-18 09:05:07]; false when the clock cannot be converted.
bool AppendSecondStamp(Line& line) noexcept;

// ---- Lines ----

// 11-18 09:05:07.045 message
template <class... Pieces>
void LogLine(const Pieces&... message) noexcept {
  if (!LogIsOpen()) {
    return;
  }
  Line line;
  AppendShortStamp(line);
  line.Append(" ", message...);
  WriteLine(line);
}

// [09:05:07.045] message
template <class... Pieces>
void LogClockLine(const Pieces&... message) noexcept {
  if (!LogIsOpen()) {
    return;
  }
  Line line;
  AppendClockStamp(line);
  line.Append(" ", message...);
  WriteLine(line);
}

// [2026-11-18 09:05:07] message
template <class... Pieces>
void LogStampedLine(const Pieces&... message) noexcept {
  if (!LogIsOpen()) {
    return;
  }
  Line line;
  if (AppendSecondStamp(line)) {
    line.Append(" ", message...);
    WriteLine(line);
  }
}

// The writer of one function's lines: `constexpr TaggedLog LogVerifyTargetLine("[verifyTarget] ");`, called as LogLine
// is.
class TaggedLog {
 public:
  explicit constexpr TaggedLog(std::string_view tag) noexcept : tag_(tag) {}
  template <class... Pieces>
  void operator()(const Pieces&... message) const noexcept {
    LogLine(tag_, message...);
  }

 private:
  std::string_view tag_;
};

// The same with the stamp of LogClockLine.
class TaggedClockLog {
 public:
  explicit constexpr TaggedClockLog(std::string_view tag) noexcept : tag_(tag) {}
  template <class... Pieces>
  void operator()(const Pieces&... message) const noexcept {
    LogClockLine(tag_, message...);
  }

 private:
  std::string_view tag_;
};

// ---- Failures ----

// Writes "… ERROR tag Code:code Details:details", without the details when there are none, and returns the code.
int ReportError(int code, std::string_view tag, std::string_view details = {}) noexcept;

// Reports the outcome's details, if it has any, and returns its code.
inline int Report(std::string_view tag, const Outcome& outcome) noexcept {
  return outcome.details.empty() ? outcome.code : ReportError(outcome.code, tag, outcome.details);
}

}  // namespace korvane
