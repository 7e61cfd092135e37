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
  // Unsigned, so that an instant beyond the range wraps instead of being undefined.
  const auto units = (static_cast<std::uint64_t>(timestampMs) + korvane::kMillisecondsFrom1601To1970) *
                     static_cast<std::uint64_t>(korvane::kFileTimeUnitsPerMillisecond);
  const FILETIME fileTime{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
  SYSTEMTIME time{};
  // An instant that the calendar does not reach is worth a line too: its stamp is then all zeros, which no real instant
  // has, instead of a wrong date.
  const bool inRange =
      timestampMs >= -korvane::kMillisecondsFrom1601To1970 &&
      timestampMs <= INT64_MAX / korvane::kFileTimeUnitsPerMillisecond - korvane::kMillisecondsFrom1601To1970;
  if (!inRange || !FileTimeToSystemTime(&fileTime, &time)) {
    time = {};
  }
  korvane::WriteActionLine(time, action, result, durationMs);
}
