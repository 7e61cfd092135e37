// Input that the library does not offer, and why input would not arrive.
#include <windows.h>

#include <memory>

#include "host/world/world.h"

namespace host::world {

namespace {

struct HandleCloser {
  void operator()(HANDLE handle) const {
    CloseHandle(handle);
  }
};
using Handle = std::unique_ptr<void, HandleCloser>;

struct DesktopCloser {
  void operator()(HDESK desktop) const {
    CloseDesktop(desktop);
  }
};

bool Send(std::vector<INPUT> inputs) {
  return SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)) == inputs.size();
}

INPUT MouseInput(DWORD flags) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  return input;
}

// Keys beside the number block share their codes with its keys; this bit tells them apart.
bool IsExtended(int key) {
  return (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE || key == VK_LWIN ||
         key == VK_APPS;
}

INPUT KeyInput(int key, bool down) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = static_cast<WORD>(key);
  input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_VSC));
  input.ki.dwFlags = (down ? 0u : KEYEVENTF_KEYUP) | (IsExtended(key) ? KEYEVENTF_EXTENDEDKEY : 0u);
  return input;
}

// Whether the process runs as administrator; nothing when that cannot be told. One that does lets none that does not
// look at its token.
std::optional<bool> IsElevated(DWORD id) {
  const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
  HANDLE opened = nullptr;
  if (process == nullptr || !OpenProcessToken(process.get(), TOKEN_QUERY, &opened)) {
    return GetLastError() == ERROR_ACCESS_DENIED ? std::optional(true) : std::nullopt;
  }
  const Handle token(opened);
  TOKEN_ELEVATION elevation{};
  DWORD size = 0;
  return GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &size)
             ? std::optional(elevation.TokenIsElevated != 0)
             : std::nullopt;
}

}  // namespace

bool Click(Point point, int times) {
  std::vector<INPUT> inputs;
  for (int i = 0; i < times; ++i) {
    inputs.push_back(MouseInput(MOUSEEVENTF_LEFTDOWN));
    inputs.push_back(MouseInput(MOUSEEVENTF_LEFTUP));
  }
  return SetCursorPos(point.x, point.y) && Send(std::move(inputs));
}

bool SendKeys(const std::vector<int>& keys) {
  std::vector<INPUT> inputs;
  for (const int key : keys) {
    inputs.push_back(KeyInput(key, true));
  }
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
    inputs.push_back(KeyInput(*key, false));
  }
  return Send(std::move(inputs));
}

bool HasKeysFor(KorvaneChar unit) {
  return VkKeyScanW(unit) != -1;
}

std::optional<std::string> WhyNoInput() {
  const std::unique_ptr<HDESK__, DesktopCloser> desktop(OpenInputDesktop(0, FALSE, GENERIC_READ));
  WCHAR name[64] = {};
  DWORD needed = 0;
  if (desktop == nullptr) {
    return GetLastError() == ERROR_CALL_NOT_IMPLEMENTED
               ? std::nullopt
               : std::optional<std::string>("the desktop is locked, or its session is disconnected");
  }
  if (GetUserObjectInformationW(desktop.get(), UOI_NAME, name, sizeof name, &needed) &&
      lstrcmpiW(name, L"Default") != 0) {
    return "the desktop is locked, or a screen saver is in front";
  }
  return std::nullopt;
}

std::optional<std::string> WhyOutOfReach(HWND window) {
  DWORD id = 0;
  GetWindowThreadProcessId(window, &id);
  const bool weAre = IsElevated(GetCurrentProcessId()).value_or(false);
  return id != 0 && !weAre && IsElevated(id).value_or(false)
             ? std::optional<std::string>("its program runs as administrator, and this one does not")
             : std::nullopt;
}

Screen TheScreen() {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
  const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  const HDC context = GetDC(nullptr);
  const int dpi = GetDeviceCaps(context, LOGPIXELSX);
  ReleaseDC(nullptr, context);
  return {{left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)}, dpi};
}

}  // namespace host::world
