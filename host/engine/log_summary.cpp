#include "host/engine/log_summary.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace host {

namespace {

constexpr std::string_view kTimePattern = "0000-00-00 00:00:00.000";

// The instant at the line's beginning, which is taken off; empty when it begins otherwise.
std::string_view TakeTime(std::string_view& line) {
  if (line.size() < kTimePattern.size()) {
    return {};
  }
  const std::string_view time = line.substr(0, kTimePattern.size());
  for (std::size_t i = 0; i < time.size(); ++i) {
    const bool isDigit = time[i] >= '0' && time[i] <= '9';
    if (kTimePattern[i] == '0' ? !isDigit : time[i] != kTimePattern[i]) {
      return {};
    }
  }
  line.remove_prefix(time.size());
  return time;
}

bool Take(std::string_view& line, std::string_view words) {
  if (!line.starts_with(words)) {
    return false;
  }
  line.remove_prefix(words.size());
  return true;
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
std::optional<LoggedStep> ReadStep(std::string_view time, std::string_view line) {
  const auto duration = TakeBehindLast(line, " | Duration: ");
  const auto result = TakeBehindLast(line, " | Result: ");
  if (!duration || !duration->ends_with("ms") || !result) {
    return std::nullopt;
  }
  const auto milliseconds = NumberOf(duration->substr(0, duration->size() - 2));
  const auto code = NumberOf(*result);
  if (!milliseconds || !code) {
    return std::nullopt;
  }
  return LoggedStep{std::string(time), std::string(line), *code, *milliseconds};
}

// "FUNCTION Code:N[ Details:REASON]", as "FUNCTION (N): REASON".
std::optional<std::string> ReadError(std::string_view line) {
  constexpr std::string_view kCode = " Code:";
  const auto at = line.find(kCode);
  if (at == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view function = line.substr(0, at);
  line.remove_prefix(at + kCode.size());
  const std::string_view code = line.substr(0, line.find(' '));
  if (!NumberOf(code)) {
    return std::nullopt;
  }
  line.remove_prefix(code.size());
  std::string reason = std::string(function) + " (" + std::string(code) + ")";
  return Take(line, " Details:") ? reason + ": " + std::string(line) : reason;
}

}  // namespace

LogSummary Summarise(const std::vector<std::string>& lines) {
  LogSummary summary;
  summary.lines = lines.size();
  for (const std::string& whole : lines) {
    if (whole.find("[CACHE HIT]") != std::string::npos) {
      ++summary.cacheHits;
    } else if (whole.find("[FindTargetElement] Starting") != std::string::npos) {
      ++summary.searches;
    }
    std::string_view line = whole;
    const std::string_view time = TakeTime(line);
    if (time.empty()) {
      continue;
    }
    if (Take(line, " - ")) {
      if (auto step = ReadStep(time, line)) {
        if (step->result < 0) {
          ++summary.failuresByCode[step->result];
        }
        summary.steps.push_back(std::move(*step));
      }
    } else if (Take(line, " ERROR ")) {
      if (const auto error = ReadError(line)) {
        ++summary.errorsByReason[*error];
      }
    }
  }
  return summary;
}

}  // namespace host
