// A host that knows only LoadLibrary and FreeLibrary: the library comes and goes in every state it can be in.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "korvane/korvane.h"
#include "platform/platform.h"

namespace windows_tests {
namespace {

// A copy of the library under a name of its own, so that it is not the one this program is linked with.
std::wstring LibraryCopy() {
  WCHAR own[MAX_PATH] = {};
  GetModuleFileNameW(GetModuleHandleW(L"korvane.dll"), own, MAX_PATH);
  WCHAR folder[MAX_PATH] = {};
  GetTempPathW(MAX_PATH, folder);
  const std::wstring copy = std::wstring(folder) + L"korvane_copy.dll";
  CopyFileW(own, copy.c_str(), FALSE);
  return copy;
}

template <class Function>
Function* Address(HMODULE library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

struct State {
  bool monitor;
  bool automation;
  bool log;
  bool cleanup;
};

void Enter(HMODULE library, const State& state) {
  if (state.log) {
    Address<decltype(initializeLog)>(library, "initializeLog")(L"unload.log");
  }
  if (state.automation) {
    EXPECT_EQ(Address<decltype(initializeAutomation)>(library, "initializeAutomation")(), KORVANE_OK);
  }
  if (state.monitor) {
    Address<decltype(startCancelMonitor)>(library, "startCancelMonitor")();
  }
  if (state.cleanup) {
    Address<decltype(cleanupAutomation)>(library, "cleanupAutomation")();
  }
}

TEST(LoadUnloadTest, TheLibraryComesAndGoesInEveryState) {
  const std::wstring path = LibraryCopy();
  constexpr int kCycles = 25;
  std::vector<DWORD> unloads;
  for (int bits = 0; bits < 16; ++bits) {
    const State state{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
    for (int cycle = 0; cycle < kCycles; ++cycle) {
      const HMODULE library = LoadLibraryW(path.c_str());
      ASSERT_NE(library, nullptr);
      Enter(library, state);
      // With and without time for the monitor to get going.
      Sleep(cycle % 3 == 0 ? 15 : 0);
      const DWORD start = GetTickCount();
      ASSERT_TRUE(FreeLibrary(library));
      unloads.push_back(GetTickCount() - start);
      ASSERT_EQ(GetModuleHandleW(L"korvane_copy.dll"), nullptr) << "still loaded, state " << bits;
    }
  }
  std::printf("%zu unloads, the longest took %lu ms\n", unloads.size(),
              *std::max_element(unloads.begin(), unloads.end()));
  // The bound of the wait for the monitor: reaching it would mean that the wait was in vain.
  EXPECT_LT(*std::max_element(unloads.begin(), unloads.end()), 300u);
}

struct CloseEvent {
  void operator()(void* event) const {
    CloseHandle(event);
  }
};
using Event = std::unique_ptr<void, CloseEvent>;

DWORD WINAPI LoadSlowly(void* /*unused*/) {
  FreeLibrary(LoadLibraryW(L"slow_attach.dll"));
  return 0;
}

// While another thread holds the loader's lock no thread can end, so that a stop must not wait for that.
TEST(LoadUnloadTest, AStopDoesNotWaitForTheLoader) {
  const std::wstring path = LibraryCopy();
  const Event attaching(CreateEventW(nullptr, TRUE, FALSE, L"korvane tests: attaching"));
  const Event finish(CreateEventW(nullptr, TRUE, FALSE, L"korvane tests: finish attaching"));
  const HMODULE library = LoadLibraryW(path.c_str());
  ASSERT_NE(library, nullptr);
  auto* const stop = Address<decltype(stopCancelMonitor)>(library, "stopCancelMonitor");
  Address<decltype(startCancelMonitor)>(library, "startCancelMonitor")();
  const Event loader(CreateThread(nullptr, 0, LoadSlowly, nullptr, 0, nullptr));
  ASSERT_EQ(WaitForSingleObject(attaching.get(), 10000), WAIT_OBJECT_0);
  const DWORD start = GetTickCount();
  stop();
  const DWORD stopped = GetTickCount() - start;
  // It would come back by itself when the other library has attached, which it does now.
  SetEvent(finish.get());
  EXPECT_EQ(WaitForSingleObject(loader.get(), 10000), WAIT_OBJECT_0);
  EXPECT_LT(stopped, 300u) << "the bound of the wait: reaching it would mean that the wait was in vain";
  EXPECT_TRUE(FreeLibrary(library));
  EXPECT_EQ(GetModuleHandleW(L"korvane_copy.dll"), nullptr) << "it was pinned";
}

TEST(LoadUnloadTest, APlugInEndsTheLibraryWhileItIsUnloaded) {
  const std::wstring path = LibraryCopy();
  const HMODULE plugIn = LoadLibraryW(L"plug_in.dll");
  ASSERT_NE(plugIn, nullptr);
  Address<void(const WCHAR*)>(plugIn, "Begin")(path.c_str());
  Sleep(30);
  const DWORD start = GetTickCount();
  ASSERT_TRUE(FreeLibrary(plugIn));
  EXPECT_LT(GetTickCount() - start, 300u);
  EXPECT_EQ(GetModuleHandleW(L"plug_in.dll"), nullptr);
  EXPECT_EQ(GetModuleHandleW(L"korvane_copy.dll"), nullptr);
}

// Runs this program again with one hidden test, which leaves the process in the given state.
DWORD ExitCodeOfChild(int bits) {
  WCHAR own[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, own, MAX_PATH);
  SetEnvironmentVariableW(L"LEAVE_IN_STATE", std::to_wstring(bits).c_str());
  std::wstring command =
      L"\"" + std::wstring(own) + L"\" --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_LeavesTheProcess";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION child{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &child)) {
    return 1;
  }
  constexpr DWORD kLongest = 20000;
  DWORD code = 2;
  if (WaitForSingleObject(child.hProcess, kLongest) == WAIT_OBJECT_0) {
    GetExitCodeProcess(child.hProcess, &code);
  } else {
    TerminateProcess(child.hProcess, 3);
  }
  CloseHandle(child.hThread);
  CloseHandle(child.hProcess);
  return code;
}

TEST(LoadUnloadTest, TheProcessEndsInEveryState) {
  for (int bits = 0; bits < 16; ++bits) {
    EXPECT_EQ(ExitCodeOfChild(bits), 77u) << "state " << bits;
  }
}

TEST(LoadUnloadTest, DISABLED_LeavesTheProcess) {
  WCHAR text[8] = {};
  GetEnvironmentVariableW(L"LEAVE_IN_STATE", text, 8);
  const int bits = _wtoi(text);
  Enter(LoadLibraryW(LibraryCopy().c_str()), {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0});
  ExitProcess(77);
}

}  // namespace
}  // namespace windows_tests
