#include "korvane/korvane.h"
#include "log/diagnostic_log.h"

namespace korvane {
namespace {

constexpr std::int64_t kMillisecondsFrom1601To1970 = 11644473600000;
constexpr std::int64_t kFileTimeUnitsPerMillisecond = 10000;

void WriteActionLine(const SYSTEMTIME& time, const KorvaneChar* action, int result, int durationMs) noexcept {
  Line line;
  AppendDateTime(line, time);
  line.Append(" - ", action, " | Result: ", result, " | Duration: ", durationMs, "ms");
  WriteLine(line);
}

// An instant as the calendar has it. One that it does not reach is worth a line too: its stamp is all zeros, which no
// real instant has, instead of a wrong date.
SYSTEMTIME TimeOf(std::int64_t timestampMs) noexcept {
  // Unsigned, so that an instant beyond the range wraps instead of being undefined.
  const auto units = (static_cast<std::uint64_t>(timestampMs) + kMillisecondsFrom1601To1970) *
                     static_cast<std::uint64_t>(kFileTimeUnitsPerMillisecond);
  const FILETIME fileTime{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
  SYSTEMTIME time{};
  const bool inRange = timestampMs >= -kMillisecondsFrom1601To1970 &&
                       timestampMs <= INT64_MAX / kFileTimeUnitsPerMillisecond - kMillisecondsFrom1601To1970;
  return inRange && FileTimeToSystemTime(&fileTime, &time) ? time : SYSTEMTIME{};
}

}  // namespace
}  // namespace korvane

void logAction(const KorvaneChar* action, int result, int durationMs) noexcept {
  if (action == nullptr || !korvane::LogIsOpen()) {
    return;
  }
  SYSTEMTIME now{};
  GetLocalTime(&now);
  korvane::WriteActionLine(now, action, result, durationMs);
}

void logActionWithTimestamp(const KorvaneChar* action, int result, int durationMs, int64_t timestampMs) noexcept {
  if (action == nullptr || !korvane::LogIsOpen()) {
    return;
  }
  korvane::WriteActionLine(korvane::TimeOf(timestampMs), action, result, durationMs);
}
