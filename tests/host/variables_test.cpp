// Values for the variables of a recording: rows of a CSV file, and their places in texts.
#include "host/recording/variables.h"

#include <gtest/gtest.h>

#include "host/base/failure.h"

namespace host {
namespace {

struct ExpectedRow {
  int number;
  Variables values;
};

TEST(VariablesTest, RowsOfData) {
  const struct {
    const char* bytes;
    std::vector<ExpectedRow> rows;
  } files[] = {
      {"A,B\n1,2\n", {{2, {{"A", "1"}, {"B", "2"}}}}},
      {"\xEF\xBB\xBF"
       "A\r\n1\r\n2",
       {{2, {{"A", "1"}}}, {3, {{"A", "2"}}}}},
      {"A,B\n\"1,\n2\",\"say \"\"x\"\"\"\n3,4\n",
       {{2, {{"A", "1,\n2"}, {"B", "say \"x\""}}}, {3, {{"A", "3"}, {"B", "4"}}}}},
      // Empty cells are empty texts; a row of nothing else is none, and counts.
      {"A,B\n,\n\n,1\n", {{4, {{"A", ""}, {"B", "1"}}}}},
      {"A;B;C\n1;2,5;\n", {{2, {{"A", "1"}, {"B", "2,5"}, {"C", ""}}}}},
      {"sep=\t\nA\tB\n1\t2\n", {{3, {{"A", "1"}, {"B", "2"}}}}},
      {"A,no name,\n1,2,3\n", {{2, {{"A", "1"}}}}},
      {"A\r1\r", {{2, {{"A", "1"}}}}},
  };
  for (const auto& file : files) {
    SCOPED_TRACE(file.bytes);
    const auto rows = ParseData("f.csv", file.bytes);
    ASSERT_EQ(file.rows.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      EXPECT_EQ(file.rows[i].number, rows[i].number);
      EXPECT_EQ(file.rows[i].values, rows[i].values);
    }
  }
}

TEST(VariablesTest, DataThatIsWrongIsNamedWithItsPlace) {
  const struct {
    const char* bytes;
    const char* line;
  } files[] = {
      {"", "f.csv: is empty"},
      {"A\n", "f.csv: there is no row below the names"},
      {"A,A\n1,2\n", "f.csv: line 1: \"A\" is there twice"},
      {"A\n1\n2,3\n", "f.csv: line 3: 2 cells, but 1 names"},
      {"A\n\"1\n2\n", "f.csv: line 2: a quote is not closed"},
      {"A\n1\"2\n", "f.csv: line 2, column 2: a quote inside a cell that does not begin with one"},
      {"A\n\"1\"2\n", "f.csv: line 2, column 4: something follows the closing quote"},
      {"A\nL\xF6we\n", "f.csv: line 2, column 2: not UTF-8: save the file as UTF-8, or tell its --encoding"},
      {"\xFF\xFE"
       "A",
       "f.csv: is UTF-16: give --encoding utf-16"},
  };
  for (const auto& file : files) {
    try {
      ParseData("f.csv", file.bytes);
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
