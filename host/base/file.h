// Files, named in UTF-8: inputs as a whole, outputs that are opened before anything is done and written when it is
// done.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "host/base/system_file.h"

namespace host {

std::filesystem::path PathOf(const std::string& utf8);
std::string NameOf(const std::filesystem::path& path);

// Failure: BadFile, also for what never ends.
std::string ReadFile(const std::string& name);
// What stands behind the given place; empty when the file is not there.
std::string ReadFileFrom(const std::string& name, std::uintmax_t offset);

// A new file in the folder for temporary ones, for its owner alone; gone with its owner. Failure: CannotWrite
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& ending);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::string& Name() const {
    return name_;
  }

 private:
  std::string name_;
};

// A file that gets its content as a whole: a reader never sees half of it, and a failure leaves what was there. A link
// is followed; a device or a pipe is written to, and never replaced. A new file is for its owner alone, one that is
// replaced keeps its mode.
class OutputFile {
 public:
  // Opens it, so that whatever prevents writing is known now; what is in it stays. Failure: CannotWrite
  explicit OutputFile(const std::string& name);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // May be called again with more; a device or pipe gets everything each time. Failure: CannotWrite
  void Write(const std::string& bytes);
  bool IsStream() const {
    return stream_;
  }

 private:
  void Prepare();

  std::string name_;
  std::filesystem::path path_;       // with links followed
  std::filesystem::path temporary_;  // beside it; empty: written in place
  system_file::File file_;
  bool stream_ = false;
};

// A file that grows. Failure: CannotWrite
class AppendedFile {
 public:
  explicit AppendedFile(const std::string& name);
  // Failure: CannotWrite
  void Write(const std::string& bytes);

 private:
  std::string name_;
  system_file::File file_;
};

// A file that is there from its first part on, so that whatever ends the program leaves what was written until then.
// Until the first part, what was in it stays. A new file is for its owner alone.
class GrowingFile {
 public:
  // Opens it. Failure: CannotWrite
  explicit GrowingFile(const std::string& name);
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;
  ~GrowingFile();

  // After a part that cannot be written, nothing more is.
  void Append(std::string_view bytes);
  // Failure: CannotWrite, when a part could not be written
  void Finish() const;

 private:
  std::string name_;
  std::filesystem::path path_;
  system_file::File file_;
  std::error_code problem_;
  bool isNew_ = false;
  bool isStream_ = false;
  bool begun_ = false;
};

// Whether two names lead to one file, which is there; a device is none.
bool AreSameFile(const std::string& left, const std::string& right);

}  // namespace host
