// ${NAME}s in texts, and where their values come from: the command line, rows of a CSV file, steps that read.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/recording/recording.h"

namespace host {

using Variables = std::map<std::string, std::string>;

// "NAME=VALUE"; Failure: Usage
void SetVariable(Variables& variables, const std::string& assignment);
// "$$" stands for a dollar sign. Failure: Usage, naming `where`, when a value is missing.
std::string Expand(const std::string& text, const Variables& variables, const std::string& where);
// The names of the variables in its texts.
std::set<std::string> VariablesOf(const Recording& recording);
// Fails as `Expand` does before anything is done, when a step would lack a value. Steps before `from` are not run.
void CheckVariables(const Recording& recording, const std::string& file, std::size_t from, Variables variables);

// The values of one replay.
struct DataRow {
  int number = 0;  // in the file, whose first row holds the names; 0: from no file
  Variables values;
};

// Rows of a table under the names in its first row; columns whose name is no variable's are passed over.
// Failure: BadFile, with line and column
std::vector<DataRow> ParseData(const std::string& file, std::string_view text);

}  // namespace host
