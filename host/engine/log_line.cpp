#include "host/engine/log_line.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace host {

namespace {

// Where a text that the library quotes is cut, in characters.
constexpr std::size_t kLongestQuote = 100;
// How much of a text getTargetText shows.
constexpr std::size_t kShownText = 50;

bool Take(std::string_view& line, std::string_view words) {
  if (!line.starts_with(words)) {
    return false;
  }
  line.remove_prefix(words.size());
  return true;
}

// What the line begins with, when it is of this form; in it, 0 stands for any digit.
std::optional<std::string_view> TakeForm(std::string_view& line, std::string_view form) {
  const std::string_view taken = line.substr(0, form.size());
  const bool fits = std::equal(taken.begin(), taken.end(), form.begin(), form.end(), [](char character, char wanted) {
    return wanted == '0' ? character >= '0' && character <= '9' : character == wanted;
  });
  if (!fits) {
    return std::nullopt;
  }
  line.remove_prefix(form.size());
  return taken;
}

std::optional<int> NumberOf(std::string_view text) {
  int number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  return problem == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// Takes the line apart at the last such words: what is behind them, and what is left before them.
std::optional<std::string_view> TakeBehindLast(std::string_view& line, std::string_view words) {
  const auto at = line.rfind(words);
  if (at == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view behind = line.substr(at + words.size());
  line = line.substr(0, at);
  return behind;
}

// "ACTION | Result: N | Duration: Nms"; the action may hold such words, too.
std::optional<LogLine> ReadHostLine(std::string_view time, std::string_view text) {
  const auto duration = TakeBehindLast(text, " | Duration: ");
  const auto result = TakeBehindLast(text, " | Result: ");
  if (!duration || !duration->ends_with("ms") || !result) {
    return std::nullopt;
  }
  const auto milliseconds = NumberOf(duration->substr(0, duration->size() - 2));
  const auto code = NumberOf(*result);
  if (!milliseconds || !code) {
    return std::nullopt;
  }
  return LogLine{LogLine::Kind::Host, time, text, *code, *milliseconds};
}

// "FUNCTION Code:N[ Details:REASON]"
std::optional<LogLine> ReadError(std::string_view time, std::string_view text) {
  const std::string_view function = text.substr(0, text.find(' '));
  text.remove_prefix(function.size());
  if (!Take(text, " Code:")) {
    return std::nullopt;
  }
  const auto code = NumberOf(text.substr(0, text.find(' ')));
  if (!code) {
    return std::nullopt;
  }
  text.remove_prefix(std::min(text.find(' '), text.size()));
  return LogLine{LogLine::Kind::Error, time, function, *code, 0, Take(text, " Details:") ? text : std::string_view()};
}

std::size_t CharactersIn(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char unit) { return (unit & 0xC0) != 0x80; }));
}

class Reader {
 public:
  explicit Reader(const std::vector<std::string>& lines) : lines_(lines) {}

  std::vector<LogLine> Read() {
    while (at_ < lines_.size()) {
      ReadOne();
      ++at_;
    }
    return std::move(read_);
  }

 private:
  void ReadOne() {
    std::string_view line = lines_[at_];
    if (const auto time = TakeForm(line, "0000-00-00 00:00:00.000")) {
      if (Take(line, " ERROR ")) {
        Keep(ReadError(*time, line));
      } else if (Take(line, " - ")) {
        const auto read = ReadHostLine(*time, line);
        Keep(read ? read : ReadLongAction(*time, line));
      } else if (line == " VERIFY_SIMPLE_DEBUG:") {
        PassOverComparison();
      }
    } else if (const auto shortTime = TakeForm(line, "00-00 00:00:00.000 ")) {
      Keep(LogLine{LogLine::Kind::Traced, *shortTime, line});
      PassOverText(line);
    } else if (const auto second = TakeForm(line, "[0000-00-00 00:00:00]")) {
      if (Take(line, " [CACHE HIT] ")) {
        Keep(LogLine{LogLine::Kind::Remembered, second->substr(1, second->size() - 2), line});
      }
    }
  }

