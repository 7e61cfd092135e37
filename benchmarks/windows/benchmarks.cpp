// korvane.dll on real windows: what a click, a line and a whole step cost beside the bare platform calls.
//
//   windows_benchmarks REPORT.json
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iomanip>

#include "benchmarks/windows/by_hand.h"
#include "benchmarks/windows/measure.h"
#include "korvane/korvane.h"
#include "samples/order_form/program.h"

namespace {

using order_form::Text;

constexpr char kClickLine[] = "[2026-11-18 09:00:00] [CACHE HIT] Clicked using cached coordinates\r\n";
constexpr char kActionLine[] = "2026-11-18 09:00:00.000 - paste the article | Result: 0 | Duration: 41ms\r\n";

int g_failed = 0;

void Expect(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "failed: %s\n", what);
    ++g_failed;
  }
}

class AppendedFile {
 public:
  explicit AppendedFile(const char* name)
      : file_(CreateFileW(order_form::ScratchFile(name).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                          nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~AppendedFile() {
    CloseHandle(file_);
  }
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  template <std::size_t size>
  void Write(const char (&line)[size]) const {
    DWORD written = 0;
    WriteFile(file_, line, size - 1, &written, nullptr);
  }

 private:
  HANDLE file_;
};

// The window has dealt with what was sent so far.
void LetTheFormRest() {
  Sleep(30);
}

void Click(const order_form::Program& form) {
  TargetRecord target{};
  const order_form::Point point = form.CentreOf(order_form::kName);
  const HWND window = form.Window();
  Expect(captureTargetAtPoint(&target, point.x, point.y) == KORVANE_OK, "capture");
  target.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
  Expect(verifyTarget(&target, window) == KORVANE_OK, "verifyTarget");
  const AppendedFile log("click-by-hand.log");
  const auto byHand = [&](bool withWindowTest) {
    RECT rect{};
    if (withWindowTest) {
      IsWindow(window);
    }
    GetWindowRect(window, &rect);
    SetCursorPos(point.x, point.y);
    mouse_event(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
    log.Write(kClickLine);
  };
  bench::Compare({.count = 60, .calls = 10, .prepare = LetTheFormRest},
                 {{"click/remembered", [&] { clickTarget(&target, window); }},
                  {"click/by hand", [&] { byHand(false); }},
                  {"click/by hand, with IsWindow", [&] { byHand(true); }}});
}

void LogLine() {
  const AppendedFile file("bare.log");
  const Text path = order_form::ScratchFile("stream.log");
  std::wofstream stream(std::string(path.begin(), path.end()), std::ios::app);
  const auto toStream = [&stream] {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    stream << std::put_time(std::localtime(&seconds), L"%Y-%m-%d %H:%M:%S") << L"." << std::setfill(L'0')
           << std::setw(3) << milliseconds << L" - paste the article | Result: " << 0 << L" | Duration: " << 41 << L"ms"
           << std::endl;
  };
  bench::Compare({.count = 60, .calls = 500}, {{"log/line", [] { logAction(L"paste the article", 0, 41); }},
                                               {"log/bare write", [&file] { file.Write(kActionLine); }},
                                               {"log/wide stream", toStream}});
}

// Capture, resolve, click, paste, and see the text in a real edit of another process.
void WholeStep(const order_form::Program& form, HWND edit) {
  const order_form::Point point = form.CentreOf(order_form::kName);
  const HWND window = form.Window();
  const Text text = L"Brass compass";
  const auto empty = [edit] {
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
    clearElementCache();
    LetTheFormRest();
  };
  const auto withLibrary = [&] {
    TargetRecord target{};
    Expect(captureTargetAtPoint(&target, point.x, point.y) == KORVANE_OK, "capture");
    target.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
    Expect(setClipboardText(text.c_str()) == KORVANE_OK, "clipboard");
    Expect(pasteToTargetWithVerifyEx(&target, window, 1000) == KORVANE_OK, "paste");
  };
  bench::ByHand hand;
  const auto byHand = [&] {
    Expect(hand.Capture({point.x, point.y}), "capture by hand");
    Expect(hand.SetClipboard(text), "clipboard by hand");
    Expect(hand.Paste(window, text), "paste by hand");
  };
  bench::Compare({.count = 60, .calls = 1, .prepare = empty}, {{"step/ours", withLibrary}, {"step/by hand", byHand}});
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: windows_benchmarks REPORT.json\n");
    return 2;
  }
  order_form::Program form;
  if (!form.Start(40, 40)) {
    std::fprintf(stderr, "the order form does not come up\n");
    return 1;
  }
  const order_form::Point point = form.CentreOf(order_form::kName);
  const HWND edit = WindowFromPoint({point.x, point.y});
  initializeLog(order_form::ScratchFile("bench.log").c_str());
  Click(form);
  LogLine();
  WholeStep(form, edit);
  cleanupAutomation();
  bench::WriteReport(arguments[1]);
  return g_failed == 0 ? 0 : 1;
}
