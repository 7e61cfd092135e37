// Remembered points: what is stored under which key, when it is forgotten, and the statistics.
#include "resolve/coordinate_cache.h"

#include <set>

#include "tests/native/allocations.h"
#include "tests/native/fixture.h"

namespace tests {
namespace {

class CoordinateCacheTest : public FormTest {
 protected:
  // The point, or "none".
  static std::string Remembered(HWND window, const TargetRecord& record) {
    const auto point = FindCachedPoint(CacheKey(window, record));
    return point ? std::to_string(point->x) + " " + std::to_string(point->y) : "none";
  }
};

std::string KeyOf(HWND window, std::u16string_view id) {
  return std::string(CacheKey(window, RecordById(id)).Text());
}

TEST_F(CoordinateCacheTest, VerifyingATargetRemembersItsCentre) {
  const TargetRecord record = RecordById(u"7");
  EXPECT_EQ(verifyTarget(&record, window_), KORVANE_OK);
  EXPECT_EQ(Log(), (Lines{"[verifyTarget] Called"} + kFoundById +
                    Lines{"[verifyTarget] SUCCESS: Target element found and verified",
                          "[CACHE] Stored coordinates for target"}));
  EXPECT_EQ(Remembered(window_, record), "220 135");
  // The second time replaces the point; a cleanup in between forgets nothing.
  TheDesktop().Windows().MoveTo(edit_, 130, 121);
  cleanupAutomation();
  EXPECT_EQ(Remembered(window_, record), "220 135");
  EXPECT_EQ(verifyTarget(&record, window_), KORVANE_OK);
  EXPECT_EQ(Remembered(window_, record), "230 136");
  clearElementCache();
  EXPECT_EQ(Remembered(window_, record), "none");
}

TEST_F(CoordinateCacheTest, TheCentreHalvesTheExtent) {
  const struct {
    RECT rect;
    const char* centre;
  } cases[] = {
      {{-3, -3, 0, 0}, "-2 -2"},
      {{-3, -7, 1, 2}, "-1 -3"},
      {{10, 10, 11, 13}, "10 11"},
      {{5, 5, 2, 1}, "4 3"},  // upside down: truncated toward zero all the same
      {{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, "-1 -1"},
  };
  for (const auto& c : cases) {
    const HWND window = TheDesktop().Windows().Add({.className = u"W", .rect = {-50, -50, 50, 50}});
    AddControl(window, u"Edit", 3, c.rect);
    const TargetRecord record = RecordById(u"3");
    EXPECT_EQ(verifyTarget(&record, window), KORVANE_OK);
    EXPECT_EQ(Remembered(window, record), c.centre) << c.rect.left;
  }
}

TEST_F(CoordinateCacheTest, VerifyingRefuses) {
  TargetRecord record = RecordById(u"7");
  ASSERT_EQ(setTargetWindow(window_), KORVANE_OK);
  const Lines invalid = {"[verifyTarget] Called", "[verifyTarget] ERROR: Invalid parameters",
                         "ERROR verifyTarget Code:-2 Details:Invalid parameters"};
  EXPECT_EQ(verifyTarget(&record, nullptr), KORVANE_INVALID_ARGUMENT) << "the target window does not stand in";
  EXPECT_EQ(Log(), invalid);
  EXPECT_EQ(verifyTarget(nullptr, window_), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Log(), invalid);

  cleanupAutomation();
  OpenLog();
  TheDesktop().Faults().FailNth("CoCreateInstance", 1);
  EXPECT_EQ(verifyTarget(&record, window_), KORVANE_FAILED);
  EXPECT_EQ(Log(),
            (Lines{"[verifyTarget] Called", "ERROR InitializeAutomation Code:-3 Details:UI Automation creation failed",
                   "[verifyTarget] ERROR: Failed to initialize automation"}));

  record = RecordById(u"absent");
  EXPECT_EQ(verifyTarget(&record, window_), KORVANE_NOT_FOUND);
  const Lines log = Log();
  EXPECT_EQ(Lines(log.end() - 2, log.end()), (Lines{"[verifyTarget] Target element not found",
                                                    "ERROR verifyTarget Code:-1 Details:Target element not found"}));
  EXPECT_EQ(Remembered(window_, record), "none");
}

TEST_F(CoordinateCacheTest, WithoutARectangleOrMemoryNothingIsStored) {
  const TargetRecord record = RecordById(u"7");
  TheDesktop().Elements().FailRectangle(TheDesktop().Elements().Of(edit_));
  EXPECT_EQ(verifyTarget(&record, window_), KORVANE_OK);
  EXPECT_EQ(Log().back(), "[verifyTarget] SUCCESS: Target element found and verified");
  EXPECT_EQ(Remembered(window_, record), "none");

  const CacheKey key(window_, record);
  allocations::FailFromNth(1);
  EXPECT_FALSE(StoreCachedPoint(key, {1, 2}));
  allocations::StopFailing();
  EXPECT_FALSE(FindCachedPoint(key));
}

TEST_F(CoordinateCacheTest, KeysTellWindowsAndIdsApart) {
  char digits[24];
  std::snprintf(digits, sizeof digits,
                "%016llX:", static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(window_)));
  const std::string prefix = digits;
  const HWND other = AddDialog();
  EXPECT_EQ(KeyOf(window_, u"7"), prefix + "7");
  EXPECT_EQ(KeyOf(window_, u""), prefix);
  EXPECT_NE(KeyOf(window_, u"7"), KeyOf(other, u"7"));
  EXPECT_EQ(KeyOf(window_, u"\xe9\x4e2d\xd83d\xde00"), prefix + "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80");
  // All lone halves of surrogate pairs become the same character in UTF-8.
  EXPECT_EQ(KeyOf(window_, u"a\xd83d"), prefix + "a\xef\xbf\xbd");
  EXPECT_EQ(KeyOf(window_, u"a\xde00"), prefix + "a\xef\xbf\xbd");
}

TEST_F(CoordinateCacheTest, LongIdsKeepTheirKeysApartAsFarAsTheTextGoes) {
  // The whole key is cut to 255 bytes, 17 of which are the window's.
  const std::u16string longest(255, u'i');
  const auto changed = [](std::u16string id, std::size_t at) {
    id[at] = u'x';
    return id;
  };
  EXPECT_EQ(KeyOf(window_, longest).size(), 255U);
  EXPECT_NE(KeyOf(window_, longest), KeyOf(window_, changed(longest, 237)));
  EXPECT_EQ(KeyOf(window_, longest), KeyOf(window_, changed(longest, 238)));

  // Three bytes a unit: 85 units fit the conversion, 86 do not, and such ids still have keys of their own.
  const std::u16string fits(85, u'\x4e2d');
  const std::u16string tooLong(86, u'\x4e2d');
  const std::u16string farTooLong(255, u'\x4e2d');
  EXPECT_EQ(KeyOf(window_, fits).size(), 255U);
  const std::vector<std::string> keys = {KeyOf(window_, fits),
                                         KeyOf(window_, tooLong),
                                         KeyOf(window_, changed(tooLong, 85)),
                                         KeyOf(window_, farTooLong),
                                         KeyOf(window_, changed(farTooLong, 254)),
                                         KeyOf(AddDialog(), tooLong)};
  EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()).size(), keys.size());
  EXPECT_EQ(KeyOf(window_, tooLong), keys[1]);
}