  void Keep(const std::optional<LogLine>& line) {
    if (line) {
      read_.push_back(*line);
    }
  }

  // An action with line feeds in it, up to its end. One that has none was cut off with the file.
  std::optional<LogLine> ReadLongAction(std::string_view time, std::string_view begin) {
    for (std::size_t end = at_ + 1; end < lines_.size(); ++end) {
      if (auto line = ReadHostLine(time, lines_[end])) {
        at_ = end;
        line->text = begin;
        return line;
      }
    }
    return std::nullopt;
  }

  // Both texts begin in it; its last line says whether they match.
  void PassOverComparison() {
    while (at_ + 1 < lines_.size() && !lines_[at_].starts_with("  Match: ")) {
      const std::string_view line = lines_[++at_];
      for (const std::string_view label : {"  Clipboard: \"", "  Expected: \"", "    Clip: \"", "    Exp:  \""}) {
        if (line.starts_with(label)) {
          PassOverQuote(line.substr(label.size()));
        }
      }
    }
  }

  void PassOverText(std::string_view line) {
    constexpr std::string_view kQuoted = "[pasteToTargetWithVerifyEx] Clipboard text retrieved: \"";
    constexpr std::string_view kShown = " - Text: ";
    if (Take(line, kQuoted)) {
      PassOverQuote(line);
    } else if (line.starts_with("[GetElementAtPoint] Found element with name: '")) {
      PassOverName();
    } else if (const auto text = line.find(kShown);
               line.starts_with("getTargetText: SUCCESS with ") && text != std::string_view::npos) {
      PassOverShown(CharactersIn(line.substr(text + kShown.size())));
    }
  }

  // The text may hold quotes at the ends of lines as well: of those within its length, the last counts.
  void PassOverQuote(std::string_view begin) {
    constexpr std::string_view kEnd = "...\"";
    std::optional<std::size_t> last;
    std::size_t characters = CharactersIn(begin);
    for (std::size_t end = at_; !last || characters <= kLongestQuote + kEnd.size();) {
      if ((end == at_ ? begin : std::string_view(lines_[end])).ends_with('"')) {
        last = end;
      }
      if (++end == lines_.size() || end > at_ + kLongestQuote) {
        break;
      }
      characters += 1 + CharactersIn(lines_[end]);
    }
    at_ = last.value_or(at_);
  }

  // A name is written whole, however long it is; the function that wrote it goes on at once, unless the log ends there.
  void PassOverName() {
    constexpr std::string_view kNext[] = {"[GetElementAtPoint] Element ", "[GetElementAtPoint] SUCCESS"};
    for (std::size_t end = at_; end + 1 < lines_.size(); ++end) {
      std::string_view next = lines_[end + 1];
      if (lines_[end].ends_with('\'') && TakeForm(next, "00-00 00:00:00.000 ") &&
          (next.starts_with(kNext[0]) || next.starts_with(kNext[1]))) {
        at_ = end;
        return;
      }
    }
  }

  // Nothing tells where a text without quotes ends, but no more of it than this is shown.
  void PassOverShown(std::size_t shown) {
    while (at_ + 1 < lines_.size() && shown + 1 + CharactersIn(lines_[at_ + 1]) <= kShownText) {
      shown += 1 + CharactersIn(lines_[++at_]);
    }
    const std::string_view next = at_ + 1 < lines_.size() ? std::string_view(lines_[at_ + 1]) : std::string_view();
    constexpr std::string_view kCut = "...";
    if (next.ends_with(kCut) && shown + 1 + CharactersIn(next) - kCut.size() == kShownText) {
      ++at_;
    }
  }

  const std::vector<std::string>& lines_;
  std::size_t at_ = 0;
  std::vector<LogLine> read_;
};

}  // namespace

std::vector<LogLine> ReadLog(const std::vector<std::string>& lines) {
  return Reader(lines).Read();
}

}  // namespace host
