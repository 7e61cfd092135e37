#include "host/engine/log_summary.h"

#include "host/engine/log_line.h"

namespace host {

LogSummary Summarise(const std::vector<std::string>& lines) {
  LogSummary summary;
  summary.lines = lines.size();
  for (const LogLine& line : ReadLog(lines)) {
    switch (line.kind) {
      case LogLine::Kind::Traced:
        summary.searches += line.text.starts_with("[FindTargetElement] Starting") ? 1 : 0;
        break;
      case LogLine::Kind::Remembered:
        ++summary.cacheHits;
        break;
      case LogLine::Kind::Host:
        if (line.code < 0) {
          ++summary.failuresByCode[line.code];
        }
        summary.steps.push_back({std::string(line.time), std::string(line.text), line.code, line.milliseconds});
        break;
      case LogLine::Kind::Error:
        ++summary.errorsByReason[std::string(line.text) + " (" + std::to_string(line.code) + ")" +
                                 (line.details.empty() ? "" : ": " + std::string(line.details))];
        break;
    }
  }
  return summary;
}

}  // namespace host
