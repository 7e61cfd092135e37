// Screen points of targets found before, so that clicking them again needs no search.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "korvane/korvane.h"
#include "platform/platform.h"

namespace korvane {

// The text under which the point of a record in a window is remembered: the window handle as the platform prints a
// pointer, a colon, and the AutomationId in UTF-8, cut to 255 bytes in all.
class CacheKey {
 public:
  CacheKey(HWND window, const TargetRecord& target);
  std::string_view Text() const {
    return {text_, size_};
  }

 private:
  void Append(std::string_view text);

  char text_[255];
  std::size_t size_ = 0;
};

std::optional<POINT> FindCachedPoint(const CacheKey& key) noexcept;

// False, with nothing stored, when memory is out.
bool StoreCachedPoint(const CacheKey& key, POINT point) noexcept;

// Counters of `clickTarget`.
void CountCacheHit() noexcept;
void CountCacheMiss() noexcept;

}  // namespace korvane
