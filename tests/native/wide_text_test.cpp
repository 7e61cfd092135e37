// The bounded views of fixed fields.
#include "platform/wide_text.h"

#include <gtest/gtest.h>

namespace tests {
namespace {

using namespace korvane;

TEST(WideTextTest, FieldsAreReadAndFilledWithinTheirBounds) {
  EXPECT_EQ(ViewOf(nullptr), u"");
  WCHAR field[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(ViewWithin(field), u"abcd");
  CopyCut(field, u"12345");
  EXPECT_EQ(WideView(field, 4), WideView(u"123\0", 4));
  CopyCut(field, u"x");
  EXPECT_EQ(ViewWithin(field), u"x");
  CopyCut(field, u"");
  EXPECT_EQ(ViewWithin(field), u"");
}

}  // namespace
}  // namespace tests
