#include "resolve/point_table.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace {

constexpr std::size_t kKeySizeAt = sizeof(POINT);
constexpr std::size_t kKeyAt = kKeySizeAt + 1;

std::uint32_t HashOf(std::string_view key) noexcept {
  return static_cast<std::uint32_t>(std::hash<std::string_view>{}(key));
}

}  // namespace

std::optional<POINT> PointTable::Find(std::string_view key) const noexcept {
  if (slots_.empty()) {
    return std::nullopt;
  }
  const std::uint32_t entry = slots_[SlotOf(key, HashOf(key))].entry;
  if (entry == kFree) {
    return std::nullopt;
  }
  POINT point;
  std::memcpy(&point, &entries_[entry], sizeof point);
  return point;
}

void PointTable::Store(std::string_view key, POINT point) {
  if ((count_ + 1) * 4 > slots_.size() * 3) {
    Grow();
  }
  const std::uint32_t hash = HashOf(key);
  Slot& slot = slots_[SlotOf(key, hash)];
  if (slot.entry == kFree) {
    const std::size_t entry = entries_.size();
    if (entry >= kFree) {
      throw std::bad_alloc();
    }
    const auto keySize = static_cast<char>(key.size());
    // One allocation at most, before anything changes.
    if (const std::size_t needed = entry + kKeyAt + key.size(); needed > entries_.capacity()) {
      entries_.reserve(std::max(needed, entries_.capacity() * 2));
    }
    entries_.append(sizeof point, '\0').append(1, keySize).append(key);
    slot = {hash, static_cast<std::uint32_t>(entry)};
    ++count_;
  }
  std::memcpy(&entries_[slot.entry], &point, sizeof point);
}

void PointTable::Clear() noexcept {
  // The memory goes back too: a host clears the cache when it is done with a window.
  slots_ = {};
  entries_ = {};
  count_ = 0;
}

std::string_view PointTable::KeyOf(std::uint32_t entry) const noexcept {
  const auto size = static_cast<unsigned char>(entries_[entry + kKeySizeAt]);
  return std::string_view(entries_).substr(entry + kKeyAt, size);
}

std::size_t PointTable::SlotOf(std::string_view key, std::uint32_t hash) const noexcept {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  while (slots_[at].entry != kFree && (slots_[at].hash != hash || KeyOf(slots_[at].entry) != key)) {
    at = (at + 1) & mask;
  }
  return at;
}

void PointTable::Grow() {
  constexpr std::size_t kFewest = 16;
  std::vector<Slot> larger(std::max(slots_.size() * 2, kFewest));
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : slots_) {
    if (slot.entry != kFree) {
      std::size_t at = slot.hash & mask;
      while (larger[at].entry != kFree) {
        at = (at + 1) & mask;
      }
      larger[at] = slot;
    }
  }
  slots_.swap(larger);
}
