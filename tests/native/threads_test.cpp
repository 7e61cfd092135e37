// Hosts call from several threads: everything that may run together does, while the user presses Escape, the log is
// opened anew and the context comes and goes.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include "tests/native/fixture.h"

namespace tests {
namespace {

class ThreadsTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    auto& desktop = TheDesktop();
    window_ = desktop.Windows().Add({.className = u"Dialog", .title = u"Orders", .rect = {100, 100, 500, 400}});
    edit_ = desktop.Windows().Add({.className = u"Edit",
                                   .title = u"shown text",
                                   .rect = {120, 120, 320, 150},
                                   .parent = window_,
                                   .controlId = 7,
                                   .behaviour = standin::Behaviour::Edit});
    path_ = EmptyRecord();
    AddLevel(path_, UIA_WindowControlTypeId, u"Dialog", 1);
    AddLevel(path_, 50004, u"Edit", 1);
    id_ = RecordById(u"7");
    desktop.Calls().SetTracing(false);
    desktop.Clock().UseRealTime();
  }

  void TearDown() override {
    TheDesktop().Clock().UseVirtualTime();
    DesktopTest::TearDown();
  }

  // Checks that every line since the last call is whole, with at most one time stamp, at its beginning. Returns how
  // many.
  std::size_t CheckLines() {
    const std::filesystem::path aside = Folder() / "aside.txt";
    std::filesystem::rename(LogPath(), aside);
    OpenLog();
    std::ifstream file(aside, std::ios::binary);
    std::size_t lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
      EXPECT_TRUE(line.ends_with('\r')) << line;
      EXPECT_EQ(line.find(kDay, kLongestStamp), std::string::npos) << "two lines in one: " << line;
    }
    return lines;
  }

  static constexpr auto kDay = "11-18 ";
  static constexpr std::size_t kLongestStamp = 25;
  HWND window_ = nullptr;
  HWND edit_ = nullptr;
  TargetRecord path_{};
  TargetRecord id_{};
};

// What each thread calls. The context may go away at any time, so a call may fail, but only with a documented code. Two
// threads read the screen, two act on it, the others do what a host does beside that.
void Use(int which, const TargetRecord& id, const TargetRecord& path, HWND window) {
  const auto expect = [](int code, std::initializer_list<int> documented) {
    EXPECT_TRUE(std::find(documented.begin(), documented.end(), code) != documented.end()) << code;
  };
  TargetRecord record{};
  WindowInfo info{};
  switch (which) {
    case 0:
      expect(captureTargetAtPoint(&record, 150, 130), {0, -1, -3});
      expect(captureTargetAtCursor(&record), {0, -1});
      break;
    case 1:
      expect(verifyTarget(&id, window), {0, -1, -3});
      expect(isTargetEmpty(&path, window), {0, 1, -1});
      expect(targetContainsText(&id, window, u"shown text"), {0, 1, -1});
      expect(targetContainsPartialText(&path, window, u"own"), {0, 1, -1});
      break;
    case 2:
      expect(clickTarget(&id, window), {0, -1, -3, -4});
      expect(ensureWindowFocus(window), {0, -3});
      expect(pasteToTargetWithVerifyEx(&path, window, 3), {0, -1, -3, -4});
      break;
    case 3:
      expect(waitForTargetContainsText(&path, window, u"shown text", 4), {0, -3});
      expect(waitForTargetContainsPartialText(&path, window, u"own", 4), {0, -3});
      expect(waitForFieldChange(&id, window, u"shown text", 4), {0, -3});
      expect(waitForFieldEmpty(&id, window, 4), {0, -3});
      break;
    case 4:
      expect(getWindowInfo(window, &info), {0});
      logAction(u"a step", 0, 1);
      logActionWithTimestamp(u"a step", 0, 1, 0);
      clearElementCache();
      break;
    case 5:
      startCancelMonitor();
      expect(isCancelled(), {0, 1});
      stopCancelMonitor();
      break;
    case 6:
      expect(setTargetWindow(window), {0, -3});
      freeTextResult(getTargetText(&path, window));
      expect(pasteToTargetDirect(&id, nullptr, u"shown text", 0), {0, -1, -2});
      break;
    default:
      expect(sendKeySequence(u"a", 1), {0, -3});
      expect(sendCtrlA(), {0, -3});
      expect(setClipboardText(u"text"), {0, -3});
      expect(setClipboardTextAndHtml(u"text", "<b>text</b>"), {0, -3});
      expect(verifySimple(u"text", window), {0, -1, -3});
      break;
  }
}

// Captures at the cursor trace their steps; nobody reads a million of them.
class StandardOutputAside {
 public:
  StandardOutputAside() : kept_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    std::freopen("/dev/null", "w", stdout);
  }
  ~StandardOutputAside() {
    std::fflush(stdout);
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
  }
  StandardOutputAside(const StandardOutputAside&) = delete;
  StandardOutputAside& operator=(const StandardOutputAside&) = delete;

 private:
  int kept_;
};

TEST_F(ThreadsTest, EverythingThatMayRunTogetherDoes) {
  constexpr int kThreads = 8;
  // As long as KORVANE_SOAK_SECONDS says, 2 by default.
  const char* const wanted = std::getenv("KORVANE_SOAK_SECONDS");
  const auto duration = std::chrono::seconds(wanted == nullptr ? 2 : std::atoi(wanted));
  std::optional<StandardOutputAside> aside(std::in_place);
  std::atomic<bool> stop{false};
  std::atomic<int> calls{0};
  std::vector<std::thread> threads;
  for (int which = 0; which < kThreads; ++which) {
    threads.emplace_back([&, which] {
      // The context may be made on any of them and is released on another: the object model is the host's business
      // here.
      TheDesktop().Host().InitializeComMultithreaded();
      for (; !stop; ++calls) {
        Use(which, id_, path_, window_);
      }
    });
  }
  std::size_t lines = 0;
  const auto end = std::chrono::steady_clock::now() + duration;
  for (int round = 0; std::chrono::steady_clock::now() < end && !HasFailure(); ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    TheDesktop().User().PressKey(VK_ESCAPE, round % 2 == 0);
    OpenLog();
    if (round % 5 == 0) {
      cleanupAutomation();
      OpenLog();
    }
    if (round % 50 == 0) {
      lines += CheckLines();
    }
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  TheDesktop().User().PressKey(VK_ESCAPE, false);
  lines += CheckLines();
  aside.reset();
  std::printf("%d rounds of calls, %zu lines\n", calls.load(), lines);
  EXPECT_GT(calls, kThreads);
  EXPECT_GT(lines, 0U);
}

}  // namespace
}  // namespace tests
