// Whole files, named in UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace host {

std::filesystem::path PathOf(const std::string& utf8);
std::string ReadFile(const std::string& name);  // Failure: BadFile
// What stands behind the given place; empty when the file is not there.
std::string ReadFileFrom(const std::string& name, std::uintmax_t offset);
// Into a temporary file beside it, which then takes its name: a reader never sees half of it. Failure: CannotWrite
void WriteFile(const std::string& name, const std::string& bytes);
// A file of this process alone, in the folder for temporary ones.
std::string TemporaryFile(const std::string& ending);

}  // namespace host
