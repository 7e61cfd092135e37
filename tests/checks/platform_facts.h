// What a compiler says of declarations, as text that is read from the object file: nothing of it has to run, so that
// the declarations of two platforms are compared on one machine. check_platform_declarations.py writes the programs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

// The name of a structure that both platforms have.
template <class T>
struct NameOf {
  static constexpr const char* kName = "struct";
};

template <class T>
struct IsFunction : std::false_type {};

template <class T>
constexpr std::string Describe();

template <class Result, class... Arguments>
struct IsFunction<Result(Arguments...)> : std::true_type {
  static constexpr std::string Describe() {
    std::string text = ::Describe<Result>() + "(";
    const char* separator = "";
    ((text += separator + ::Describe<Arguments>(), separator = ","), ...);
    return text + ")";
  }
};

constexpr std::string Digits(std::int64_t number) {
  std::string digits;
  std::uint64_t rest = number < 0 ? ~static_cast<std::uint64_t>(number) + 1 : static_cast<std::uint64_t>(number);
  do {
    digits.insert(digits.begin(), static_cast<char>('0' + rest % 10));
    rest /= 10;
  } while (rest != 0);
  return (number < 0 ? "-" : "") + digits;
}

template <class T>
constexpr std::string Describe() {
  if constexpr (std::is_const_v<T>) {
    return "const " + Describe<std::remove_const_t<T>>();
  } else if constexpr (std::is_reference_v<T>) {
    return "&" + Describe<std::remove_reference_t<T>>();
  } else if constexpr (std::is_pointer_v<T>) {
    return "*" + Describe<std::remove_pointer_t<T>>();
  } else if constexpr (std::is_array_v<T>) {
    return "[" + Digits(std::extent_v<T>) + "]" + Describe<std::remove_extent_t<T>>();
  } else if constexpr (IsFunction<T>::value) {
    return IsFunction<T>::Describe();
  } else if constexpr (std::is_void_v<T>) {
    return "void";
  } else if constexpr (std::is_enum_v<T>) {
    return Describe<std::underlying_type_t<T>>();
  } else if constexpr (std::is_integral_v<T>) {
    return (std::is_signed_v<T> ? "signed " : "unsigned ") + Digits(8 * sizeof(T));
  } else {
    return NameOf<T>::kName;
  }
}

constexpr std::string Fact(const char* kind, const char* name, const std::string& value) {
  return std::string(kind) + "\t" + name + "\t" + value + "\n";
}

// The text that `Facts` makes, as bytes of the object file.
template <class Facts>
consteval auto Bytes(Facts facts) {
  std::array<char, facts().size()> bytes{};
  const std::string text = facts();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = text[i];
  }
  return bytes;
}

#define IN_SECTION(name) __attribute__((section(name), used))
