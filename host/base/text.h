// Texts of the library are UTF-16; files, the terminal and this program use UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "korvane/korvane.h"

namespace host {

using WideText = std::basic_string<KorvaneChar>;
using WideView = std::basic_string_view<KorvaneChar>;

// Lone halves of surrogate pairs become U+FFFD, as do bytes that are not UTF-8.
std::string Utf8(WideView text);
WideText Wide(std::string_view utf8);
bool IsWellFormed(WideView text);
// Where the first byte stands that is not UTF-8; npos when all are.
std::size_t FirstNotUtf8(std::string_view bytes);

// Characters that a terminal shows in one column each, near enough for tables.
std::size_t Columns(std::string_view utf8);
std::string Padded(std::string text, std::size_t columns);
// Text of other programs and files, as it may be printed. Control characters, escape sequences and what turns the
// direction of writing are shown as "\n", "\x1b" or "\u202e"; the result is one line.
std::string Escaped(std::string_view text);
// The same, cut to so many columns, with an ellipsis when something is missing.
std::string Shortened(std::string_view text, std::size_t columns);
// Names and titles within a message.
inline constexpr std::size_t kNameColumns = 60;

bool EqualsIgnoringCase(std::string_view left, std::string_view right);  // of ASCII letters
std::string Lower(std::string text);                                     // of ASCII letters
// Every `what`, which is not empty, by `by`.
std::string Replaced(std::string text, std::string_view what, std::string_view by);
std::string Trimmed(std::string_view text);
std::string Milliseconds(double milliseconds);  // "12.3 ms"
std::string Base64(std::string_view bytes);

}  // namespace host
