#include "log/diagnostic_log.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "platform/mutex.h"
#include "platform/owners.h"

namespace korvane {
namespace {

// Guards the file against a close or an open beside a write. Lines are composed outside it.
Mutex g_logMutex;
// Owned by whoever takes it to close it: loading and unloading have nothing to do for a plain handle.
HANDLE g_logFile = nullptr;
// Answers a writer's first question without the lock.
std::atomic<bool> g_logIsOpen{false};

void CloseLogLocked() noexcept {
  g_logIsOpen = false;
  const KernelHandle closed(std::exchange(g_logFile, nullptr));
}

Padded Two(WORD number) noexcept {
  return {number, 2};
}

void AppendTime(Line& line, const SYSTEMTIME& time) noexcept {
  line.Append(Two(time.wHour), ":", Two(time.wMinute), ":", Two(time.wSecond));
}

void AppendTimeWithMilliseconds(Line& line, const SYSTEMTIME& time) noexcept {
  AppendTime(line, time);
  line.Append(".", Padded{time.wMilliseconds, 3});
}

void AppendDate(Line& line, const SYSTEMTIME& time) noexcept {
  line.Append(Padded{time.wYear, 4}, "-", Two(time.wMonth), "-", Two(time.wDay));
}

SYSTEMTIME LocalTime() noexcept {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return now;
}

}  // namespace

bool LogIsOpen() noexcept {
  return g_logIsOpen.load(std::memory_order_relaxed);
}

void OpenLog(const WCHAR* path) noexcept {
  // Appending rights alone make each write go to the end of the file, also beside another writer.
  const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  const std::lock_guard guard(g_logMutex);
  CloseLogLocked();
  if (file != INVALID_HANDLE_VALUE) {
    g_logFile = file;
    g_logIsOpen = true;
  }
}

void CloseLog() noexcept {
  const std::lock_guard guard(g_logMutex);
  CloseLogLocked();
}

void WriteLine(Line& line) noexcept {
  line.End();
  const std::string_view bytes = line.Bytes();
  const std::lock_guard guard(g_logMutex);
  if (g_logFile != nullptr) {
    DWORD written = 0;
    WriteFile(g_logFile, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  }
}

void AppendDateTime(Line& line, const SYSTEMTIME& time) noexcept {
  AppendDate(line, time);
  line.Append(" ");
  AppendTimeWithMilliseconds(line, time);
}

void AppendLocalDateTime(Line& line) noexcept {
  AppendDateTime(line, LocalTime());
}

void AppendShortStamp(Line& line) noexcept {
  const SYSTEMTIME now = LocalTime();
  line.Append(Two(now.wMonth), "-", Two(now.wDay), " ");
  AppendTimeWithMilliseconds(line, now);
}

void AppendClockStamp(Line& line) noexcept {
  line.Append("[");
  AppendTimeWithMilliseconds(line, LocalTime());
  line.Append("]");
}

bool AppendSecondStamp(Line& line) noexcept {
  FILETIME utc{};
  FILETIME local{};
  SYSTEMTIME now{};
  GetSystemTimeAsFileTime(&utc);
  if (!FileTimeToLocalFileTime(&utc, &local) || !FileTimeToSystemTime(&local, &now)) {
    return false;
  }
  line.Append("[");
  AppendDate(line, now);
  line.Append(" ");
  AppendTime(line, now);
  line.Append("]");
  return true;
}

int ReportError(int code, std::string_view tag, std::string_view details) noexcept {
  if (!LogIsOpen()) {
    return code;
  }
  Line line;
  AppendLocalDateTime(line);
  line.Append(" ERROR ", tag, " Code:", code);
  if (!details.empty()) {
    line.Append(" Details:", details);
  }
  WriteLine(line);
  return code;
}

}  // namespace korvane
