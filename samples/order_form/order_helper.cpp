// What other people and programs do around the order form, each as a process of its own:
//
//   order_helper press-escape AFTER | click AFTER X Y | set-text AFTER WINDOW TEXT | hold-clipboard MILLISECONDS
//                | cover X Y WIDTH HEIGHT | print-clipboard FILE
#include <cstdint>
#include <cwchar>
#include <fstream>
#include <string>
#include <vector>

#include "platform/platform.h"

// Needs the platform's own headers before it.
#include <shellapi.h>

namespace {

using Arguments = std::vector<std::wstring>;

int NumberAt(const Arguments& arguments, std::size_t index) {
  return std::stoi(arguments.at(index));
}

void SayReady() {
  if (const HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, L"order-helper-ready")) {
    SetEvent(ready);
    CloseHandle(ready);
  }
}

void SleepFor(int milliseconds) {
  Sleep(static_cast<DWORD>(milliseconds));
}

void PressEscape(const Arguments& arguments) {
  // The state of a key is answered from a cache for up to 50 ms.
  constexpr int kHeldMilliseconds = 120;
  SayReady();
  SleepFor(NumberAt(arguments, 1));
  INPUT key{};
  key.type = INPUT_KEYBOARD;
  key.ki.wVk = VK_ESCAPE;
  SendInput(1, &key, sizeof key);
  SleepFor(kHeldMilliseconds);
  key.ki.dwFlags = KEYEVENTF_KEYUP;
  SendInput(1, &key, sizeof key);
}

void Click(const Arguments& arguments) {
  SayReady();
  SleepFor(NumberAt(arguments, 1));
  SetCursorPos(NumberAt(arguments, 2), NumberAt(arguments, 3));
  INPUT button{};
  button.type = INPUT_MOUSE;
  button.mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  SendInput(1, &button, sizeof button);
  button.mi.dwFlags = MOUSEEVENTF_LEFTUP;
  SendInput(1, &button, sizeof button);
}

void SetWindowTextLater(const Arguments& arguments) {
  SayReady();
  SleepFor(NumberAt(arguments, 1));
  const auto window = reinterpret_cast<HWND>(static_cast<std::intptr_t>(std::stoll(arguments.at(2))));
  SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(arguments.at(3).c_str()));
}

HWND MakeWindow(int x, int y, int width, int height, DWORD style) {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = DefWindowProcW;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.hbrBackground = GetSysColorBrush(COLOR_HIGHLIGHT);
  windowClass.lpszClassName = L"Cover";
  RegisterClassExW(&windowClass);
  return CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, L"Cover", L"Cover", style, x, y, width, height, nullptr,
                         nullptr, windowClass.hInstance, nullptr);
}

void ServeMessagesFor(DWORD milliseconds) {
  const DWORD start = GetTickCount();
  MSG message{};
  while (GetTickCount() - start < milliseconds) {
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      DispatchMessageW(&message);
    }
    Sleep(5);
  }
}

void Cover(const Arguments& arguments) {
  MakeWindow(NumberAt(arguments, 1), NumberAt(arguments, 2), NumberAt(arguments, 3), NumberAt(arguments, 4),
             WS_POPUP | WS_VISIBLE);
  // On the screen before anybody relies on it.
  constexpr DWORD kMapped = 500;
  ServeMessagesFor(kMapped);
  SayReady();
  constexpr DWORD kLongest = 60000;
  ServeMessagesFor(kLongest);
}

void HoldClipboard(const Arguments& arguments) {
  // With a window as owner: two programs may hold the clipboard at once when both opened it without one.
  const HWND owner = MakeWindow(0, 0, 1, 1, WS_POPUP);
  if (OpenClipboard(owner)) {
    SayReady();
    SleepFor(NumberAt(arguments, 1));
    CloseClipboard();
  }
}

void AppendData(std::string& bytes, UINT format, std::size_t (*size)(HANDLE block, const void* data)) {
  if (const HANDLE block = GetClipboardData(format)) {
    const void* data = GlobalLock(block);
    bytes.append(static_cast<const char*>(data), size(block, data));
    GlobalUnlock(block);
  }
}

// The text's length in units, the text, the whole HTML block.
void PrintClipboard(const Arguments& arguments) {
  SayReady();
  std::string text;
  std::string html;
  if (OpenClipboard(MakeWindow(0, 0, 1, 1, WS_POPUP))) {
    AppendData(text, CF_UNICODETEXT,
               [](HANDLE, const void* data) { return std::wcslen(static_cast<const WCHAR*>(data)) * sizeof(WCHAR); });
    AppendData(html, RegisterClipboardFormatW(L"HTML Format"),
               [](HANDLE block, const void*) { return std::size_t{GlobalSize(block)}; });
    CloseClipboard();
  }
  const std::wstring& file = arguments.at(1);
  std::ofstream stream(std::string(file.begin(), file.end()), std::ios::binary);
  const auto units = static_cast<std::uint32_t>(text.size() / sizeof(WCHAR));
  stream.write(reinterpret_cast<const char*>(&units), sizeof units);
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  stream.write(html.data(), static_cast<std::streamsize>(html.size()));
}

struct Mode {
  const wchar_t* name;
  void (*run)(const Arguments&);
};
constexpr Mode kModes[] = {{L"press-escape", PressEscape},     {L"click", Click},
                           {L"set-text", SetWindowTextLater},  {L"cover", Cover},
                           {L"hold-clipboard", HoldClipboard}, {L"print-clipboard", PrintClipboard}};

}  // namespace

int main() {
  int count = 0;
  WCHAR** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  const Arguments arguments(words + 1, words + count);
  for (const Mode& mode : kModes) {
    if (!arguments.empty() && arguments.front() == mode.name) {
      mode.run(arguments);
      return 0;
    }
  }
  return 1;
}
