#include "host/recording/parse_json.h"

#include <set>
#include <vector>

#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace {

// A recording has at most seven levels, and eleven fields in a step.
constexpr std::size_t kMostLevels = 20;
constexpr std::size_t kMostFields = 100;
constexpr std::size_t kMostBytes = 64U << 20;

// Follows the text to where something is wrong, and knows what that place is called.
class Checker : public nlohmann::json_sax<Json> {
 public:
  explicit Checker(const std::string& file) : file_(file) {}

  bool null() override {
    return Value();
  }
  bool boolean(bool /*value*/) override {
    return Value();
  }
  bool number_integer(number_integer_t /*value*/) override {
    return Value();
  }
  bool number_unsigned(number_unsigned_t /*value*/) override {
    return Value();
  }
  bool number_float(number_float_t /*value*/, const string_t& /*digits*/) override {
    return Value();
  }
  bool string(string_t& value) override {
    // Steps are called by their names, when those come first.
    if (levels_.size() == 3 && levels_.back().key == "name") {
      levels_[1].name = value;
    }
    return Value();
  }
  bool binary(binary_t& /*value*/) override {
    return Value();
  }
  bool start_object(std::size_t /*elements*/) override {
    return Begin(false);
  }
  bool start_array(std::size_t /*elements*/) override {
    return Begin(true);
  }
  bool end_object() override {
    return End();
  }
  bool end_array() override {
    return End();
  }

  bool key(string_t& name) override {
    Level& level = levels_.back();
    level.key = name;
    if (!level.keys.insert(name).second) {
      Refuse("is there twice");
    }
    if (level.keys.size() > kMostFields) {
      throw Failure(ExitCode::BadFile, Where(levels_.size() - 1) + ": has more than " + std::to_string(kMostFields) +
                                           " fields: that is no recording");
    }
    return true;
  }

  bool parse_error(std::size_t /*position*/, const std::string& token, const Json::exception& error) override {
    constexpr int kOutOfRange = 406;
    if (error.id == kOutOfRange) {
      Refuse("is " + Shortened(token, kNameColumns) + ", which no number can hold");
    }
    // Its own message names line and column; what comes before that is of no use to a reader.
    const std::string message = error.what();
    const auto place = message.find("parse error");
    // It quotes the bytes that it stumbled over, whatever they are.
    constexpr std::size_t kColumns = 200;
    throw Failure(ExitCode::BadFile,
                  file_ + ": not JSON: " + Shortened(message.substr(place == std::string::npos ? 0 : place), kColumns));
  }

 private:
  struct Level {
    bool isList;
    std::string key;        // of an object: the field at hand
    std::size_t index = 0;  // of a list
    std::set<std::string> keys;
    std::string name;  // of the entry at hand
  };

  bool Begin(bool isList) {
    levels_.push_back({isList, {}, 0, {}, {}});
    if (levels_.size() > kMostLevels) {
      levels_.pop_back();
      throw Failure(ExitCode::BadFile, file_ + ": lists and objects lie more than " + std::to_string(kMostLevels) +
                                           " levels deep: that is no recording");
    }
    return true;
  }
  bool End() {
    levels_.pop_back();
    return Value();
  }
  bool Value() {
    if (!levels_.empty() && levels_.back().isList) {
      ++levels_.back().index;
      levels_.back().name.clear();
    }
    return true;
  }

  // The place that holds the field, in the words that its own reader would use.
  std::string Where(std::size_t depth) const {
    std::string where = file_;
    for (std::size_t i = 0; i < depth; ++i) {
      const Level& level = levels_[i];
      if (level.isList) {
        const std::string list = i > 0 ? levels_[i - 1].key : std::string();
        const bool isList = list == "steps" || list == "windows" || list == "levels";
        where += (i == 1 ? ": " : ", ") + (isList ? list.substr(0, list.size() - 1) : "entry") + " " +
                 std::to_string(level.index + 1) +
                 (level.name.empty() ? "" : " \"" + Shortened(level.name, kNameColumns) + "\"");
      } else if (i + 1 < levels_.size() && !levels_[i + 1].isList) {
        where += (i == 0 ? ": " : ", ") + Shortened(level.key, kNameColumns);
      }
    }
    return where;
  }

  [[noreturn]] void Refuse(const std::string& why) const {
    std::size_t depth = levels_.size();
    while (depth > 0 && levels_[depth - 1].isList) {
      --depth;
    }
    const std::string field = depth > 0 ? "field \"" + Shortened(levels_[depth - 1].key, kNameColumns) + "\" " : "";
    throw Failure(ExitCode::BadFile, Where(depth > 0 ? depth - 1 : 0) + ": " + field + why);
  }

  const std::string& file_;
  std::vector<Level> levels_;
};

}  // namespace

Json ParseJson(const std::string& file, const std::string& text) {
  if (text.size() > kMostBytes) {
    throw Failure(ExitCode::BadFile,
                  file + ": is larger than " + std::to_string(kMostBytes >> 20) + " MB: that is no recording");
  }
  Checker checker(file);
  Json::sax_parse(text, &checker);
  return Json::parse(text);
}

}  // namespace host
