#include <windows.h>

// These need the platform's own header before them.
#include <shellapi.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/world.h"

namespace host::world {

namespace {

constexpr int kMargin = 24;

Rect FromRect(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

std::string ClassNameOf(HWND window) {
  WCHAR name[256] = {};
  GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return Utf8(name);
}

BOOL CALLBACK Collect(HWND window, LPARAM list) {
  if (IsWindowVisible(window)) {
    if (auto described = Describe(window); described && !described->className.empty()) {
      reinterpret_cast<std::vector<Window>*>(list)->push_back(std::move(*described));
    }
  }
  return TRUE;
}

struct ScreenContext {
  HDC handle = GetDC(nullptr);
  ~ScreenContext() {
    ReleaseDC(nullptr, handle);
  }
};

struct MemoryContext {
  explicit MemoryContext(HDC like) : handle(CreateCompatibleDC(like)) {}
  MemoryContext(const MemoryContext&) = delete;
  MemoryContext& operator=(const MemoryContext&) = delete;
  ~MemoryContext() {
    DeleteDC(handle);
  }
  HDC handle;
};

struct Bitmap {
  Bitmap(HDC like, int width, int height) : handle(CreateCompatibleBitmap(like, width, height)) {}
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  ~Bitmap() {
    DeleteObject(handle);
  }
  HBITMAP handle;
};

Rect PictureArea(const Rect& window) {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
  const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  return {std::max(window.left - kMargin, left), std::max(window.top - kMargin, top),
          std::min(window.right + kMargin, left + GetSystemMetrics(SM_CXVIRTUALSCREEN)),
          std::min(window.bottom + kMargin, top + GetSystemMetrics(SM_CYVIRTUALSCREEN))};
}

// Rows from the top, three bytes a pixel; empty when the screen cannot be had.
std::vector<std::uint8_t> PixelsOf(const Rect& area) {
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  const ScreenContext screen;
  const MemoryContext memory(screen.handle);
  const Bitmap bitmap(screen.handle, width, height);
  const HGDIOBJ before = SelectObject(memory.handle, bitmap.handle);
  const BOOL copied = BitBlt(memory.handle, 0, 0, width, height, screen.handle, area.left, area.top, SRCCOPY);
  SelectObject(memory.handle, before);

  BITMAPINFO format{};
  format.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  if (!copied || GetDIBits(memory.handle, bitmap.handle, 0, static_cast<UINT>(height), pixels.data(), &format,
                           DIB_RGB_COLORS) != height) {
    return {};
  }
  std::vector<std::uint8_t> colours;
  colours.reserve(pixels.size() / 4 * 3);
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    colours.insert(colours.end(), {pixels[i + 2], pixels[i + 1], pixels[i]});
  }
  return colours;
}

void Append(void* bytes, void* data, int size) {
  static_cast<std::string*>(bytes)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
}

std::optional<std::string> Compressed(const std::uint8_t* pixels, int width, int height, int stride) {
  // Windows are made of even areas, which need no filter to become small: trying all of them takes most of the time.
  stbi_write_force_png_filter = 0;
  std::string png;
  if (!stbi_write_png_to_func(Append, &png, width, height, 3, pixels, stride)) {
    return std::nullopt;
  }
  return "data:image/png;base64," + Base64(png);
}

// Where two pictures of one size differ; empty where they do not.
Rect Difference(const std::vector<std::uint8_t>& left, const std::vector<std::uint8_t>& right, int width, int height) {
  Rect box{width, height, 0, 0};
  const auto stride = static_cast<std::size_t>(width) * 3;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* const a = left.data() + static_cast<std::size_t>(y) * stride;
    const std::uint8_t* const b = right.data() + static_cast<std::size_t>(y) * stride;
    if (std::equal(a, a + stride, b)) {
      continue;
    }
    const auto first = std::mismatch(a, a + stride, b).first - a;
    auto last = static_cast<std::ptrdiff_t>(stride);
    while (a[last - 1] == b[last - 1]) {
      --last;
    }
    box = {std::min(box.left, static_cast<int>(first / 3)), std::min(box.top, y),
           std::max(box.right, static_cast<int>((last + 2) / 3)), y + 1};
  }
  return box.right > box.left ? box : Rect{};
}

// Nothing costs as much here as to compress a picture, and most steps change one field of the window that the step
// before showed: of such a picture only that part is kept.
std::optional<Picture> PictureOf(Rect area) {
  static std::vector<std::uint8_t> whole;
  static Picture wholePicture;
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  const std::vector<std::uint8_t> pixels = width > 0 && height > 0 ? PixelsOf(area) : std::vector<std::uint8_t>();
  if (pixels.empty()) {
    return std::nullopt;
  }
  const Rect& before = wholePicture.area;
  if (width == before.right - before.left && height == before.bottom - before.top) {
    const Rect box = Difference(whole, pixels, width, height);
    const std::int64_t changed = std::int64_t{box.right - box.left} * (box.bottom - box.top);
    if (changed == 0) {
      return Picture{wholePicture.address, area};
    }
    if (changed < std::int64_t{width} * height / 2) {
      const auto begin =
          (static_cast<std::size_t>(box.top) * static_cast<std::size_t>(width) + static_cast<std::size_t>(box.left)) *
          3;
      const auto patch = Compressed(pixels.data() + begin, box.right - box.left, box.bottom - box.top, width * 3);
      return patch ? std::optional(Picture{
                         wholePicture.address,
                         area,
                         *patch,
                         {area.left + box.left, area.top + box.top, area.left + box.right, area.top + box.bottom}})
                   : std::nullopt;
    }
  }
  const auto address = Compressed(pixels.data(), width, height, width * 3);
  if (!address) {
    return std::nullopt;
  }
  whole = pixels;
  wholePicture = {*address, area};
  return wholePicture;
}

HANDLE Input() {
  return GetStdHandle(STD_INPUT_HANDLE);
}

HANDLE Output() {
  return GetStdHandle(STD_OUTPUT_HANDLE);
}

struct Console {
  UINT codePage = 0;
  DWORD mode = 0;
  bool showsEscapeSequences = false;
};
Console g_console;

void GiveConsoleBack() {
  std::cout.flush();
  std::fflush(stdout);
  SetConsoleMode(Output(), g_console.mode);
  SetConsoleOutputCP(g_console.codePage);
}

}  // namespace

