// The library's own log, opened by this program, which reads back what each step wrote.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/file.h"
#include "host/recording/secrets.h"
#include "host/world/elements.h"

namespace host {

// Lines of a log as UTF-8, without their ends: the library writes one byte up to U+00FF and \uXXXX beyond.
std::vector<std::string> LogLines(const std::string& bytes);

// While it lives, the library is set up and writes to the file, and elements can be asked; a file without a name is
// temporary. One at a time.
class LibraryLog {
 public:
  // What is kept in the file, and read back, is free of the secrets.
  explicit LibraryLog(std::string file, Secrets secrets = {});
  LibraryLog(const LibraryLog&) = delete;
  LibraryLog& operator=(const LibraryLog&) = delete;
  ~LibraryLog();

  // What was written since the last call.
  std::vector<std::string> NewLines();
  const std::string& File() const {
    return file_;
  }

 private:
  Secrets secrets_;
  std::optional<TemporaryFile> temporary_;
  std::optional<AppendedFile> kept_;  // where lines go when the library must not write there itself
  std::string file_;
  std::uintmax_t read_ = 0;
  std::optional<world::ElementAccess> elements_;
};

}  // namespace host
