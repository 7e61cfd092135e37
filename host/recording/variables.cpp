#include "host/recording/variables.h"

#include <algorithm>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/recording/csv.h"

namespace host {

namespace {

bool IsName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
  });
}

bool TakesVariables(Action action) {
  return action == Action::Paste || action == Action::Type || action == Action::Wait || action == Action::Check;
}

}  // namespace

void SetVariable(Variables& variables, const std::string& assignment) {
  const auto equals = assignment.find('=');
  if (equals == std::string::npos || !IsName(assignment.substr(0, equals))) {
    throw Failure(ExitCode::Usage, "--set " + Shortened(assignment, kNameColumns) +
                                       ": must be NAME=VALUE, the name of letters, digits, _ and -");
  }
  variables[assignment.substr(0, equals)] = assignment.substr(equals + 1);
}

std::string Expand(const std::string& text, const Variables& variables, const std::string& where) {
  std::string expanded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "$$") == 0) {
      expanded += text[++i];
      continue;
    }
    const auto end = text.compare(i, 2, "${") == 0 ? text.find('}', i) : std::string::npos;
    if (end == std::string::npos) {
      expanded += text[i];
      continue;
    }
    const std::string name = text.substr(i + 2, end - i - 2);
    const auto found = variables.find(name);
    if (found == variables.end()) {
      throw Failure(ExitCode::Usage, where + ": no value for ${" + Shortened(name, kNameColumns) +
                                         "}; give one with --set " + Shortened(name, kNameColumns) +
                                         "=VALUE, or a column " + Shortened(name, kNameColumns) + " in the data");
    }
    expanded += found->second;
    i = end;
  }
  return expanded;
}

std::set<std::string> VariablesOf(const Recording& recording) {
  std::set<std::string> names;
  for (const Step& step : recording.steps) {
    const std::string& text = step.text;
    for (std::size_t begin = text.find("${"); TakesVariables(step.action) && begin != std::string::npos;
         begin = text.find("${", begin + 1)) {
      if (const auto end = text.find('}', begin); end != std::string::npos) {
        names.insert(text.substr(begin + 2, end - begin - 2));
      }
    }
  }
  return names;
}

void CheckVariables(const Recording& recording, const std::string& file, std::size_t from, Variables variables) {
  for (std::size_t i = from; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    if (TakesVariables(step.action)) {
      Expand(step.text, variables, file + ": " + NameOf(i, step) + ": field \"text\"");
    } else if (step.action == Action::Read) {
      variables[step.text] = "";
    }
  }
}

std::vector<DataRow> ParseData(const std::string& file, std::string_view text) {
  const std::vector<CsvRow> table = ParseCsv(file, text);
  if (table.size() < 2) {
    throw Failure(ExitCode::BadFile, file + (table.empty() ? ": is empty" : ": there is no row below the names"));
  }
  const std::vector<std::string>& names = table.front().cells;
  for (const std::string& name : names) {
    if (IsName(name) && std::count(names.begin(), names.end(), name) > 1) {
      throw Failure(ExitCode::BadFile,
                    file + ": line " + std::to_string(table.front().line) + ": \"" + name + "\" is there twice");
    }
  }
  std::vector<DataRow> rows;
  for (std::size_t i = 1; i < table.size(); ++i) {
    const CsvRow& row = table[i];
    if (row.cells.size() != names.size()) {
      throw Failure(ExitCode::BadFile, file + ": line " + std::to_string(row.line) + ": " +
                                           std::to_string(row.cells.size()) + " cells, but " +
                                           std::to_string(names.size()) + " names");
    }
    DataRow& data = rows.emplace_back();
    data.number = row.number;
    for (std::size_t column = 0; column < names.size(); ++column) {
      if (IsName(names[column])) {
        data.values[names[column]] = row.cells[column];
      }
    }
  }
  return rows;
}

}  // namespace host
