// The part of the Win32 and COM interface that the library calls, for machines without Windows. Names, layouts and
// values are the platform's. Nothing is declared here that src/ does not call, so that an unplanned platform call does
// not compile and an unanswered one does not link.
#pragma once

#include <cstddef>
#include <cstdint>

// ---- Types ----

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using UINT = std::uint32_t;
using BOOL = int;
using SHORT = std::int16_t;
using LONGLONG = std::int64_t;
using ULONG_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using HRESULT = std::int32_t;
using WCHAR = char16_t;
using LPVOID = void*;

#define TEXT(literal) u##literal
#define WINAPI
#define CALLBACK
#define STDMETHODCALLTYPE

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;

struct HWND__;
using HWND = HWND__*;
struct HHOOK__;
using HHOOK = HHOOK__*;
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
struct HICON__;
using HCURSOR = HICON__*;
using HANDLE = void*;
using HGLOBAL = void*;

struct POINT {
  LONG x;
  LONG y;
};

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
  friend bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using KNOWNFOLDERID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFKNOWNFOLDERID = const KNOWNFOLDERID&;

// ---- Kernel ----

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;
inline constexpr DWORD PROCESS_VM_READ = 0x0010;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x0400;
inline constexpr DWORD MAX_PATH = 260;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD FILE_APPEND_DATA = 0x0004;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});
inline constexpr UINT GMEM_MOVEABLE = 2;

using LPTHREAD_START_ROUTINE = DWORD (*)(LPVOID);

extern "C" {
void Sleep(DWORD milliseconds);
DWORD GetTickCount();
BOOL QueryPerformanceCounter(LARGE_INTEGER* count);
BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);
void GetLocalTime(SYSTEMTIME* time);
void GetSystemTimeAsFileTime(FILETIME* time);
BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local);
BOOL FileTimeToSystemTime(const FILETIME* file, SYSTEMTIME* calendar);
HANDLE CreateThread(void* security, SIZE_T stackSize, LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                    DWORD* threadId);
BOOL TerminateThread(HANDLE thread, DWORD exitCode);
HANDLE CreateEventW(void* security, BOOL manualReset, BOOL initiallySet, const WCHAR* name);
BOOL SetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
BOOL CloseHandle(HANDLE object);
DWORD GetCurrentThreadId();
DWORD GetLastError();
HMODULE GetModuleHandleW(const WCHAR* name);
BOOL GetModuleHandleExW(DWORD flags, const WCHAR* nameOrAddress, HMODULE* module);
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
DWORD K32GetModuleFileNameExW(HANDLE process, HMODULE module, WCHAR* path, DWORD size);
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* text, int length, char* bytes, int size,
                        const char* defaultCharacter, BOOL* usedDefault);
BOOL CreateDirectoryW(const WCHAR* path, void* security);
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD attributes,
                   HANDLE templateFile);
BOOL WriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* written, void* overlapped);
HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
LPVOID GlobalLock(HGLOBAL block);
BOOL GlobalUnlock(HGLOBAL block);
HGLOBAL GlobalFree(HGLOBAL block);
}

// ---- COM ----

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT RPC_E_CHANGED_MODE = static_cast<HRESULT>(0x80010106);
constexpr bool SUCCEEDED(HRESULT result) {
  return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
  return result < 0;
}

inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr KNOWNFOLDERID FOLDERID_LocalAppData = {
    0xF1B32785, 0x6FBA, 0x4FCF, {0x9D, 0x55, 0x7B, 0x8E, 0x7F, 0x15, 0x70, 0x91}};

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

using BSTR = WCHAR*;
using VARTYPE = std::uint16_t;
using VARIANT_BOOL = SHORT;
enum : VARTYPE { VT_EMPTY = 0, VT_I4 = 3, VT_R8 = 5, VT_BSTR = 8, VT_BOOL = 11, VT_UNKNOWN = 13 };

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONG lVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    BSTR bstrVal;
    IUnknown* punkVal;
    void* reserved[2];
  };
};

extern "C" {
HRESULT CoInitializeEx(LPVOID reserved, DWORD model);
void CoUninitialize();
HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, LPVOID* object);
LPVOID CoTaskMemAlloc(SIZE_T size);
void CoTaskMemFree(LPVOID block);
BSTR SysAllocString(const WCHAR* text);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);
void VariantInit(VARIANT* value);
HRESULT VariantClear(VARIANT* value);
HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD flags, HANDLE token, WCHAR** path);
}

