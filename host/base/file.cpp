#include "host/base/file.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <random>

#include "host/base/failure.h"

namespace host {

namespace filesystem = std::filesystem;

namespace {

std::string ReasonOf(int error, const char* unknown) {
  return error != 0 ? std::generic_category().message(error) : unknown;
}

}  // namespace

filesystem::path PathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

std::string ReadFile(const std::string& name) {
  std::error_code ignored;
  if (filesystem::is_directory(PathOf(name), ignored)) {
    throw Failure(ExitCode::BadFile, name + ": is a folder, not a file");
  }
  errno = 0;
  std::ifstream file(PathOf(name), std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), {});
  if (!file) {
    throw Failure(ExitCode::BadFile, name + ": cannot be read: " + ReasonOf(errno, "read error"));
  }
  return bytes;
}

std::string ReadFileFrom(const std::string& name, std::uintmax_t offset) {
  std::ifstream file(PathOf(name), std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset));
  return file ? std::string((std::istreambuf_iterator<char>(file)), {}) : std::string();
}

void WriteFile(const std::string& name, const std::string& bytes) {
  const auto failed = [&](const std::string& why) {
    return Failure(ExitCode::CannotWrite, name + ": cannot be written: " + why);
  };
  if (std::error_code ignored; filesystem::is_directory(PathOf(name), ignored)) {
    throw failed("is a folder");
  }
  const std::string temporary = name + "." + std::to_string(std::random_device{}()) + ".tmp";
  errno = 0;
  std::ofstream file(PathOf(temporary), std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code problem;
  if (!file) {
    const std::string why = ReasonOf(errno, "write error");
    filesystem::remove(PathOf(temporary), problem);
    throw failed(why);
  }
  filesystem::rename(PathOf(temporary), PathOf(name), problem);
  if (problem) {
    const std::string why = problem.message();
    filesystem::remove(PathOf(temporary), problem);
    throw failed(why);
  }
}

std::string TemporaryFile(const std::string& ending) {
  std::error_code problem;
  const auto folder = filesystem::temp_directory_path(problem);
  const std::string name = "korvane-" + std::to_string(std::random_device{}()) + ending;
  const std::u8string path = ((problem ? filesystem::path(".") : folder) / name).u8string();
  return {path.begin(), path.end()};
}

}  // namespace host
