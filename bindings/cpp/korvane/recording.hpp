/**
 * @file recording.hpp
 * Targets of recordings that the companion program has written, for korvane.hpp. Header-only like that one, and kept
 * apart from it, so that only those who replay recordings compile a reader of JSON.
 */
#ifndef KORVANE_RECORDING_HPP
#define KORVANE_RECORDING_HPP

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <korvane/korvane.hpp>
#include <utility>
#include <vector>

namespace korvane {

namespace detail {

/** A value of JSON as recordings use it: numbers are whole ones. What is not there reads as empty. */
struct Json {
  enum class Kind { Nothing, Flag, Number, Text, List, Object };

  Kind kind = Kind::Nothing;
  std::int64_t number = 0;  // a flag's, too
  korvane::Text text;
  std::vector<Json> items;            // of a list, and the values of an object
  std::vector<korvane::Text> fields;  // an object's names, in the order of `items`

  const Json& operator[](TextView name) const {
    static const Json nothing;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i] == name) {
        return items[i];
      }
    }
    return nothing;
  }
};

/** Reads JSON in UTF-8. False: it is none. */
class JsonReader {
 public:
  explicit JsonReader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") {
      at_ += 3;
    }
  }

  bool Read(Json& json) {
    const bool whole = Value(json, 0);
    Blanks();
    return whole && at_ == end_;
  }

 private:
  static constexpr int kDeepest = 64;

  void Blanks() {
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\t' || *at_ == '\n' || *at_ == '\r')) {
      ++at_;
    }
  }
  bool Next(char expected) {
    Blanks();
    const bool there = at_ != end_ && *at_ == expected;
    at_ += there ? 1 : 0;
    return there;
  }
  bool Word(std::string_view word) {
    const bool there = std::string_view(at_, static_cast<std::size_t>(end_ - at_)).substr(0, word.size()) == word;
    at_ += there ? word.size() : 0;
    return there;
  }

  bool Value(Json& json, int depth) {
    Blanks();
    if (at_ == end_ || depth > kDeepest) {
      return false;
    }
    switch (*at_) {
      case '{':
      case '[':
        return Items(json, depth);
      case '"':
        json.kind = Json::Kind::Text;
        return String(json.text);
      case 't':
      case 'f':
        json.kind = Json::Kind::Flag;
        json.number = *at_ == 't' ? 1 : 0;
        return Word(*at_ == 't' ? "true" : "false");
      case 'n':
        return Word("null");
      default:
        json.kind = Json::Kind::Number;
        const auto [behind, problem] = std::from_chars(at_, end_, json.number);
        at_ = behind;
        return problem == std::errc();
    }
  }

  bool Items(Json& json, int depth) {
    const bool isObject = *at_ == '{';
    const char close = isObject ? '}' : ']';
    json.kind = isObject ? Json::Kind::Object : Json::Kind::List;
    ++at_;
    if (Next(close)) {
      return true;
    }
    do {
      if (isObject) {
        Blanks();
        json.fields.emplace_back();
        if (at_ == end_ || *at_ != '"' || !String(json.fields.back()) || !Next(':')) {
          return false;
        }
      }
      json.items.emplace_back();
      if (!Value(json.items.back(), depth + 1)) {
        return false;
      }
    } while (Next(','));
    return Next(close);
  }

  bool String(korvane::Text& text) {
    for (++at_; at_ != end_ && *at_ != '"';) {
      if (!(*at_ == '\\' ? Escape(text) : Character(text))) {
        return false;
      }
    }
    return at_ != end_ && *at_++ == '"';
  }

  bool Escape(korvane::Text& text) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (end_ - at_ < 2) {
      return false;
    }
    const char letter = at_[1];
    at_ += 2;
    if (const auto known = kLetters.find(letter); known != kLetters.npos) {
      text += static_cast<KorvaneChar>(kMeanings[known]);
      return true;
    }
    if (letter != 'u' || end_ - at_ < 4) {
      return false;
    }
    std::uint16_t unit = 0;
    const auto [behind, problem] = std::from_chars(at_, at_ + 4, unit, 16);
    const bool whole = problem == std::errc() && behind == at_ + 4;
    at_ += 4;
    text += static_cast<KorvaneChar>(unit);
    return whole;
  }

  bool Character(korvane::Text& text) {
    const auto first = static_cast<unsigned char>(*at_++);
    const int more = first < 0x80 ? 0 : first < 0xC0 ? -1 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : first < 0xF8 ? 3 : -1;
    if (more < 0 || end_ - at_ < more || first < 0x20) {
      return false;
    }
    std::uint32_t point = more == 0 ? first : first & (0x3FU >> static_cast<unsigned>(more));
    for (int i = 0; i < more; ++i) {
      const auto next = static_cast<unsigned char>(*at_++);
      if ((next & 0xC0U) != 0x80U) {
        return false;
      }
      point = point << 6U | (next & 0x3FU);
    }
    if (point >= 0x10000) {
      text += static_cast<KorvaneChar>(0xD800 + ((point - 0x10000) >> 10U));
      point = 0xDC00 + (point & 0x3FFU);
    }
    text += static_cast<KorvaneChar>(point);
    return true;
  }

  const char* at_;
  const char* end_;
};

/** ASCII as the library's texts hold it. */
inline Text FromAscii(std::string_view ascii) {
  return {ascii.begin(), ascii.end()};
}