TEST_F(CoordinateCacheTest, AKeyReadsNothingBehindTheId) {
  auto unterminated = std::make_unique<TargetRecord>();
  std::fill(std::begin(unterminated->automationId), std::end(unterminated->automationId), u'\x100');
  TargetRecord cut = RecordById(std::u16string(255, u'\x100'));
  EXPECT_EQ(CacheKey(window_, *unterminated).Text(), CacheKey(window_, cut).Text());
  unterminated->hwnd = edit_;
  EXPECT_EQ(CacheKey(window_, *unterminated).Text(), CacheKey(window_, cut).Text());
}

TEST_F(CoordinateCacheTest, StatisticsOfTheClicks) {
  const TargetRecord found = RecordById(u"7");
  const TargetRecord absent = RecordById(u"absent");
  const std::string cleared = "[CACHE] Cleared coordinate cache";
  clearElementCache();
  EXPECT_THAT(Log(), ElementsAre(cleared));
  const struct {
    int hits;
    int misses;  // the first of them stores the point
    std::string rate;
  } cases[] = {{3, 1, "75.0"}, {0, 2, "0.0"}, {2, 1, "66.7"}, {999, 1, "99.9"}};
  for (const auto& c : cases) {
    for (int i = 0; i < c.misses; ++i) {
      clickTarget(c.hits > 0 ? &found : &absent, window_);
    }
    for (int i = 0; i < c.hits; ++i) {
      EXPECT_EQ(clickTarget(&found, window_), KORVANE_OK);
    }
    ForgetLog();
    clearElementCache();
    EXPECT_THAT(Log(), ElementsAre("[CACHE STATS] Hits: " + std::to_string(c.hits) +
                                       ", Misses: " + std::to_string(c.misses) + ", Hit Rate: " + c.rate + "%",
                                   cleared));
    clearElementCache();
    EXPECT_THAT(Log(), ElementsAre(cleared)) << "the counters are 0 again";
    EXPECT_EQ(Remembered(window_, found), "none");
  }
}

