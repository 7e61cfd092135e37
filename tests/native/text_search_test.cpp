// The substring search against the plain one.
#include "util/text_search.h"

#include <gtest/gtest.h>

#include <random>

namespace tests {
namespace {

using namespace korvane;

bool ContainsPlainly(WideView text, WideView part) {
  for (std::size_t at = 0; at + part.size() <= text.size(); ++at) {
    if (text.substr(at, part.size()) == part) {
      return true;
    }
  }
  return false;
}

// The text whose letters are the digits of `number` in base `letters`.
WideText TextOfNumber(std::size_t number, std::size_t letters, std::size_t length) {
  WideText text;
  for (; text.size() < length; number /= letters) {
    text.push_back(static_cast<WCHAR>('a' + number % letters));
  }
  return text;
}

std::vector<WideText> AllTexts(std::size_t letters, std::size_t longest) {
  std::vector<WideText> texts;
  for (std::size_t length = 0, count = 1; length <= longest; ++length, count *= letters) {
    for (std::size_t number = 0; number < count; ++number) {
      texts.push_back(TextOfNumber(number, letters, length));
    }
  }
  return texts;
}

void ExpectSameAsPlain(WideView text, WideView part) {
  ASSERT_EQ(Contains(text, part), ContainsPlainly(text, part))
      << "text " << testing::PrintToString(text) << ", part " << testing::PrintToString(part);
}

TEST(TextSearchTest, ContainsAgreesWithThePlainSearchOnAllShortTexts) {
  struct Alphabet {
    std::size_t letters, longestText, longestPart;
  };
  for (const auto& [letters, longestText, longestPart] : {Alphabet{2, 10, 7}, Alphabet{3, 6, 5}}) {
    const auto parts = AllTexts(letters, longestPart);
    for (const WideText& text : AllTexts(letters, longestText)) {
      for (const WideText& part : parts) {
        ASSERT_NO_FATAL_FAILURE(ExpectSameAsPlain(text, part));
      }
    }
  }
}

// Parts with a period, whole or with one letter changed, in texts made of their pieces: there the search skips.
TEST(TextSearchTest, ContainsAgreesWithThePlainSearchOnPeriodicTexts) {
  std::mt19937 random(20261118);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  int found = 0;
  for (int run = 0; run < 20000; ++run) {
    const std::size_t letters = 1 + below(3);
    const WideText period = TextOfNumber(random(), letters, 1 + below(5));
    WideText part;
    while (part.size() < 2 + below(30)) {
      part += period;
    }
    part += period.substr(0, below(period.size() + 1));
    if (below(2) == 0) {
      part[below(part.size())] = static_cast<WCHAR>('a' + below(letters + 1));
    }
    WideText text;
    while (text.size() < part.size() + 10) {
      text += below(2) == 0 ? part.substr(1 + below(part.size() - 1)) : part.substr(0, below(part.size()));
    }
    // Without a zero behind them, so that a sanitizer sees a unit too many.
    const std::vector<WCHAR> exactText(text.begin(), text.end());
    const std::vector<WCHAR> exactPart(part.begin(), part.end());
    ASSERT_NO_FATAL_FAILURE(
        ExpectSameAsPlain({exactText.data(), exactText.size()}, {exactPart.data(), exactPart.size()}));
    found += ContainsPlainly(text, part) ? 1 : 0;
  }
  EXPECT_GT(found, 4000);
  EXPECT_LT(found, 16000);
}

TEST(TextSearchTest, ContainsComparesCodeUnits) {
  EXPECT_TRUE(Contains(u"x\xD83D\xDE00", u"\xD83D"));
  EXPECT_TRUE(Contains(u"x\xD83D\xDE00", u"\xDE00"));
  EXPECT_FALSE(Contains(u"\xD83D", u"\xD83D\xDE00"));
  EXPECT_FALSE(Contains(u"Text", u"text"));
  const WideText withZero(u"a\0b", 3);
  EXPECT_TRUE(Contains(withZero, WideView(u"\0b", 2)));
}

}  // namespace
}  // namespace tests
