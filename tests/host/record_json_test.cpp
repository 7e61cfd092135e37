// A record comes back from its JSON byte for byte, whatever is in it.
#include "host/recording/record_json.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "host/base/failure.h"

namespace host {
namespace {

TargetRecord ThereAndBack(const TargetRecord& record) {
  return RecordFromJson(Json::parse(ToJson(record).dump()), "test");
}

bool AreSame(const TargetRecord& left, const TargetRecord& right) {
  return std::memcmp(&left, &right, sizeof left) == 0;
}

TEST(RecordJsonTest, AnyBytesComeBack) {
  std::mt19937 random(20261123);
  for (int run = 0; run < 100; ++run) {
    TargetRecord record{};
    auto* const bytes = reinterpret_cast<unsigned char*>(&record);
    // From a few bytes in an empty record to bytes everywhere.
    const std::size_t count = run < 60 ? 1 + random() % 40 : sizeof record;
    for (std::size_t i = 0; i < count; ++i) {
      bytes[count == sizeof record ? i : random() % sizeof record] = static_cast<unsigned char>(random());
    }
    ASSERT_TRUE(AreSame(record, ThereAndBack(record))) << "run " << run;
  }
}

TEST(RecordJsonTest, TextsAreReadableUnlessTheyWouldNotComeBack) {
  TargetRecord record{};
  const std::u16string texts[] = {u"name", u"Stra\u00DFe \"7\" \\ \u4E2D\U0001F9ED", std::u16string(255, u'x')};
  for (const auto& text : texts) {
    record = {};
    std::copy(text.begin(), text.end(), record.automationId);
    EXPECT_TRUE(ToJson(record)["automationId"].is_string());
    EXPECT_TRUE(AreSame(record, ThereAndBack(record)));
  }
  const std::u16string raw[] = {std::u16string(256, u'x'), {u'a', 0xD83D, u'b'}, {u'a', 0, u'b'}};
  for (const auto& units : raw) {
    record = {};
    std::copy(units.begin(), units.end(), record.automationId);
    EXPECT_TRUE(ToJson(record)["automationId"].is_object());
    EXPECT_TRUE(AreSame(record, ThereAndBack(record)));
  }
}

struct BadField {
  const char* pointer;
  Json value;
  const char* line;
};

TEST(RecordJsonTest, WhatIsWrongIsNamed) {
  TargetRecord record{};
  record.pathLength = 1;
  record.controlTypes[0] = 50004;
  const BadField fields[] = {
      {"/x", "4", "test: field \"x\" is not a whole number of 32 bits"},
      {"/y", 4294967296, "test: field \"y\" is not a whole number of 32 bits"},
      {"/pathLength", 1.5, "test: field \"pathLength\" is not a whole number of 32 bits"},
      {"/hwnd", "0x10", "test: field \"hwnd\" is not a hexadecimal number"},
      {"/automationId", std::string(256, 'x'), "test: field \"automationId\" is longer than 255 characters"},
      {"/automationId", Json{{"units", {"12345"}}},
       "test: field \"automationId\" holds a unit that is not a hexadecimal number"},
      {"/levels", Json(std::vector<Json>(21, Json::object())), "test: field \"levels\" holds more than 20 levels"},
      {"/levels/0/childIndex", nullptr, "test, level 1: field \"childIndex\" is not a whole number of 32 bits"},
      {"/levels/0/colour", 1, "test, level 1: field \"colour\" is not known here"},
  };
  for (const BadField& field : fields) {
    Json json = ToJson(record);
    json[Json::json_pointer(field.pointer)] = field.value;
    try {
      RecordFromJson(json, "test");
      ADD_FAILURE() << field.pointer << " was accepted";
    } catch (const Failure& failure) {
      EXPECT_STREQ(field.line, failure.what());
      EXPECT_EQ(ExitCode::BadFile, failure.Code());
    }
  }
}

}  // namespace
}  // namespace host
