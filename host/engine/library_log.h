// The library's own log, opened by this program, which reads back what each step wrote.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/file.h"
#include "host/world/elements.h"

namespace host {

// Lines of a log as UTF-8, without their ends: the library writes one byte up to U+00FF and \uXXXX beyond.
std::vector<std::string> LogLines(const std::string& bytes);

// While it lives, the library is set up and writes to the file, and elements can be asked; a file without a name is
// temporary. One at a time.
class LibraryLog {
 public:
  explicit LibraryLog(const std::string& file);
  LibraryLog(const LibraryLog&) = delete;
  LibraryLog& operator=(const LibraryLog&) = delete;
  ~LibraryLog();

  // What was written since the last call.
  std::vector<std::string> NewLines();
  const std::string& File() const {
    return file_;
  }

 private:
  std::optional<TemporaryFile> temporary_;
  std::string file_;
  std::uintmax_t read_ = 0;
  std::optional<world::ElementAccess> elements_;
};

}  // namespace host
