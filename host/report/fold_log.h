// The log of a step that waited, made short: what it wrote again and again is told once, with how often.
#pragma once

#include <string>
#include <vector>

namespace host {

// Lines that repeat the ones before them, but for their time stamps and durations, become one line that says so.
std::vector<std::string> FoldLog(const std::vector<std::string>& lines);

}  // namespace host
