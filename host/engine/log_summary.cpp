#include "host/engine/log_summary.h"

#include <regex>

namespace host {

LogSummary Summarise(const std::vector<std::string>& lines) {
  static const std::string kTime = "^(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3})";
  static const std::regex kStep(kTime + " - (.*) \\| Result: (-?\\d{1,10}) \\| Duration: (-?\\d{1,10})ms$");
  static const std::regex kError(kTime + " ERROR (\\S+) Code:(-?\\d{1,10})(?: Details:(.*))?$");
  // Longer lines hold long texts and would only tire the expressions.
  constexpr std::size_t kLongest = 2000;
  LogSummary summary;
  summary.lines = lines.size();
  for (const std::string& line : lines) {
    if (line.find("[CACHE HIT]") != std::string::npos) {
      ++summary.cacheHits;
    } else if (line.find("[FindTargetElement] Starting") != std::string::npos) {
      ++summary.searches;
    }
    std::smatch match;
    if (line.size() > kLongest) {
      continue;
    }
    if (std::regex_match(line, match, kStep)) {
      const int result = static_cast<int>(std::stoll(match[3]));
      summary.steps.push_back({match[1], match[2], result, static_cast<int>(std::stoll(match[4]))});
      if (result < 0) {
        ++summary.failuresByCode[result];
      }
    } else if (std::regex_match(line, match, kError)) {
      const std::string reason = match[2].str() + " (" + match[3].str() + ")";
      ++summary.errorsByReason[match[4].length() == 0 ? reason : reason + ": " + match[4].str()];
    }
  }
  return summary;
}

}  // namespace host
