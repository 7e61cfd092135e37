// What the standard library does not offer of files: who may read them, what kind they are, why something failed.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace host::system_file {

// An open file; closed with its owner.
class File {
 public:
  File() = default;
  explicit File(int descriptor) : descriptor_(descriptor) {}
  File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  File& operator=(File&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~File();

  explicit operator bool() const {
    return descriptor_ >= 0;
  }
  int Descriptor() const {
    return descriptor_;
  }

 private:
  int descriptor_ = -1;
};

enum class Kind { Missing, File, Folder, Stream };
// Of what a name leads to, through links.
Kind KindOf(const std::filesystem::path& path);

// Each of these leaves the reason of a failure in `problem`, and otherwise clears it.
File OpenToWrite(const std::filesystem::path& path, std::error_code& problem);
File OpenToAppend(const std::filesystem::path& path, std::error_code& problem);
// A file that was not there, for its owner alone.
File CreatePrivate(const std::filesystem::path& path, std::error_code& problem);
void WriteAll(const File& file, std::string_view bytes, std::error_code& problem);
void Empty(const File& file, std::error_code& problem);
// Until it is safe on the disk. A device knows no such thing.
void Save(const File& file);
// Puts one file into the place of another, whose mode and owner it takes; there need not be another one.
void Replace(const std::filesystem::path& replaced, const std::filesystem::path& by, std::error_code& problem);

}  // namespace host::system_file
