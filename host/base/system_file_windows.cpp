#include <windows.h>

// These need the platform's own header before them.
#include <fcntl.h>
#include <io.h>
#include <sddl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/base/system_file.h"

namespace host::system_file {

namespace filesystem = std::filesystem;

namespace {

std::error_code LastError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
}

struct LocalMemory {
  LocalMemory() = default;
  LocalMemory(const LocalMemory&) = delete;
  LocalMemory& operator=(const LocalMemory&) = delete;
  ~LocalMemory() {
    LocalFree(block);
  }
  void* block = nullptr;
};

// The user that this process belongs to, as security descriptors name it; empty when that is not told.
std::wstring UserId() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
    return {};
  }
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<BYTE> user(std::max<std::size_t>(size, sizeof(TOKEN_USER)));
  WCHAR* id = nullptr;
  const bool known = GetTokenInformation(token, TokenUser, user.data(), size, &size) &&
                     ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &id);
  CloseHandle(token);
  const std::wstring text = known ? id : L"";
  LocalFree(id);
  return text;
}

File Opened(const filesystem::path& path, DWORD access, DWORD disposition, SECURITY_ATTRIBUTES* security,
            std::error_code& problem) {
  const HANDLE handle = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    security, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  problem = handle == INVALID_HANDLE_VALUE ? LastError() : std::error_code();
  return handle == INVALID_HANDLE_VALUE ? File() : File(_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY));
}

HANDLE HandleOf(const File& file) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(file.Descriptor()));
}

}  // namespace

File::~File() {
  if (descriptor_ >= 0) {
    _close(descriptor_);
  }
}

Kind KindOf(const filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return Kind::Folder;
  }
  // Names such as NUL and CON are devices in every folder; only an open one tells.
  std::error_code problem;
  const File file = Opened(path, GENERIC_WRITE, OPEN_EXISTING, nullptr, problem);
  if (!file) {
    return attributes == INVALID_FILE_ATTRIBUTES ? Kind::Missing : Kind::File;
  }
  return GetFileType(HandleOf(file)) == FILE_TYPE_DISK ? Kind::File : Kind::Stream;
}

File OpenToWrite(const filesystem::path& path, std::error_code& problem) {
  return Opened(path, GENERIC_WRITE, OPEN_EXISTING, nullptr, problem);
}

File OpenToAppend(const filesystem::path& path, std::error_code& problem) {
  if (KindOf(path) == Kind::Missing) {
    return CreatePrivate(path, problem);
  }
  if (KindOf(path) == Kind::Stream) {
    return OpenToWrite(path, problem);
  }
  return Opened(path, FILE_APPEND_DATA | SYNCHRONIZE, OPEN_EXISTING, nullptr, problem);
}

File CreatePrivate(const filesystem::path& path, std::error_code& problem) {
  // The system and its administrators read everything anyway; whom they let in is not for this program to say.
  const std::wstring rights = L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;" + UserId() + L")";
  LocalMemory descriptor;
  SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1, &descriptor.block,
                                                            nullptr)) {
    problem = LastError();
    return {};
  }
  security.lpSecurityDescriptor = descriptor.block;
  return Opened(path, GENERIC_WRITE, CREATE_NEW, &security, problem);
}

void WriteAll(const File& file, std::string_view bytes, std::error_code& problem) {
  problem.clear();
  constexpr std::size_t kAtOnce = 1U << 20;
  while (!bytes.empty()) {
    DWORD written = 0;
    if (!::WriteFile(HandleOf(file), bytes.data(), static_cast<DWORD>(std::min(bytes.size(), kAtOnce)), &written,
                     nullptr) ||
        written == 0) {
      problem = LastError();
      return;
    }
    bytes.remove_prefix(written);
  }
}

void Empty(const File& file, std::error_code& problem) {
  const HANDLE handle = HandleOf(file);
  const bool emptied = SetFilePointer(handle, 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(handle);
  problem = emptied ? std::error_code() : LastError();
}

void Save(const File& file) {
  FlushFileBuffers(HandleOf(file));
}

void Replace(const filesystem::path& replaced, const filesystem::path& by, std::error_code& problem) {
  // Some file systems only know how to move; what is replaced then loses its access rights, but nothing else.
  const bool isThere = GetFileAttributesW(replaced.c_str()) != INVALID_FILE_ATTRIBUTES;
  const bool done = (isThere && ReplaceFileW(replaced.c_str(), by.c_str(), nullptr, 0, nullptr, nullptr)) ||
                    MoveFileExW(by.c_str(), replaced.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  problem = done ? std::error_code() : LastError();
}

}  // namespace host::system_file
