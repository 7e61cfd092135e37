#include "host/recording/record_json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/recording/json_fields.h"

namespace host {

namespace {

static_assert(sizeof(TargetRecord) == 3256, "the layout that the library documents");

struct MethodWord {
  int method;
  const char* word;
};
constexpr MethodWord kMethods[] = {
    {KORVANE_METHOD_UNDECIDED, "undecided"},
    {KORVANE_METHOD_AUTOMATION_ID, "automation-id"},
    {KORVANE_METHOD_COORDINATES, "coordinates"},
    {KORVANE_METHOD_TREE_PATH, "tree-path"},
};

// A text field. When a plain text would not bring back every unit (halves of surrogate pairs, units behind the
// terminator, no terminator at all), its units as hexadecimal numbers.
template <std::size_t size>
Json TextToJson(const KorvaneChar (&units)[size]) {
  const WideView all(units, size);
  const WideView text = all.substr(0, all.find(KorvaneChar{0}));
  const auto meaningful = all.find_last_not_of(KorvaneChar{0}) + 1;
  if (meaningful == text.size() && text.size() < size && IsWellFormed(text)) {
    return Utf8(text);
  }
  Json numbers = Json::array();
  for (const KorvaneChar unit : all.substr(0, meaningful)) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned>(unit));
    numbers.push_back(digits);
  }
  return Json{{"units", numbers}};
}

template <class Number>
bool ReadHex(const std::string& digits, Number& number) {
  const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return problem == std::errc() && end == digits.data() + digits.size();
}

template <std::size_t size>
void TextFromJson(const JsonFields& fields, const char* field, KorvaneChar (&units)[size]) {
  const Json& value = fields.At(field);
  if (value.is_string()) {
    const WideText text = Wide(fields.Text(field));
    if (text.size() >= size) {
      fields.Refuse(field, "is longer than " + std::to_string(size - 1) + " characters");
    }
    std::copy(text.begin(), text.end(), units);
    return;
  }
  if (!value.is_object() || value.size() != 1 || !value.contains("units") || !value["units"].is_array() ||
      value["units"].size() > size) {
    fields.Refuse(field, "is neither a text nor a list of units");
  }
  for (std::size_t i = 0; i < value["units"].size(); ++i) {
    std::uint16_t unit = 0;
    if (!value["units"][i].is_string() || !ReadHex(value["units"][i].get<std::string>(), unit)) {
      fields.Refuse(field, "holds a unit that is not a hexadecimal number");
    }
    units[i] = static_cast<KorvaneChar>(unit);
  }
}

Json LevelsToJson(const TargetRecord& record) {
  Json levels = Json::array();
  std::size_t used = 0;
  for (std::size_t i = 0; i < KORVANE_MAX_PATH_LEVELS; ++i) {
    const Json className = TextToJson(record.classNames[i]);
    levels.push_back(
        {{"controlType", record.controlTypes[i]}, {"className", className}, {"childIndex", record.childIndices[i]}});
    if (record.controlTypes[i] != 0 || record.childIndices[i] != 0 || className != Json("")) {
      used = i + 1;
    }
  }
  const auto inPath = static_cast<std::size_t>(std::clamp<std::int32_t>(record.pathLength, 0, KORVANE_MAX_PATH_LEVELS));
  levels.erase(levels.begin() + static_cast<std::ptrdiff_t>(std::max(used, inPath)), levels.end());
  return levels;
}

void LevelsFromJson(const JsonFields& fields, const std::string& where, TargetRecord& record) {
  const Json& levels = fields.List("levels");
  if (levels.size() > KORVANE_MAX_PATH_LEVELS) {
    fields.Refuse("levels", "holds more than " + std::to_string(KORVANE_MAX_PATH_LEVELS) + " levels");
  }
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const JsonFields level(levels[i], where + ", level " + std::to_string(i + 1));
    level.AllowOnly({"controlType", "className", "childIndex"});
    record.controlTypes[i] = level.Number("controlType");
    TextFromJson(level, "className", record.classNames[i]);
    record.childIndices[i] = level.Number("childIndex");
  }
}

}  // namespace

Json MethodToJson(int method) {
  for (const MethodWord& known : kMethods) {
    if (known.method == method) {
      return known.word;
    }
  }
  return method;
}

int MethodFromJson(const Json& json, const std::string& where) {
  for (const MethodWord& known : kMethods) {
    if (json == known.word) {
      return known.method;
    }
  }
  if (!json.is_number_integer()) {
    throw Failure(ExitCode::BadFile,
                  where + " is none of \"automation-id\", \"tree-path\", \"coordinates\", \"undecided\"");
  }
  return JsonFields(Json{{"number", json}}, where).Number("number");
}

Json ToJson(const TargetRecord& record) {
  char window[24];
  std::snprintf(window, sizeof window, "%llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(record.hwnd)));
  return {{"identificationMethod", MethodToJson(record.identificationMethod)},
          {"automationId", TextToJson(record.automationId)},
          {"x", record.x},
          {"y", record.y},
          {"hwnd", window},
          {"pathLength", record.pathLength},
          {"levels", LevelsToJson(record)}};
}

TargetRecord RecordFromJson(const Json& json, const std::string& where) {
  const JsonFields fields(json, where);
  fields.AllowOnly({"identificationMethod", "automationId", "x", "y", "hwnd", "pathLength", "levels"});
  TargetRecord record{};
  record.identificationMethod =
      MethodFromJson(fields.At("identificationMethod"), where + ": field \"identificationMethod\"");
  TextFromJson(fields, "automationId", record.automationId);
  record.x = fields.Number("x");
  record.y = fields.Number("y");
  std::uintptr_t window = 0;
  if (!ReadHex(fields.Text("hwnd"), window)) {
    fields.Refuse("hwnd", "is not a hexadecimal number");
  }
  record.hwnd = reinterpret_cast<HWND>(window);
  record.pathLength = fields.Number("pathLength");
  LevelsFromJson(fields, where, record);
  return record;
}

}  // namespace host
