#include "samples/demo/records.h"

#include <fstream>

namespace demo {

bool SaveRecords(const std::string& path, const std::vector<TargetRecord>& records) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(records.data()),
             static_cast<std::streamsize>(records.size() * sizeof(TargetRecord)));
  return file.flush().good();
}

std::vector<TargetRecord> LoadRecords(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = file ? static_cast<std::size_t>(file.tellg()) : 0;
  if (size % sizeof(TargetRecord) != 0) {
    return {};
  }
  std::vector<TargetRecord> records(size / sizeof(TargetRecord));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(records.data()), static_cast<std::streamsize>(size));
  return file ? records : std::vector<TargetRecord>{};
}

}  // namespace demo
