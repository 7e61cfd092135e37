// Captured targets in a file: a host may keep them across processes, as they are.
#pragma once

#include <string>
#include <vector>

#include "korvane/korvane.h"

namespace demo {

bool SaveRecords(const std::string& path, const std::vector<TargetRecord>& records);
// Empty when the file is not there or is cut off.
std::vector<TargetRecord> LoadRecords(const std::string& path);

}  // namespace demo
