// One line of the log, composed in place from pieces and written in one go.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/wide_text.h"

namespace korvane {

// A number in lower-case hexadecimal without leading zeros, as it stands behind "0x".
struct Hex {
  explicit Hex(std::uint32_t number) : value(number) {}
  explicit Hex(HRESULT result) : value(static_cast<std::uint32_t>(result)) {}
  explicit Hex(const void* handle) : value(reinterpret_cast<std::uintptr_t>(handle)) {}
  std::uint64_t value;
};

// A handle as an unsigned decimal number.
struct HandleNumber {
  explicit HandleNumber(const void* handle) : value(reinterpret_cast<std::uintptr_t>(handle)) {}
  std::uint64_t value;
};

// A handle in sixteen upper-case hexadecimal digits, as the platform's runtime prints a pointer.
class PointerDigits {
 public:
  explicit PointerDigits(const void* handle) : PointerDigits(reinterpret_cast<std::uintptr_t>(handle)) {}
  explicit PointerDigits(std::uint64_t value);
  std::string_view View() const {
    return {digits_, sizeof digits_};
  }

 private:
  char digits_[16];
};

// A number that is not negative, with one digit behind the point. Rounded as printf does: a tie goes to the even digit.
class OneDecimal {
 public:
  explicit OneDecimal(double number);
  std::uint64_t Whole() const {
    return tenths_ / 10;
  }
  std::uint64_t Decimal() const {
    return tenths_ % 10;
  }

 private:
  std::uint64_t tenths_ = 0;
};

// A number filled with zeros to a width.
struct Padded {
  std::uint32_t value;
  int width;
  int base = 10;
};

// Units up to U+00FF become one byte; beyond them `\uXXXX`, so that nothing is lost and every line stays plain bytes.
// Usual lines fit in place; a longer one takes heap memory, and without memory is cut. Nothing here throws.
class Line {
 public:
  Line() = default;
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  template <class... Pieces>
  void Append(const Pieces&... pieces) noexcept {
    (Add(pieces), ...);
  }

  // Ends the line with CR LF, in place of its last bytes when memory is out.
  void End() noexcept;

  std::string_view Bytes() const {
    return {bytes_, size_};
  }

 private:
  void Add(std::string_view text) noexcept {
    const std::size_t length = std::min(text.size(), Reserve(text.size()));
    std::memcpy(bytes_ + size_, text.data(), length);
    size_ += length;
  }
  void Add(WideView text) noexcept;
  void Add(const WCHAR* text) noexcept {
    Add(ViewOf(text));
  }
  void Add(Hex number) noexcept {
    AddNumber(number.value, 16);
  }
  void Add(const PointerDigits& digits) noexcept {
    Add(digits.View());
  }
  void Add(HandleNumber number) noexcept {
    AddNumber(number.value, 10);
  }
  void Add(Padded number) noexcept;
  void Add(const OneDecimal& number) noexcept {
    Append(number.Whole(), ".", number.Decimal());
  }
  template <std::integral Integer>
  void Add(Integer number) noexcept {
    AddNumber(number, 10);
  }
  template <std::integral Integer>
  void AddNumber(Integer number, int base) noexcept {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
    Add(std::string_view(digits, static_cast<std::size_t>(end - digits)));
  }
  // Room for `more` bytes behind the current ones; less when memory is out.
  std::size_t Reserve(std::size_t more) noexcept {
    if (more > capacity_ - size_) {
      Grow(more);
    }
    return capacity_ - size_;
  }
  void Grow(std::size_t more) noexcept;

  char inPlace_[1024];
  std::unique_ptr<char[]> onHeap_;
  char* bytes_ = inPlace_;
  std::size_t size_ = 0;
  std::size_t capacity_ = sizeof inPlace_;
};

}  // namespace korvane
