#include "host/base/text.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace host {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHigh(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLow(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf8(std::string& bytes, char32_t point) {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  if (point < 0x80) {
    bytes += byte(point);
  } else if (point < 0x800) {
    bytes += {byte(0xC0 | (point >> 6)), byte(0x80 | (point & 0x3F))};
  } else if (point < 0x10000) {
    bytes += {byte(0xE0 | (point >> 12)), byte(0x80 | ((point >> 6) & 0x3F)), byte(0x80 | (point & 0x3F))};
  } else {
    bytes += {byte(0xF0 | (point >> 18)), byte(0x80 | ((point >> 12) & 0x3F)), byte(0x80 | ((point >> 6) & 0x3F)),
              byte(0x80 | (point & 0x3F))};
  }
}

// Takes the next code point off the front.
char32_t TakePoint(WideView& text) {
  const char32_t unit = text.front();
  text.remove_prefix(1);
  if (IsHigh(unit) && !text.empty() && IsLow(text.front())) {
    const char32_t low = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }
  return unit;
}

char32_t TakePoint(std::string_view& bytes) {
  const auto first = static_cast<std::uint8_t>(bytes.front());
  bytes.remove_prefix(1);
  const int more = first < 0x80 ? 0 : (first >> 5) == 6 ? 1 : (first >> 4) == 14 ? 2 : (first >> 3) == 30 ? 3 : -1;
  if (more < 0) {
    return kReplacement;
  }
  constexpr std::uint8_t kBitsOfFirst[] = {0x7F, 0x1F, 0x0F, 0x07};
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  char32_t point = first & kBitsOfFirst[more];
  for (int i = 0; i < more; ++i) {
    if (bytes.empty() || (static_cast<std::uint8_t>(bytes.front()) & 0xC0) != 0x80) {
      return kReplacement;
    }
    point = (point << 6) | (static_cast<std::uint8_t>(bytes.front()) & 0x3F);
    bytes.remove_prefix(1);
  }
  const bool valid = point >= kSmallest[more] && point <= 0x10FFFF && !IsHigh(point) && !IsLow(point);
  return valid ? point : kReplacement;
}

// Bytes that TakePoint would replace; U+FFFD itself is a character like any other.
constexpr std::string_view kReplacementBytes = "\xEF\xBF\xBD";

struct Range {
  char32_t first;
  char32_t last;
};
// What a terminal obeys instead of showing it, what turns the direction of what follows, and what nobody sees.
constexpr Range kNotShown[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},   {0x180E, 0x180E},   {0x200B, 0x200F},
    {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF0, 0xFFFB}, {0xE0000, 0xE0FFF},
};

// One code point as it is printed.
std::string ShownPoint(char32_t point) {
  std::string text;
  if (std::none_of(std::begin(kNotShown), std::end(kNotShown),
                   [point](Range range) { return point >= range.first && point <= range.last; })) {
    AppendUtf8(text, point);
    return text;
  }
  switch (point) {
    case U'\n':
      return "\\n";
    case U'\r':
      return "\\r";
    case U'\t':
      return "\\t";
    default:
      break;
  }
  char digits[16];
  std::snprintf(digits, sizeof digits, point <= 0xFF ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(point));
  return digits;
}

}  // namespace

std::string Utf8(WideView text) {
  std::string bytes;
  while (!text.empty()) {
    const char32_t point = TakePoint(text);
    AppendUtf8(bytes, IsHigh(point) || IsLow(point) ? kReplacement : point);
  }
  return bytes;
}

WideText Wide(std::string_view utf8) {
  WideText text;
  while (!utf8.empty()) {
    const char32_t point = TakePoint(utf8);
    if (point >= 0x10000) {
      text += static_cast<KorvaneChar>(0xD800 + ((point - 0x10000) >> 10));
      text += static_cast<KorvaneChar>(0xDC00 + ((point - 0x10000) & 0x3FF));
    } else {
      text += static_cast<KorvaneChar>(point);
    }
  }
  return text;
}

bool IsWellFormed(WideView text) {
  while (!text.empty()) {
    const char32_t point = TakePoint(text);
    if (IsHigh(point) || IsLow(point)) {
      return false;
    }
  }
  return true;
}

std::size_t Columns(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string Padded(std::string text, std::size_t columns) {
  const std::size_t used = Columns(text);
  return used < columns ? text.append(columns - used, ' ') : text;
}

std::size_t FirstNotUtf8(std::string_view bytes) {
  const std::size_t size = bytes.size();
  while (!bytes.empty()) {
    const std::string_view before = bytes;
    if (TakePoint(bytes) == kReplacement && !before.starts_with(kReplacementBytes)) {
      return size - before.size();
    }
  }
  return std::string_view::npos;
}

std::string Escaped(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    shown += ShownPoint(TakePoint(text));
  }
  return shown;
}

std::string Shortened(std::string_view text, std::size_t columns) {
  std::string shown;
  std::size_t used = 0;
  std::size_t cut = 0;  // where the ellipsis would go
  while (!text.empty()) {
    const std::string piece = ShownPoint(TakePoint(text));
    used += Columns(piece);
    if (used > columns) {
      return shown.substr(0, cut) + "…";
    }
    shown += piece;
    cut = used < columns ? shown.size() : cut;
  }
  return shown;
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return Lower(std::string(left)) == Lower(std::string(right));
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; });
  return text;
}

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

std::string Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  const auto last = text.find_last_not_of(" \t\r\n");
  return first == std::string_view::npos ? std::string() : std::string(text.substr(first, last - first + 1));
}

std::string Milliseconds(double milliseconds) {
  char text[40];
  std::snprintf(text, sizeof text, "%.1f ms", milliseconds);
  return text;
}

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<std::uint8_t>(bytes[i + k]) : 0u);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

}  // namespace host
