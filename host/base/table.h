// A table for the terminal: columns as wide as they need to be.
#pragma once

#include <string>
#include <vector>

namespace host {

class Table {
 public:
  explicit Table(std::vector<std::string> heads) : rows_{std::move(heads)} {}

  // Cells may hold texts of other programs; they are escaped, and cut when they are very long.
  void Add(const std::vector<std::string>& row);
  std::string Text() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace host
