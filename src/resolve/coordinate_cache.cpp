#include "resolve/coordinate_cache.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "log/diagnostic_log.h"
#include "platform/mutex.h"
#include "platform/wide_text.h"
#include "resolve/point_table.h"

namespace {

Mutex g_cacheMutex;
PointTable g_elementCoordinateCache;
std::atomic<std::int32_t> g_cacheHits{0};
std::atomic<std::int32_t> g_cacheMisses{0};

// Stands for an AutomationId whose UTF-8 form is too long for the conversion's buffer: its digits tell such ids apart,
// and the first byte, which UTF-8 never has, keeps them from being mistaken for an id.
constexpr char kLongIdMark = '\xFF';

std::uint64_t Fingerprint(WideView text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const WCHAR unit : text) {
    hash = (hash ^ unit) * 0x100000001B3;
  }
  return hash;
}

struct HexDigits {
  char digits[16];
};

// Sixteen upper-case digits.
HexDigits PointerDigits(std::uint64_t value) {
  HexDigits text;
  for (int i = 15; i >= 0; --i, value >>= 4) {
    text.digits[i] = "0123456789ABCDEF"[value & 0xF];
  }
  return text;
}

}  // namespace

CacheKey::CacheKey(HWND window, const TargetRecord& target) {
  const auto append = [this](const HexDigits& text) { Append({text.digits, sizeof text.digits}); };
  append(PointerDigits(reinterpret_cast<std::uintptr_t>(window)));
  Append(":");

  WCHAR automationId[KORVANE_AUTOMATION_ID_SIZE];
  CopyCut(automationId, ViewWithin(target.automationId));
  char utf8[256];
  if (WideCharToMultiByte(CP_UTF8, 0, automationId, -1, utf8, sizeof utf8, nullptr, nullptr) > 0) {
    Append(utf8);
  } else {
    Append({&kLongIdMark, 1});
    append(PointerDigits(Fingerprint(automationId)));
  }
}

void CacheKey::Append(std::string_view text) {
  const std::size_t length = std::min(text.size(), sizeof text_ - size_);
  std::memcpy(text_ + size_, text.data(), length);
  size_ += length;
}

std::optional<POINT> FindCachedPoint(const CacheKey& key) noexcept {
  const std::lock_guard guard(g_cacheMutex);
  return g_elementCoordinateCache.Find(key.Text());
}

bool StoreCachedPoint(const CacheKey& key, POINT point) noexcept {
  try {
    const std::lock_guard guard(g_cacheMutex);
    g_elementCoordinateCache.Store(key.Text(), point);
    return true;
  } catch (...) {
    return false;
  }
}

void CountCacheHit() noexcept {
  ++g_cacheHits;
}

void CountCacheMiss() noexcept {
  ++g_cacheMisses;
}

void clearElementCache() noexcept {
  const std::int64_t hits = g_cacheHits;
  const std::int64_t misses = g_cacheMisses;
  if (LogIsOpen() && (hits > 0 || misses > 0)) {
    const double rate =
        hits + misses < 1 ? 0.0 : static_cast<double>(hits) * 100.0 / static_cast<double>(hits + misses);
    char text[16];
    std::snprintf(text, sizeof text, "%.1f%%", rate);
    LogLine("[CACHE STATS] Hits: ", hits, ", Misses: ", misses, ", Hit Rate: ", text);
  }
  {
    const std::lock_guard guard(g_cacheMutex);
    g_elementCoordinateCache.Clear();
  }
  g_cacheHits = 0;
  g_cacheMisses = 0;
  LogLine("[CACHE] Cleared coordinate cache");
}
