#include "host/base/file.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <random>

#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace filesystem = std::filesystem;
using system_file::Kind;

namespace {

constexpr std::uintmax_t kMostBytes = 1U << 30;

Failure CannotWrite(const std::string& name, const std::string& why) {
  return {ExitCode::CannotWrite, name + ": cannot be written: " + why};
}

std::string RandomName(const std::string& ending) {
  std::random_device random;
  return "korvane-" + std::to_string(random()) + std::to_string(random()) + ending;
}

// Where links lead to, also when there is nothing.
filesystem::path Followed(filesystem::path path) {
  constexpr int kMostLinks = 40;
  std::error_code problem;
  for (int i = 0; i < kMostLinks && filesystem::is_symlink(filesystem::symlink_status(path, problem)); ++i) {
    const filesystem::path target = filesystem::read_symlink(path, problem);
    path = target.is_absolute() ? target : path.parent_path() / target;
  }
  return path;
}

}  // namespace

filesystem::path PathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

std::string NameOf(const filesystem::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

std::string ReadFile(const std::string& name) {
  std::error_code ignored;
  if (filesystem::is_directory(PathOf(name), ignored)) {
    throw Failure(ExitCode::BadFile, name + ": is a folder, not a file");
  }
  errno = 0;
  std::ifstream file(PathOf(name), std::ios::binary);
  std::string bytes;
  constexpr std::size_t kAtOnce = 1U << 16;
  for (std::size_t got = kAtOnce; file && got == kAtOnce;) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kAtOnce);
    file.read(bytes.data() + before, kAtOnce);
    got = static_cast<std::size_t>(file.gcount());
    bytes.resize(before + got);
    if (bytes.size() > kMostBytes) {
      throw Failure(ExitCode::BadFile, name + ": is larger than " + std::to_string(kMostBytes >> 20) + " MB");
    }
  }
  if (!file.is_open() || file.bad()) {
    const std::string why = errno != 0 ? std::generic_category().message(errno) : "read error";
    throw Failure(ExitCode::BadFile, name + ": cannot be read: " + why);
  }
  return bytes;
}

std::string ReadFileFrom(const std::string& name, std::uintmax_t offset) {
  std::ifstream file(PathOf(name), std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset));
  return file ? std::string((std::istreambuf_iterator<char>(file)), {}) : std::string();
}

TemporaryFile::TemporaryFile(const std::string& ending) {
  std::error_code problem;
  const auto folder = filesystem::temp_directory_path(problem);
  const filesystem::path path = (problem ? filesystem::path(".") : folder) / RandomName(ending);
  name_ = host::NameOf(path);
  if (!system_file::CreatePrivate(path, problem)) {
    throw CannotWrite(name_, problem.message());
  }
}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  filesystem::remove(PathOf(name_), ignored);
}

OutputFile::OutputFile(const std::string& name) : name_(name), path_(Followed(PathOf(name))) {
  std::error_code problem;
  const Kind kind = system_file::KindOf(path_);
  if (kind == Kind::Folder) {
    throw CannotWrite(name_, "is a folder");
  }
  stream_ = kind == Kind::Stream;
  if (kind != Kind::Missing) {
    file_ = system_file::OpenToWrite(path_, problem);
    if (!file_) {
      throw CannotWrite(name_, problem.message());
    }
    // Other names of a file with several would keep the old content.
    if (stream_ || filesystem::hard_link_count(path_, problem) > 1) {
      return;
    }
  }
  Prepare();
}

OutputFile::~OutputFile() {
  if (!temporary_.empty()) {
    std::error_code ignored;
    file_ = {};
    filesystem::remove(temporary_, ignored);
  }
}

void OutputFile::Prepare() {
  std::error_code problem;
  const filesystem::path temporary = path_.parent_path() / RandomName(".tmp");
  if (auto file = system_file::CreatePrivate(temporary, problem)) {
    file_ = std::move(file);
    temporary_ = temporary;
  } else if (!file_) {
    throw CannotWrite(name_, problem.message());
  }
  // Otherwise the folder takes no new file, but the file that is there can be written.
}

void OutputFile::Write(const std::string& bytes) {
  std::error_code problem;
  if (!stream_) {
    if (!file_) {
      Prepare();
    }
    system_file::Empty(file_, problem);
  }
  if (!problem) {
    system_file::WriteAll(file_, bytes, problem);
  }
  if (!problem && !temporary_.empty()) {
    system_file::Save(file_);
    file_ = {};
    system_file::Replace(path_, temporary_, problem);
    if (!problem) {
      temporary_.clear();
    }
  }
  if (problem) {
    throw CannotWrite(name_, problem.message());
  }
}

AppendedFile::AppendedFile(const std::string& name) : name_(name) {
  std::error_code problem;
  const filesystem::path path = Followed(PathOf(name));
  if (system_file::KindOf(path) == Kind::Folder) {
    throw CannotWrite(name_, "is a folder");
  }
  file_ = system_file::OpenToAppend(path, problem);
  if (!file_) {
    throw CannotWrite(name_, problem.message());
  }
}

void AppendedFile::Write(const std::string& bytes) {
  std::error_code problem;
  system_file::WriteAll(file_, bytes, problem);
  if (problem) {
    throw CannotWrite(name_, problem.message());
  }
}

GrowingFile::GrowingFile(const std::string& name) : name_(name), path_(Followed(PathOf(name))) {
  const Kind kind = system_file::KindOf(path_);
  if (kind == Kind::Folder) {
    throw CannotWrite(name_, "is a folder");
  }
  isStream_ = kind == Kind::Stream;
  isNew_ = kind == Kind::Missing;
  file_ = isNew_ ? system_file::CreatePrivate(path_, problem_) : system_file::OpenToWrite(path_, problem_);
  if (!file_) {
    throw CannotWrite(name_, problem_.message());
  }
}

GrowingFile::~GrowingFile() {
  if (isNew_ && !begun_) {
    std::error_code ignored;
    file_ = {};
    filesystem::remove(path_, ignored);
  }
}

void GrowingFile::Append(std::string_view bytes) {
  if (!problem_ && !std::exchange(begun_, true) && !isStream_) {
    system_file::Empty(file_, problem_);
  }
  if (!problem_) {
    system_file::WriteAll(file_, bytes, problem_);
  }
}

void GrowingFile::Finish() const {
  if (problem_) {
    throw CannotWrite(name_, problem_.message());
  }
}

bool AreSameFile(const std::string& left, const std::string& right) {
  if (system_file::KindOf(PathOf(left)) == Kind::Stream) {
    return false;
  }
  std::error_code ignored;
  if (filesystem::equivalent(PathOf(left), PathOf(right), ignored)) {
    return true;
  }
  // Two that are yet to be written.
  const auto place = [](const std::string& name) {
    std::error_code unknown;
    return filesystem::weakly_canonical(Followed(PathOf(name)), unknown);
  };
  return !left.empty() && place(left) == place(right) && !place(left).empty();
}

}  // namespace host
