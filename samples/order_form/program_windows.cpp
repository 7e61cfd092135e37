#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

#include "samples/order_form/program.h"

namespace order_form {

namespace {

constexpr DWORD kLongestStart = 20000;
constexpr const WCHAR* kReadyEvent = L"order-helper-ready";

struct Process {
  HANDLE handle = nullptr;
  DWORD id = 0;

  bool Start(const Text& commandLine) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION made{};
    Text writable = commandLine;
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &made)) {
      return false;
    }
    CloseHandle(made.hThread);
    handle = made.hProcess;
    id = made.dwProcessId;
    return true;
  }

  void WaitForEnd() {
    WaitForSingleObject(handle, kLongestStart);
    CloseHandle(handle);
    handle = nullptr;
  }

  void Kill() {
    if (handle != nullptr) {
      TerminateProcess(handle, 0);
      WaitForEnd();
    }
  }
};

Process g_form;
Process g_cover;
HWND g_window = nullptr;

// A program beside the one or the DLL that this code is in.
Text Beside(const WCHAR* program) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&Beside), &module);
  WCHAR path[MAX_PATH] = {};
  GetModuleFileNameW(module, path, MAX_PATH);
  const Text own = path;
  return L"\"" + own.substr(0, own.rfind(L'\\') + 1) + program + L"\"";
}

Text Number(long long number) {
  return std::to_wstring(number);
}

// Starts a helper and waits until it says that it is under way.
Process StartHelper(const Text& arguments) {
  const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, kReadyEvent);
  ResetEvent(ready);
  Process helper;
  if (!helper.Start(Beside(L"order_helper.exe") + L" " + arguments) ||
      WaitForSingleObject(ready, kLongestStart) != WAIT_OBJECT_0) {
    std::fwprintf(stderr, L"order_helper.exe %ls: not under way after %lu ms\n", arguments.c_str(), kLongestStart);
  }
  CloseHandle(ready);
  return helper;
}

// A helper that goes on by itself.
void Begin(const Text& arguments) {
  const Process helper = StartHelper(arguments);
  CloseHandle(helper.handle);
}

// The form may be open in another process as well.
HWND WindowOfProcess(DWORD process) {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, kWindowClass, nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == process) {
      break;
    }
  }
  return window;
}

HWND FindControl(HWND parent, int id) {
  for (HWND child = GetWindow(parent, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    if (GetDlgCtrlID(child) == id) {
      return child;
    }
    if (const HWND found = FindControl(child, id)) {
      return found;
    }
  }
  return nullptr;
}

Point CentreOfRect(const RECT& rect) {
  return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

bool Program::Start(int x, int y) {
  if (!g_form.Start(Beside(L"order_form.exe") + L" --at " + Number(x) + L"," + Number(y))) {
    return false;
  }
  // Up, in front and at rest: the window manager places and activates a window some time after it was made.
  constexpr int kRestfulLooks = 20;
  const DWORD start = GetTickCount();
  RECT last{};
  for (int looks = 0; looks < kRestfulLooks; ++looks) {
    if (GetTickCount() - start > kLongestStart) {
      return false;
    }
    Sleep(20);
    RECT now{};
    g_window = WindowOfProcess(g_form.id);
    const bool ready = g_window != nullptr && IsWindowVisible(g_window) && GetForegroundWindow() == g_window &&
                       GetWindowRect(g_window, &now) && EqualRect(&now, &last);
    looks = ready ? looks : 0;
    last = now;
  }
  return true;
}

void Program::Stop() {
  g_form.Kill();
  g_window = nullptr;
}

HWND Program::Window() const {
  return g_window;
}

Point Program::CentreOf(ControlId control) const {
  RECT rect{};
  GetWindowRect(FindControl(g_window, control), &rect);
  return CentreOfRect(rect);
}

Point Program::CentreOfRow(int row) const {
  const HWND list = FindControl(g_window, kShippingList);
  const auto height = static_cast<LONG>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
  RECT client{};
  GetClientRect(list, &client);
  POINT centre{client.right / 2, height * row + height / 2};
  ClientToScreen(list, &centre);
  return {centre.x, centre.y};
}

Text Program::TextOf(ControlId control) const {
  const HWND window = FindControl(g_window, control);
  const auto length = static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
  Text text(length + 1, L'\0');
  const auto copied = SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(copied));
  return text;
}

void PressEscapeAfter(int milliseconds) {
  Begin(L"press-escape " + Number(milliseconds));
}

void ClickAfter(int milliseconds, Point point) {
  Begin(L"click " + Number(milliseconds) + L" " + Number(point.x) + L" " + Number(point.y));
}

void SetTextAfter(int milliseconds, ControlId control, const Text& text) {
  const auto window = reinterpret_cast<std::intptr_t>(FindControl(g_window, control));
  Begin(L"set-text " + Number(milliseconds) + L" " + Number(window) + L" \"" + text + L"\"");
}

void HoldClipboard(int milliseconds) {
  Begin(L"hold-clipboard " + Number(milliseconds));
}

Cover::Cover(Point corner, int width, int height) {
  g_cover = StartHelper(L"cover " + Number(corner.x) + L" " + Number(corner.y) + L" " + Number(width) + L" " +
                        Number(height));
}

Cover::~Cover() {
  g_cover.Kill();
}

Clipboard ReadClipboard() {
  const Text file = ScratchFile("clipboard.bin");
  Process reader = StartHelper(L"print-clipboard \"" + file + L"\"");
  reader.WaitForEnd();
  std::ifstream stream(std::string(file.begin(), file.end()), std::ios::binary);
  std::uint32_t units = 0;
  stream.read(reinterpret_cast<char*>(&units), sizeof units);
  Clipboard clipboard;
  clipboard.text.resize(units);
  stream.read(reinterpret_cast<char*>(clipboard.text.data()), static_cast<std::streamsize>(units * sizeof(WCHAR)));
  clipboard.html.assign(std::istreambuf_iterator<char>(stream), {});
  return clipboard;
}

Text ScratchFile(const char* name) {
  WCHAR folder[MAX_PATH] = {};
  GetTempPathW(MAX_PATH, folder);
  const std::string narrow = name;
  return folder + Text(narrow.begin(), narrow.end());
}

// The picture is taken from outside: whoever started this program watches for the request and answers by removing it.
void TakePicture(const char* file) {
  const std::string request = std::string(file) + ".request";
  std::ofstream(request).put('\n');
  for (int i = 0; i < 250 && std::ifstream(request); ++i) {
    Sleep(20);
  }
}

}  // namespace order_form
