// What a log tells as a whole: the steps that hosts wrote into it, errors by code, hits of remembered points.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace host {

struct LoggedStep {
  std::string time;
  std::string action;
  int result = 0;
  int milliseconds = 0;
};

struct LogSummary {
  std::size_t lines = 0;
  std::vector<LoggedStep> steps;
  std::map<int, int> failuresByCode;          // of steps
  std::map<std::string, int> errorsByReason;  // "clickTarget (-1): Target element not found"
  int cacheHits = 0;
  int searches = 0;
};

LogSummary Summarise(const std::vector<std::string>& lines);

}  // namespace host
