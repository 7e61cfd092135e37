// Dates: the clock's start, and the conversions between file times and calendar fields.
#include <chrono>

#include "standin/desktop/state.h"

namespace standin {

namespace {

using FileTimeUnits = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
using namespace std::chrono;

constexpr sys_days kFileTimeEpoch = sys_days(year{1601} / January / 1);

std::int64_t ToUnits(const SYSTEMTIME& time) {
  const sys_days day = year{time.wYear} / month{time.wMonth} / std::chrono::day{time.wDay};
  const auto sinceEpoch = day - kFileTimeEpoch;
  return duration_cast<FileTimeUnits>(sinceEpoch + hours{time.wHour} + minutes{time.wMinute} + seconds{time.wSecond} +
                                      milliseconds{time.wMilliseconds})
      .count();
}

SYSTEMTIME ToCalendar(std::int64_t units) {
  const FileTimeUnits sinceEpoch{units};
  const days wholeDays = floor<days>(sinceEpoch);
  const sys_days day = kFileTimeEpoch + wholeDays;
  const year_month_day date{day};
  const hh_mm_ss time{floor<milliseconds>(sinceEpoch - wholeDays)};
  return {static_cast<WORD>(int{date.year()}),          static_cast<WORD>(unsigned{date.month()}),
          static_cast<WORD>(weekday{day}.c_encoding()), static_cast<WORD>(unsigned{date.day()}),
          static_cast<WORD>(time.hours().count()),      static_cast<WORD>(time.minutes().count()),
          static_cast<WORD>(time.seconds().count()),    static_cast<WORD>(time.subseconds().count())};
}

std::int64_t Units(const FILETIME& time) {
  return static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

FILETIME FileTime(std::int64_t units) {
  return {static_cast<DWORD>(units), static_cast<DWORD>(static_cast<std::uint64_t>(units) >> 32)};
}

std::int64_t LocalUnits(const State& state) {
  return state.localStart + state.Now() / 100;
}

std::int64_t OffsetUnits(const State& state) {
  return duration_cast<FileTimeUnits>(minutes{state.utcOffsetMinutes}).count();
}

}  // namespace

void Clock::SetLocalTime(const SYSTEMTIME& time) {
  const std::lock_guard guard(state_->mutex);
  state_->localStart = ToUnits(time) - state_->Now() / 100;
}

void Clock::SetUtcOffsetMinutes(int minutes) {
  const std::lock_guard guard(state_->mutex);
  state_->utcOffsetMinutes = minutes;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

void GetLocalTime(SYSTEMTIME* time) {
  STANDIN_COUNTED_CALL(GetLocalTime);
  *time = ToCalendar(LocalUnits(*call));
}

void GetSystemTimeAsFileTime(FILETIME* time) {
  STANDIN_COUNTED_CALL(GetSystemTimeAsFileTime);
  *time = FileTime(LocalUnits(*call) - OffsetUnits(*call));
}

BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local) {
  STANDIN_CALL(FileTimeToLocalFileTime);
  if (call.Fails()) {
    return FALSE;
  }
  *local = FileTime(Units(*utc) + OffsetUnits(*call));
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* file, SYSTEMTIME* calendar) {
  STANDIN_CALL(FileTimeToSystemTime);
  if (call.Fails() || Units(*file) < 0) {
    return FALSE;
  }
  *calendar = ToCalendar(Units(*file));
  return TRUE;
}

}  // extern "C"
