#include "host/recording/variables.h"

#include <algorithm>

#include "host/base/failure.h"

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

using Row = std::vector<std::string>;

class CsvReader {
 public:
  CsvReader(const std::string& file, std::string_view bytes) : file_(file), rest_(bytes) {
    if (rest_.starts_with("\xEF\xBB\xBF")) {
      rest_.remove_prefix(3);
    }
  }

  bool AtEnd() const {
    return rest_.empty();
  }
  int Line() const {
    return line_;
  }

  Row NextRow() {
    Row row;
    do {
      row.push_back(rest_.starts_with('"') ? QuotedField() : PlainField());
    } while (Take(","));
    if (!Take("\r\n") && !Take("\n") && !rest_.empty()) {
      Refuse("something follows the closing quote");
    }
    ++line_;
    return row;
  }

  [[noreturn]] void Refuse(const std::string& why) const {
    throw Failure(ExitCode::BadFile, file_ + ": line " + std::to_string(line_) + ": " + why);
  }

 private:
  bool Take(std::string_view token) {
    if (!rest_.starts_with(token)) {
      return false;
    }
    rest_.remove_prefix(token.size());
    return true;
  }

  std::string PlainField() {
    std::string field(rest_.substr(0, rest_.find_first_of(",\n")));
    rest_.remove_prefix(field.size());
    if (field.ends_with('\r') && (rest_.empty() || rest_.front() == '\n')) {
      field.pop_back();
    }
    if (field.find('"') != std::string::npos) {
      Refuse("a quote inside a field that does not begin with one");
    }
    return field;
  }

  // Two quotes in a quoted field stand for one.
  std::string QuotedField() {
    std::string field;
    Take("\"");
    while (!rest_.empty()) {
      if (Take("\"\"")) {
        field += '"';
      } else if (Take("\"")) {
        return field;
      } else {
        line_ += rest_.front() == '\n' ? 1 : 0;
        field += rest_.front();
        rest_.remove_prefix(1);
      }
    }
    Refuse("a quote is not closed");
  }

  const std::string& file_;
  std::string_view rest_;
  int line_ = 1;
};

}  // namespace

void SetVariable(Variables& variables, const std::string& assignment) {
  const auto equals = assignment.find('=');
  if (equals == std::string::npos || !IsName(assignment.substr(0, equals))) {
    throw Failure(ExitCode::Usage,
                  "--set " + assignment + ": must be NAME=VALUE, the name of letters, digits, _ and -");
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
      throw Failure(ExitCode::Usage, where + ": no value for ${" + name + "}; give one with --set " + name +
                                         "=VALUE, or a column " + name + " in the data");
    }
    expanded += found->second;
    i = end;
  }
  return expanded;
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

std::vector<Variables> ParseCsv(const std::string& file, std::string_view bytes) {
  CsvReader reader(file, bytes);
  if (reader.AtEnd()) {
    reader.Refuse("is empty");
  }
  const Row names = reader.NextRow();
  for (const std::string& name : names) {
    if (!IsName(name) || std::count(names.begin(), names.end(), name) > 1) {
      throw Failure(ExitCode::BadFile, file + ": line 1: \"" + name + "\" cannot name a variable, or is there twice");
    }
  }
  std::vector<Variables> rows;
  while (!reader.AtEnd()) {
    const int line = reader.Line();
    const Row row = reader.NextRow();
    if (row.size() == 1 && row[0].empty()) {
      continue;
    }
    if (row.size() != names.size()) {
      throw Failure(ExitCode::BadFile, file + ": line " + std::to_string(line) + ": " + std::to_string(row.size()) +
                                           " fields, but " + std::to_string(names.size()) + " names");
    }
    Variables& variables = rows.emplace_back();
    for (std::size_t i = 0; i < names.size(); ++i) {
      variables[names[i]] = row[i];
    }
  }
  if (rows.empty()) {
    reader.Refuse("there is no row below the names");
  }
  return rows;
}

}  // namespace host
