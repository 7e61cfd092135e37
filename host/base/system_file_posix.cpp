#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "host/base/system_file.h"

namespace host::system_file {

namespace filesystem = std::filesystem;

namespace {

constexpr mode_t kOwnerAlone = 0600;

File Opened(const filesystem::path& path, int flags, std::error_code& problem) {
  const int descriptor = open(path.c_str(), flags | O_WRONLY | O_CLOEXEC | O_NOCTTY, kOwnerAlone);
  problem = descriptor < 0 ? std::error_code(errno, std::generic_category()) : std::error_code();
  return File(descriptor);
}

}  // namespace

File::~File() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

Kind KindOf(const filesystem::path& path) {
  std::error_code ignored;
  switch (filesystem::status(path, ignored).type()) {
    case filesystem::file_type::none:
    case filesystem::file_type::not_found:
      return Kind::Missing;
    case filesystem::file_type::regular:
      return Kind::File;
    case filesystem::file_type::directory:
      return Kind::Folder;
    default:
      return Kind::Stream;
  }
}

File OpenToWrite(const filesystem::path& path, std::error_code& problem) {
  return Opened(path, 0, problem);
}

File OpenToAppend(const filesystem::path& path, std::error_code& problem) {
  return Opened(path, O_CREAT | O_APPEND, problem);
}

File CreatePrivate(const filesystem::path& path, std::error_code& problem) {
  return Opened(path, O_CREAT | O_EXCL, problem);
}

void WriteAll(const File& file, std::string_view bytes, std::error_code& problem) {
  problem.clear();
  while (!bytes.empty()) {
    const ssize_t written = write(file.Descriptor(), bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      problem = {errno, std::generic_category()};
      return;
    }
    bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
  }
}

void Empty(const File& file, std::error_code& problem) {
  const bool emptied = ftruncate(file.Descriptor(), 0) == 0 && lseek(file.Descriptor(), 0, SEEK_SET) == 0;
  problem = emptied ? std::error_code() : std::error_code(errno, std::generic_category());
}

void Save(const File& file) {
  fsync(file.Descriptor());
}

void Replace(const filesystem::path& replaced, const filesystem::path& by, std::error_code& problem) {
  struct stat before{};
  if (stat(replaced.c_str(), &before) == 0) {
    // Another owner is kept where that is allowed; the mode after it, which it may change.
    [[maybe_unused]] const int owned = chown(by.c_str(), before.st_uid, before.st_gid);
    chmod(by.c_str(), before.st_mode & 07777);
  }
  filesystem::rename(by, replaced, problem);
}

}  // namespace host::system_file
