#include "host/base/table.h"

#include <algorithm>

#include "host/base/text.h"

namespace host {

void Table::Add(const std::vector<std::string>& row) {
  constexpr std::size_t kWidest = 300;
  std::vector<std::string>& cells = rows_.emplace_back();
  for (const std::string& cell : row) {
    cells.push_back(Shortened(cell, kWidest));
  }
}

std::string Table::Text() const {
  std::vector<std::size_t> widths(rows_.front().size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], Columns(row[i]));
    }
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += "  " + Padded(row[i], widths[i]);
    }
    line.resize(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace host
