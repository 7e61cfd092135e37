// The clipboard's "HTML Format": a fragment of HTML behind a header that tells where it lies, counted in bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The five header lines, 105 bytes for every number of at most ten digits.
std::string FormatHtmlClipboardHeader(std::uint64_t startHtml, std::uint64_t endHtml, std::uint64_t startFragment,
                                      std::uint64_t endFragment);

// Header, opening, the fragment unchanged (UTF-8, which the format prescribes), closing.
std::string BuildHtmlClipboardData(std::string_view fragment);
