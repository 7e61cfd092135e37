// A list of lines that a failed comparison shows as a text.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tests {

// Lines of a log, or calls in order. A failed comparison shows them as one text with the difference line by line.
struct Lines : std::vector<std::string> {
  using std::vector<std::string>::vector;
  Lines(std::vector<std::string> lines) : vector(std::move(lines)) {}

  friend Lines operator+(Lines some, const Lines& more) {
    some.insert(some.end(), more.begin(), more.end());
    return some;
  }

  // The framework compares texts line by line when they are printed in quotes.
  friend void PrintTo(const Lines& lines, std::ostream* out) {
    *out << '"';
    for (const std::string& line : lines) {
      *out << line << "\\n";
    }
    *out << '"';
  }
};

}  // namespace tests