// ---- Windows, messages, hooks, cursors ----

inline constexpr int SW_SHOW = 5;
inline constexpr int SW_RESTORE = 9;
inline constexpr UINT GA_ROOT = 2;
inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT EM_REPLACESEL = 0x00C2;
inline constexpr int WH_MOUSE_LL = 14;
inline const WCHAR* const IDC_ARROW = reinterpret_cast<const WCHAR*>(std::uintptr_t{32512});
inline const WCHAR* const IDC_CROSS = reinterpret_cast<const WCHAR*>(std::uintptr_t{32515});

struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
};

struct MSLLHOOKSTRUCT {
  POINT pt;
  DWORD mouseData;
  DWORD flags;
  DWORD time;
  ULONG_PTR dwExtraInfo;
};

using HOOKPROC = LRESULT (*)(int code, WPARAM wParam, LPARAM lParam);

extern "C" {
HWND WindowFromPoint(POINT point);
HWND GetParent(HWND window);
HWND GetAncestor(HWND window, UINT which);
BOOL IsWindow(HWND window);
BOOL GetWindowRect(HWND window, RECT* rect);
BOOL IsIconic(HWND window);
BOOL ShowWindow(HWND window, int command);
BOOL SetForegroundWindow(HWND window);
HWND GetForegroundWindow();
HWND SetActiveWindow(HWND window);
HWND SetFocus(HWND window);
BOOL AttachThreadInput(DWORD attach, DWORD to, BOOL attachThem);
DWORD GetWindowThreadProcessId(HWND window, DWORD* processId);
int GetWindowTextW(HWND window, WCHAR* text, int size);
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
HWND GetDesktopWindow();
BOOL SetPropW(HWND window, const WCHAR* name, HANDLE value);
HANDLE GetPropW(HWND window, const WCHAR* name);
HANDLE RemovePropW(HWND window, const WCHAR* name);
HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD threadId);
LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam);
BOOL UnhookWindowsHookEx(HHOOK hook);
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageW(const MSG* message);
BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int exitCode);
HCURSOR LoadCursorW(HINSTANCE module, const WCHAR* name);
HCURSOR SetCursor(HCURSOR cursor);
}

// ---- Input and clipboard ----

inline constexpr DWORD INPUT_MOUSE = 0;
inline constexpr DWORD INPUT_KEYBOARD = 1;
inline constexpr DWORD KEYEVENTF_KEYUP = 2;
inline constexpr DWORD MOUSEEVENTF_LEFTDOWN = 0x0002;
inline constexpr DWORD MOUSEEVENTF_LEFTUP = 0x0004;
inline constexpr DWORD MOUSEEVENTF_ABSOLUTE = 0x8000;
inline constexpr int VK_SHIFT = 0x10;
inline constexpr int VK_CONTROL = 0x11;
inline constexpr int VK_MENU = 0x12;
inline constexpr int VK_ESCAPE = 0x1B;
inline constexpr int VK_INSERT = 0x2D;
inline constexpr int VK_F2 = 0x71;
inline constexpr int VK_F3 = 0x72;
inline constexpr int VK_F4 = 0x73;
inline constexpr UINT CF_UNICODETEXT = 13;

struct MOUSEINPUT {
  LONG dx;
  LONG dy;
  DWORD mouseData;
  DWORD dwFlags;
  DWORD time;
  ULONG_PTR dwExtraInfo;
};

struct KEYBDINPUT {
  WORD wVk;
  WORD wScan;
  DWORD dwFlags;
  DWORD time;
  ULONG_PTR dwExtraInfo;
};

struct INPUT {
  DWORD type;
  union {
    MOUSEINPUT mi;
    KEYBDINPUT ki;
  };
};

extern "C" {
UINT SendInput(UINT count, INPUT* inputs, int size);
void mouse_event(DWORD flags, DWORD dx, DWORD dy, DWORD data, ULONG_PTR extraInfo);
BOOL SetCursorPos(int x, int y);
BOOL GetCursorPos(POINT* point);
SHORT VkKeyScanW(WCHAR character);
SHORT GetAsyncKeyState(int virtualKey);
BOOL OpenClipboard(HWND owner);
BOOL CloseClipboard();
BOOL EmptyClipboard();
HANDLE SetClipboardData(UINT format, HANDLE block);
HANDLE GetClipboardData(UINT format);
UINT RegisterClipboardFormatW(const WCHAR* name);
}
