// Values for the variables of a recording: rows of a CSV file, and their places in texts.
#include "host/recording/variables.h"

#include <gtest/gtest.h>

#include "host/base/failure.h"

namespace host {
namespace {

using Rows = std::vector<Variables>;

TEST(VariablesTest, RowsOfCsv) {
  const struct {
    const char* bytes;
    Rows rows;
  } files[] = {
      {"A,B\n1,2\n", {{{"A", "1"}, {"B", "2"}}}},
      {"\xEF\xBB\xBF"
       "A\r\n1\r\n2",
       {{{"A", "1"}}, {{"A", "2"}}}},
      {"A,B\n\"1,\n2\",\"say \"\"x\"\"\"\n", {{{"A", "1,\n2"}, {"B", "say \"x\""}}}},
      {"A,B\n,\n\n", {{{"A", ""}, {"B", ""}}}},
      {"NAME\nL\xC3\xB6we\n", {{{"NAME", "L\xC3\xB6we"}}}},
  };
  for (const auto& file : files) {
    EXPECT_EQ(file.rows, ParseCsv("f.csv", file.bytes)) << file.bytes;
  }
}

TEST(VariablesTest, CsvThatIsWrongIsNamedWithItsLine) {
  const struct {
    const char* bytes;
    const char* line;
  } files[] = {
      {"", "f.csv: line 1: is empty"},
      {"A\n", "f.csv: line 2: there is no row below the names"},
      {"A,A\n1,2\n", "f.csv: line 1: \"A\" cannot name a variable, or is there twice"},
      {"A B\n1\n", "f.csv: line 1: \"A B\" cannot name a variable, or is there twice"},
      {"A\n1\n2,3\n", "f.csv: line 3: 2 fields, but 1 names"},
      {"A\n\"1\n", "f.csv: line 3: a quote is not closed"},
      {"A\n1\"2\n", "f.csv: line 2: a quote inside a field that does not begin with one"},
      {"A\n\"1\"2\n", "f.csv: line 2: something follows the closing quote"},
  };
  for (const auto& file : files) {
    try {
      ParseCsv("f.csv", file.bytes);
      ADD_FAILURE() << file.bytes << " was accepted";
    } catch (const Failure& failure) {
      EXPECT_STREQ(file.line, failure.what());
    }
  }
}

TEST(VariablesTest, TextsTakeTheirValues) {
  const Variables variables = {{"A", "1"}, {"B", "${A}$$"}};
  const struct {
    const char* text;
    const char* expanded;
  } texts[] = {
      {"", ""},           {"no", "no"},      {"${A}", "1"},  {"<${A}${A}>", "<11>"},
      {"${B}", "${A}$$"}, {"$${A}", "${A}"}, {"5 $", "5 $"}, {"${A", "${A"},
  };
  for (const auto& text : texts) {
    EXPECT_EQ(text.expanded, Expand(text.text, variables, "here")) << text.text;
  }
  EXPECT_THROW(Expand("${C}", variables, "here"), Failure);
}

}  // namespace
}  // namespace host
