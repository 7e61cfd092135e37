#include <windows.h>

#include <charconv>
#include <cstdint>
#include <optional>

#include "host/base/encoding.h"
#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace {

constexpr UINT kUtf16 = 1200;
constexpr UINT kUtf16BigEndian = 1201;

// The platform knows encodings by number alone.
std::optional<UINT> CodePageOf(const std::string& encoding) {
  const std::string name = Lower(encoding);
  struct Named {
    const char* name;
    UINT codePage;
  };
  for (const Named known : {Named{"utf-8", CP_UTF8},
                            {"utf-16", kUtf16},
                            {"utf-16le", kUtf16},
                            {"utf-16be", kUtf16BigEndian},
                            {"latin1", 28591},
                            {"iso-8859-1", 28591}}) {
    if (name == known.name) {
      return known.codePage;
    }
  }
  struct Family {
    std::string_view prefix;
    UINT base;
  };
  for (const Family family : {Family{"windows-", 0}, {"cp", 0}, {"ibm", 0}, {"iso-8859-", 28590}}) {
    UINT number = 0;
    const char* const end = name.data() + name.size();
    if (name.starts_with(family.prefix)) {
      const auto [read, problem] = std::from_chars(name.data() + family.prefix.size(), end, number);
      return problem == std::errc() && read == end && IsValidCodePage(number + family.base)
                 ? std::optional(number + family.base)
                 : std::nullopt;
    }
  }
  return std::nullopt;
}

WideText Utf16From(std::string_view bytes, bool bigEndian) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
  if (bytes.size() >= 2 && (byte(0) == 0xFE || byte(0) == 0xFF)) {
    bigEndian = byte(0) == 0xFE;
  }
  WideText text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text += static_cast<KorvaneChar>(bigEndian ? byte(i) << 8 | byte(i + 1) : byte(i + 1) << 8 | byte(i));
  }
  return text;
}

}  // namespace

std::string Decoded(const std::string& file, std::string_view bytes, const std::string& encoding) {
  const auto codePage = CodePageOf(encoding);
  if (!codePage) {
    throw Failure(ExitCode::Usage, "--encoding " + Shortened(encoding, kNameColumns) + ": is not known here");
  }
  const auto refuse = [&] { throw Failure(ExitCode::BadFile, file + ": is not in " + encoding); };
  if (*codePage == kUtf16 || *codePage == kUtf16BigEndian) {
    const WideText text = Utf16From(bytes, *codePage == kUtf16BigEndian);
    if (bytes.size() % 2 != 0 || !IsWellFormed(text)) {
      refuse();
    }
    return Utf8(text);
  }
  if (bytes.empty()) {
    return {};
  }
  const int size = static_cast<int>(bytes.size());
  const int units = MultiByteToWideChar(*codePage, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
  WideText text(static_cast<std::size_t>(units), 0);
  if (units == 0 || MultiByteToWideChar(*codePage, MB_ERR_INVALID_CHARS, bytes.data(), size, text.data(), units) == 0) {
    refuse();
  }
  return Utf8(text);
}

}  // namespace host
