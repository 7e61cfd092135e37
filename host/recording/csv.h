// Tables as people have them: RFC 4180, with whatever separator their program writes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct CsvRow {
  int number = 0;  // 1 is the first row of the file; a row with line breaks in it counts once, an empty line too
  int line = 0;    // where it begins
  std::vector<std::string> cells;
};

// Rows with anything in them. The separator is the comma, semicolon or tab that is most frequent in the first row, or
// what a line "sep=;" before it says. Failure: BadFile, with line and column.
std::vector<CsvRow> ParseCsv(const std::string& file, std::string_view text);

}  // namespace host
