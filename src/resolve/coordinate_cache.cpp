#include "resolve/coordinate_cache.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>

#include "log/diagnostic_log.h"
#include "platform/mutex.h"
#include "platform/wide_text.h"

namespace korvane {
namespace {

// Finds a text without making a string of it, so that a remembered click allocates nothing.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept {
    return std::hash<std::string_view>{}(text);
  }
};
using PointMap = std::unordered_map<std::string, POINT, TextHash, std::equal_to<>>;

Mutex g_cacheMutex;
PointMap g_elementCoordinateCache;
std::atomic<std::int32_t> g_cacheHits{};
std::atomic<std::int32_t> g_cacheMisses{};

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

}  // namespace

CacheKey::CacheKey(HWND window, const TargetRecord& target) {
  Append(PointerDigits(window).View());
  Append(":");

  WCHAR automationId[KORVANE_AUTOMATION_ID_SIZE];
  CopyCut(automationId, ViewWithin(target.automationId));
  char utf8[256];
  if (WideCharToMultiByte(CP_UTF8, 0, automationId, -1, utf8, sizeof utf8, nullptr, nullptr) > 0) {
    Append(utf8);
  } else {
    Append({&kLongIdMark, 1});
    Append(PointerDigits(Fingerprint(automationId)).View());
  }
}

void CacheKey::Append(std::string_view text) {
  const std::size_t length = std::min(text.size(), sizeof text_ - size_);
  std::memcpy(text_ + size_, text.data(), length);
  size_ += length;
}

std::optional<POINT> FindCachedPoint(const CacheKey& key) noexcept {
  const std::lock_guard guard(g_cacheMutex);
  const auto found = g_elementCoordinateCache.find(key.Text());
  return found == g_elementCoordinateCache.end() ? std::nullopt : std::optional(found->second);
}

bool StoreCachedPoint(const CacheKey& key, POINT point) noexcept {
  try {
    const std::lock_guard guard(g_cacheMutex);
    g_elementCoordinateCache.insert_or_assign(std::string(key.Text()), point);
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

void ClearCachedPoints() noexcept {
  const std::int64_t hits = g_cacheHits;
  const std::int64_t misses = g_cacheMisses;
  if (hits > 0 || misses > 0) {
    const double rate =
        hits + misses < 1 ? 0.0 : static_cast<double>(hits) * 100.0 / static_cast<double>(hits + misses);
    LogLine("[CACHE STATS] Hits: ", hits, ", Misses: ", misses, ", Hit Rate: ", OneDecimal(rate), "%");
  }
  {
    // Its memory goes back as well, and outside the lock: a host clears the cache when it is done with a window.
    PointMap cleared;
    const std::lock_guard guard(g_cacheMutex);
    g_elementCoordinateCache.swap(cleared);
  }
  g_cacheHits = 0;
  g_cacheMisses = 0;
  LogLine("[CACHE] Cleared coordinate cache");
}

}  // namespace korvane

void clearElementCache() noexcept {
  korvane::ClearCachedPoints();
}
