#include "log/line.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <new>

namespace korvane {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

}  // namespace

PointerDigits::PointerDigits(std::uint64_t value) {
  for (auto digit = std::rbegin(digits_); digit != std::rend(digits_); ++digit, value >>= 4) {
    *digit = "0123456789ABCDEF"[value & 0xF];
  }
}

// In integers: the precision of floating-point arithmetic is each thread's own on Windows.
OneDecimal::OneDecimal(double number) {
  constexpr int kFractionBits = 52;
  constexpr int kExponentBias = 1023;
  constexpr std::uint64_t kOne = 1;
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const std::uint64_t mantissa = (bits & ((kOne << kFractionBits) - 1)) | kOne << kFractionBits;
  const auto exponent = static_cast<int>(bits >> kFractionBits);
  // number = mantissa / 2^shift. Outside these bounds it is below 0.05, or beyond any percentage.
  const int shift = kExponentBias + kFractionBits - exponent;
  if (shift < 1 || shift > 63) {
    return;
  }
  const std::uint64_t product = mantissa * 10;
  const std::uint64_t rest = product & ((kOne << shift) - 1);
  const std::uint64_t half = kOne << (shift - 1);
  tenths_ = product >> shift;
  tenths_ += rest > half || (rest == half && tenths_ % 2 != 0) ? 1 : 0;
}

void Line::Add(WideView text) noexcept {
  constexpr std::size_t kLongestUnit = 6;
  // Most texts are plain: one byte a unit is asked for at first, and more only where it is needed.
  Reserve(text.size());
  for (const WCHAR unit : text) {
    if (Reserve(kLongestUnit) < kLongestUnit) {
      return;
    }
    // The file is text: a line feed is stored as CR LF, whatever stands before it.
    if (unit == TEXT('\n')) {
      bytes_[size_++] = '\r';
    }
    if (unit <= 0xFF) {
      bytes_[size_++] = static_cast<char>(unit);
      continue;
    }
    bytes_[size_++] = '\\';
    bytes_[size_++] = 'u';
    for (int bits = 12; bits >= 0; bits -= 4) {
      bytes_[size_++] = kDigits[(unit >> bits) & 0xF];
    }
  }
}

void Line::Add(Padded number) noexcept {
  char digits[32];
  char* const end = std::end(digits);
  char* begin = end;
  const auto base = static_cast<std::uint32_t>(number.base);
  for (std::uint32_t rest = number.value; rest != 0 || end - begin < number.width; rest /= base) {
    *--begin = kDigits[rest % base];
  }
  Add(std::string_view(begin, static_cast<std::size_t>(end - begin)));
}

void Line::End() noexcept {
  constexpr std::string_view kEnd = "\r\n";
  if (Reserve(kEnd.size()) < kEnd.size()) {
    size_ = capacity_ - kEnd.size();
  }
  Add(kEnd);
}

void Line::Grow(std::size_t more) noexcept {
  const std::size_t grown = std::max(size_ + more, capacity_ * 2);
  if (std::unique_ptr<char[]> larger{new (std::nothrow) char[grown]}) {
    std::memcpy(larger.get(), bytes_, size_);
    onHeap_ = std::move(larger);
    bytes_ = onHeap_.get();
    capacity_ = grown;
  }
}

}  // namespace korvane