inline bool ReadHex(const Text& digits, std::uint64_t& number) {
  const std::string ascii(digits.begin(), digits.end());
  const auto [behind, problem] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), number, 16);
  return problem == std::errc() && behind == ascii.data() + ascii.size();
}

/** A text, or its units as hexadecimal numbers where a text would not bring back every one. */
template <std::size_t size>
bool ReadText(const Json& json, KorvaneChar (&units)[size]) {
  Text text = json.text;
  for (const Json& each : json[FromAscii("units")].items) {
    std::uint64_t unit = 0;
    if (!ReadHex(each.text, unit) || unit > 0xFFFF) {
      return false;
    }
    text += static_cast<KorvaneChar>(unit);
  }
  std::copy_n(text.begin(), std::min(text.size(), size), units);
  return text.size() <= size && (json.kind == Json::Kind::Text ? text.size() < size : json.kind == Json::Kind::Object);
}

inline bool ReadNumber(const Json& json, std::int32_t& number) {
  number = static_cast<std::int32_t>(json.number);
  return json.kind == Json::Kind::Number && number == json.number;
}

inline bool ReadMethod(const Json& json, std::int32_t& method) {
  constexpr std::pair<std::string_view, Method> kWords[] = {{"undecided", Method::Undecided},
                                                            {"automation-id", Method::AutomationId},
                                                            {"coordinates", Method::Coordinates},
                                                            {"tree-path", Method::TreePath}};
  for (const auto& [word, meaning] : kWords) {
    if (json.text == FromAscii(word)) {
      method = static_cast<std::int32_t>(meaning);
      return true;
    }
  }
  return ReadNumber(json, method);
}

inline bool ReadRecord(const Json& json, TargetRecord& record) {
  const auto field = [](const Json& of, std::string_view name) -> const Json& { return of[FromAscii(name)]; };
  std::uint64_t window = 0;
  bool whole = ReadMethod(field(json, "identificationMethod"), record.identificationMethod) &&
               ReadText(field(json, "automationId"), record.automationId) && ReadNumber(field(json, "x"), record.x) &&
               ReadNumber(field(json, "y"), record.y) && ReadHex(field(json, "hwnd").text, window) &&
               ReadNumber(field(json, "pathLength"), record.pathLength);
  record.hwnd = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window));
  const std::vector<Json>& levels = field(json, "levels").items;
  whole = whole && levels.size() <= KORVANE_MAX_PATH_LEVELS;
  for (std::size_t i = 0; whole && i < levels.size(); ++i) {
    whole = ReadNumber(field(levels[i], "controlType"), record.controlTypes[i]) &&
            ReadText(field(levels[i], "className"), record.classNames[i]) &&
            ReadNumber(field(levels[i], "childIndex"), record.childIndices[i]);
  }
  return whole;
}

/** Null: there is none of that name, or of that number from 1. */
inline const Json* FindStep(const Json& recording, const Text& name, int number) {
  const std::vector<Json>& steps = recording[FromAscii("steps")].items;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (number == 0 ? steps[i][FromAscii("name")].text == name : i + 1 == static_cast<std::size_t>(number)) {
      return &steps[i];
    }
  }
  return nullptr;
}

inline Code TargetOfStep(Target& target, const std::filesystem::path& file, const Text& name, int number,
                         milliseconds timeout) {
  std::ifstream opened(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(opened), {}};
  Json recording;
  TargetRecord record{};
  if (!JsonReader(bytes).Read(recording)) {
    return Code::InvalidArgument;
  }
  const Json* const step = FindStep(recording, name, number);
  const std::vector<Json>& windows = recording[FromAscii("windows")].items;
  if (step == nullptr || !ReadRecord((*step)[FromAscii("target")], record)) {
    return Code::InvalidArgument;
  }
  const Json& named = (*step)[FromAscii("window")];
  const std::int64_t place = named.kind == Json::Kind::Number ? named.number : 1;
  if (place < 1 || place > static_cast<std::int64_t>(windows.size())) {
    return Code::InvalidArgument;
  }
  const Json& wanted = windows[static_cast<std::size_t>(place - 1)];
  Window window;
  const Code code = WaitForWindow(
      window, {wanted[FromAscii("title")].text, wanted[FromAscii("class")].text, wanted[FromAscii("process")].text},
      timeout);
  if (code == Code::Ok) {
    target = window.TargetOf(record);
  }
  return code;
}

}  // namespace detail

/**
 * The target of the first step of that name in a recording of the companion program, in its window, which is waited
 * for.
 * @return Code::NotFound the window is not there in time; Code::InvalidArgument the file cannot be read, is no
 * recording, or has no such step with a target, or several windows have the name.
 */
inline Code TargetOfStep(Target& target, const std::filesystem::path& recording, const Text& name,
                         milliseconds timeout = milliseconds(5000)) {
  return name.empty() ? Code::InvalidArgument : detail::TargetOfStep(target, recording, name, 0, timeout);
}
/** The same by the step's number, from 1. */
inline Code TargetOfStep(Target& target, const std::filesystem::path& recording, int number,
                         milliseconds timeout = milliseconds(5000)) {
  return number < 1 ? Code::InvalidArgument : detail::TargetOfStep(target, recording, {}, number, timeout);
}

}  // namespace korvane

#endif /* KORVANE_RECORDING_HPP */