TEST_F(CoordinateCacheTest, AClosedLogStillLetsTheCacheBeEmptied) {
  const TargetRecord record = RecordById(u"7");
  EXPECT_EQ(clickTarget(&record, window_), KORVANE_OK);
  cleanupAutomation();
  EXPECT_THAT(CallsOf(clearElementCache), IsEmpty());
  EXPECT_EQ(Remembered(window_, record), "none");
  OpenLog();
  ForgetLog();
  clearElementCache();
  EXPECT_EQ(Log(), (Lines{"[CACHE] Cleared coordinate cache"}));
}

TEST_F(CoordinateCacheTest, RecordsWithoutAnIdShareAPointThatOnlyVerifyingStores) {
  const TargetRecord atEdit = RecordAt(130, 130);
  const TargetRecord elsewhere = RecordAt(400, 390);
  EXPECT_EQ(clickTarget(&atEdit, window_), KORVANE_OK);
  EXPECT_EQ(Remembered(window_, atEdit), "none");
  EXPECT_EQ(verifyTarget(&atEdit, window_), KORVANE_OK);
  EXPECT_EQ(clickTarget(&elsewhere, window_), KORVANE_OK);
  const POINT cursor = TheDesktop().User().Cursor();
  EXPECT_EQ(cursor.x, 220);
  EXPECT_EQ(cursor.y, 135);
}

// Enough for the table to grow many times.
TEST_F(CoordinateCacheTest, RemembersEveryPointOfMany) {
  constexpr LONG kMany = 20'000;
  // Of many lengths, with one to three bytes a unit.
  const auto keyOf = [this](LONG number) {
    const standin::Text filling(static_cast<std::size_t>(number % 200), u'x');
    return CacheKey(window_, RecordById(filling + static_cast<char16_t>(0x40 + number / 200)));
  };
  const std::size_t blocks = allocations::BlocksInUse();
  for (LONG i = 0; i < kMany; ++i) {
    ASSERT_FALSE(FindCachedPoint(keyOf(i))) << i;
    ASSERT_TRUE(StoreCachedPoint(keyOf(i), {i, -i}));
  }
  ASSERT_TRUE(StoreCachedPoint(keyOf(7), {1, 2}));
  for (LONG i = 0; i < kMany; ++i) {
    const auto point = FindCachedPoint(keyOf(i));
    ASSERT_TRUE(point) << i;
    EXPECT_EQ(point->x, i == 7 ? 1 : i);
    EXPECT_EQ(point->y, i == 7 ? 2 : -i);
  }
  clearElementCache();
  EXPECT_FALSE(FindCachedPoint(keyOf(7)));
  // The log's own record of calls may have grown.
  EXPECT_LT(allocations::BlocksInUse(), blocks + 100) << "the memory is given back";
}

}  // namespace
}  // namespace tests
