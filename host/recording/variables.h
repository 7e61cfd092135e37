// ${NAME}s in texts, and where their values come from: the command line, rows of a CSV file, steps that read.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/recording/recording.h"

namespace host {

using Variables = std::map<std::string, std::string>;

// "NAME=VALUE"; Failure: Usage
void SetVariable(Variables& variables, const std::string& assignment);
// "$$" stands for a dollar sign. Failure: Usage, naming `where`, when a value is missing.
std::string Expand(const std::string& text, const Variables& variables, const std::string& where);
// Fails as `Expand` does before anything is done, when a step would lack a value. Steps before `from` are not run.
void CheckVariables(const Recording& recording, const std::string& file, std::size_t from, Variables variables);

// Rows of comma-separated values (RFC 4180) under the names in the first one. Failure: BadFile
std::vector<Variables> ParseCsv(const std::string& file, std::string_view bytes);

}  // namespace host
