// Files, folders, processes and modules: what the kernel names by handles and paths.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "standin/desktop/state.h"

namespace standin {

namespace {

// UTF-8 as the platform makes it: a lone half of a pair becomes the replacement character.
std::string ToUtf8(TextView text) {
  std::string bytes;
  const auto isHigh = [](WCHAR unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
  const auto isLow = [](WCHAR unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t point = text[i];
    if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1])) {
      point = 0x10000 + ((text[i] - 0xD800u) << 10) + (text[i + 1] - 0xDC00u);
      ++i;
    } else if (isHigh(text[i]) || isLow(text[i])) {
      point = 0xFFFD;
    }
    if (point < 0x80) {
      bytes += static_cast<char>(point);
    } else if (point < 0x800) {
      bytes += {static_cast<char>(0xC0 | (point >> 6)), static_cast<char>(0x80 | (point & 0x3F))};
    } else if (point < 0x10000) {
      bytes += {static_cast<char>(0xE0 | (point >> 12)), static_cast<char>(0x80 | ((point >> 6) & 0x3F)),
                static_cast<char>(0x80 | (point & 0x3F))};
    } else {
      bytes += {static_cast<char>(0xF0 | (point >> 18)), static_cast<char>(0x80 | ((point >> 12) & 0x3F)),
                static_cast<char>(0x80 | ((point >> 6) & 0x3F)), static_cast<char>(0x80 | (point & 0x3F))};
    }
  }
  return bytes;
}

// A Windows path as a path of this machine.
std::string MachinePath(const WCHAR* path) {
  std::string machine = ToUtf8(path);
  for (char& character : machine) {
    character = character == '\\' ? '/' : character;
  }
  return machine;
}

const char* KindOf(const KernelObject& object) {
  switch (object.kind) {
    case KernelObject::Kind::Thread:
      return "handle of a thread";
    case KernelObject::Kind::Event:
      return "handle of an event";
    case KernelObject::Kind::File:
      return "handle of a file";
    case KernelObject::Kind::Process:
      break;
  }
  return "handle of a process";
}

}  // namespace

HANDLE State::MakeHandle(KernelObject object) {
  const auto handle = reinterpret_cast<HANDLE>(nextHandle += 4);
  Give(handle, KindOf(object));
  handles[handle] = std::move(object);
  return handle;
}

void State::Close(const KernelObject& object) {
  if (object.kind == KernelObject::Kind::File) {
    close(object.file);
  }
}

void Host::SetLocalAppData(std::optional<std::string> folder) {
  const std::lock_guard guard(state_->mutex);
  state_->localAppData = std::move(folder);
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

BOOL CreateDirectoryW(const WCHAR* path, void* /*security*/) {
  STANDIN_CALL(CreateDirectoryW);
  return !call.Fails() && mkdir(MachinePath(path).c_str(), 0777) == 0;
}

// Answers only calls that open a file for appending and make it when it does not exist.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, void* /*security*/, DWORD disposition,
                   DWORD /*attributes*/, HANDLE /*templateFile*/) {
  STANDIN_CALL(CreateFileW);
  if (call.Fails() || access != FILE_APPEND_DATA || disposition != OPEN_ALWAYS) {
    return INVALID_HANDLE_VALUE;
  }
  call->Note("CreateFileW", "share=", share);
  const int file = open(MachinePath(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  return file < 0 ? INVALID_HANDLE_VALUE : call->MakeHandle({.kind = KernelObject::Kind::File, .file = file});
}

BOOL WriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* written, void* /*overlapped*/) {
  STANDIN_CALL(WriteFile);
  const auto entry = call->handles.find(file);
  if (call.Fails() || entry == call->handles.end() || entry->second.file < 0) {
    return FALSE;
  }
  const ssize_t count = write(entry->second.file, bytes, size);
  *written = count < 0 ? 0 : static_cast<DWORD>(count);
  return count >= 0;
}

BOOL CloseHandle(HANDLE object) {
  STANDIN_CALL(CloseHandle);
  const auto entry = call->handles.find(object);
  if (entry == call->handles.end()) {
    call->Misuse("closed an unknown handle");
    return FALSE;
  }
  call->Close(entry->second);
  call->Take(object, KindOf(entry->second));
  call->handles.erase(entry);
  return !call.Fails();
}

HMODULE GetModuleHandleW(const WCHAR* /*name*/) {
  STANDIN_CALL(GetModuleHandleW);
  return call.Fails() ? nullptr : reinterpret_cast<HMODULE>(std::uintptr_t{0x400000});
}

BOOL GetModuleHandleExW(DWORD flags, const WCHAR* /*nameOrAddress*/, HMODULE* module) {
  STANDIN_CALL(GetModuleHandleExW);
  if (call.Fails()) {
    return FALSE;
  }
  call->Note("GetModuleHandleExW", "flags=", flags);
  *module = reinterpret_cast<HMODULE>(std::uintptr_t{0x10000000});
  return TRUE;
}

HANDLE OpenProcess(DWORD access, BOOL /*inherit*/, DWORD processId) {
  STANDIN_CALL(OpenProcess);
  const auto process = call->processes.find(processId);
  if (call.Fails() || process == call->processes.end() || !process->second.canBeOpened) {
    return nullptr;
  }
  call->Note("OpenProcess", "access=", access);
  return call->MakeHandle({.kind = KernelObject::Kind::Process, .process = processId});
}

DWORD K32GetModuleFileNameExW(HANDLE process, HMODULE /*module*/, WCHAR* path, DWORD size) {
  STANDIN_CALL(K32GetModuleFileNameExW);
  const auto entry = call->handles.find(process);
  if (call.Fails() || size == 0 || entry == call->handles.end() || entry->second.kind != KernelObject::Kind::Process) {
    return 0;
  }
  const std::size_t length = call->processes.at(entry->second.process).path.copy(path, size - 1);
  path[length] = 0;
  return static_cast<DWORD>(length);
}

int WideCharToMultiByte(UINT /*codePage*/, DWORD /*flags*/, const WCHAR* text, int length, char* bytes, int size,
                        const char* /*defaultCharacter*/, BOOL* /*usedDefault*/) {
  STANDIN_CALL(WideCharToMultiByte);
  if (call.Fails()) {
    return 0;
  }
  const TextView view(text, length < 0 ? TextView(text).size() + 1 : static_cast<std::size_t>(length));
  const std::string converted = ToUtf8(view);
  if (converted.size() > static_cast<std::size_t>(size)) {
    return 0;
  }
  std::memcpy(bytes, converted.data(), converted.size());
  return static_cast<int>(converted.size());
}

HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID /*folder*/, DWORD /*flags*/, HANDLE /*token*/, WCHAR** path) {
  STANDIN_CALL(SHGetKnownFolderPath);
  *path = nullptr;
  if (call.Fails() || !call->localAppData) {
    return call.Failure();
  }
  const Text folder = std::filesystem::path(*call->localAppData).u16string();
  const std::size_t size = (folder.size() + 1) * sizeof(WCHAR);
  *path = static_cast<WCHAR*>(call->AllocateForTask(size));
  std::memcpy(*path, folder.c_str(), size);
  return S_OK;
}

}  // extern "C"
