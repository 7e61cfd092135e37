// Points under short texts, laid out for look-ups among a million of them: a small table of places, and all entries
// behind each other, so that a look-up touches two places in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

class PointTable {
 public:
  std::optional<POINT> Find(std::string_view key) const noexcept;
  // Replaces an earlier point under the same key of 1 to 255 bytes. Throws, with nothing changed, when memory is out.
  void Store(std::string_view key, POINT point);
  void Clear() noexcept;

 private:
  static constexpr std::uint32_t kFree = UINT32_MAX;
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t entry = kFree;  // where it begins
  };

  // Where the key is, or the free slot where it belongs. There always is one.
  std::size_t SlotOf(std::string_view key, std::uint32_t hash) const noexcept;
  std::string_view KeyOf(std::uint32_t entry) const noexcept;
  void Grow();

  std::vector<Slot> slots_;  // a power of two, at most three quarters of them in use
  std::string entries_;      // of each its point, one byte with the size of its key, and its key
  std::size_t count_ = 0;
};
