#include <windows.h>

#include "host/base/text.h"
#include "host/world/machine.h"

namespace host::world {

namespace {

// A value of the key that holds the system's version: the functions for it tell each program what its manifest knows.
std::string Version(const WCHAR* value) {
  WCHAR text[128] = {};
  DWORD size = sizeof text;
  const LSTATUS result = RegGetValueW(HKEY_LOCAL_MACHINE, TEXT("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"),
                                      value, RRF_RT_REG_SZ, nullptr, text, &size);
  return result == ERROR_SUCCESS ? Utf8(text) : "";
}

// "8.0" where Wine is the system; empty elsewhere.
std::string WineVersion() {
  const HMODULE system = GetModuleHandleW(TEXT("ntdll.dll"));
  using GetVersion = const char*(CDECL*)();
  const auto get = reinterpret_cast<GetVersion>(reinterpret_cast<void*>(GetProcAddress(system, "wine_get_version")));
  return get == nullptr ? "" : get();
}

}  // namespace

std::string MachineName() {
  WCHAR name[256] = {};
  DWORD size = static_cast<DWORD>(std::size(name));
  return GetComputerNameExW(ComputerNameDnsHostname, name, &size) ? Utf8(name) : "";
}

std::string SystemName() {
  const std::string wine = WineVersion();
  const std::string name = Version(TEXT("ProductName"));
  return (name.empty() ? "Windows" : name) + " " + Version(TEXT("CurrentBuildNumber")) +
         (wine.empty() ? "" : ", Wine " + wine);
}

}  // namespace host::world