void Start() {
  // Screen points are physical pixels, as the library has them. The manifest says so, too; not every system reads it.
  SetProcessDPIAware();
  // Without a buffer every byte would be written alone, and a console does not put the bytes of a character together.
  std::setvbuf(stdout, nullptr, _IOFBF, 1 << 16);
  if (!GetConsoleMode(Output(), &g_console.mode)) {
    return;
  }
  // The console is somebody else's: it gets back what it had.
  g_console.codePage = GetConsoleOutputCP();
  std::atexit(GiveConsoleBack);
  SetConsoleOutputCP(CP_UTF8);
  g_console.showsEscapeSequences = SetConsoleMode(Output(), g_console.mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

std::vector<std::string> Arguments(int /*count*/, char** /*arguments*/) {
  int count = 0;
  WCHAR** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> words;
  for (int i = 1; i < count; ++i) {
    words.push_back(Utf8(wide[i]));
  }
  LocalFree(wide);
  return words;
}

std::optional<std::string> EnvironmentVariable(const std::string& name) {
  const wchar_t* const value = _wgetenv(Wide(name).c_str());
  return value == nullptr ? std::nullopt : std::optional(Utf8(value));
}

std::string HelpAboutThisWorld() {
  return {};
}

std::vector<Window> Windows() {
  std::vector<Window> windows;
  EnumWindows(Collect, reinterpret_cast<LPARAM>(&windows));
  return windows;
}

std::optional<Window> WindowAt(Point point) {
  const HWND window = WindowFromPoint({point.x, point.y});
  return window == nullptr ? std::nullopt : Describe(GetAncestor(window, GA_ROOT));
}

std::optional<Window> Describe(HWND window) {
  WindowInfo info{};
  RECT rect{};
  if (!IsWindow(window) || !GetWindowRect(window, &rect) || getWindowInfo(window, &info) != KORVANE_OK) {
    return std::nullopt;
  }
  return Window{window, Utf8(info.title), ClassNameOf(window), Utf8(info.processName), FromRect(rect)};
}

Point Cursor() {
  POINT cursor{};
  GetCursorPos(&cursor);
  return {cursor.x, cursor.y};
}

HWND RootAt(Point point) {
  const HWND window = WindowFromPoint({point.x, point.y});
  return window == nullptr ? nullptr : GetAncestor(window, GA_ROOT);
}

HWND OwnerOf(HWND window) {
  return GetWindow(window, GW_OWNER);
}

HWND ForegroundWindow() {
  return GetForegroundWindow();
}

double Now() {
  LARGE_INTEGER count;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) * 1000.0 / static_cast<double>(frequency.QuadPart);
}

std::optional<Picture> TakePicture(HWND window, Settle settle) {
  RECT rect{};
  if (!IsWindow(window) || IsIconic(window) || !GetWindowRect(window, &rect)) {
    return std::nullopt;
  }
  if (settle == Settle::Yes) {
    constexpr DWORD kSettleMilliseconds = 60;
    UpdateWindow(window);
    Sleep(kSettleMilliseconds);
  }
  return PictureOf(PictureArea(FromRect(rect)));
}

std::optional<Picture> TakePictureOfScreen() {
  return PictureOf(TheScreen().rect);
}

std::optional<std::string> WhyNobodyCanClick() {
  return std::nullopt;
}

std::optional<std::string> WhyNobodyCanPoint() {
  DWORD mode = 0;
  return GetConsoleMode(Input(), &mode) ? std::nullopt
                                        : std::optional<std::string>("the input is not a terminal with a keyboard");
}

char WaitForKey() {
  std::cout << std::flush;
  INPUT_RECORD record{};
  DWORD count = 0;
  while (ReadConsoleInputW(Input(), &record, 1, &count)) {
    const WCHAR key = record.Event.KeyEvent.uChar.UnicodeChar;
    if (record.EventType == KEY_EVENT && record.Event.KeyEvent.bKeyDown && key != 0) {
      return key < 0x80 ? Lower(std::string(1, static_cast<char>(key)))[0] : '?';
    }
  }
  throw Failure(ExitCode::NotHere, "the terminal does not give its keys");
}

std::string AskForLine(const std::string& question) {
  std::cout << question << std::flush;
  WCHAR line[4096];
  DWORD count = 0;
  if (!ReadConsoleW(Input(), line, static_cast<DWORD>(std::size(line)), &count, nullptr)) {
    throw Failure(ExitCode::NotHere, "the terminal does not give its lines");
  }
  return Trimmed(Utf8({line, count}));
}

bool OutputIsTerminal() {
  return g_console.showsEscapeSequences;
}

}  // namespace host::world
