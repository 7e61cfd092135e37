// Texts of files in other encodings than UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace host {

// In UTF-8. Encodings are named as usual: "windows-1252", "iso-8859-1", "cp850", "utf-16".
// Failure: Usage when there is no such encoding; BadFile, naming the file, when the text is not in it.
std::string Decoded(const std::string& file, std::string_view bytes, const std::string& encoding);

}  // namespace host
