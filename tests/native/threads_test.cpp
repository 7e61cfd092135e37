// Hosts call from several threads: everything that may run together does, while the user presses Escape, the log is
// opened anew and the context comes and goes.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/native/fixture.h"

namespace tests {
namespace {

class ThreadsTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    auto& desktop = TheDesktop();
    window_ = desktop.AddWindow({.className = u"Dialog", .title = u"Orders", .rect = {100, 100, 500, 400}});
    edit_ = desktop.AddWindow({.className = u"Edit",
                               .title = u"shown text",
                               .rect = {120, 120, 320, 150},
                               .parent = window_,
                               .controlId = 7,
                               .behaviour = standin::Behaviour::Edit});
    path_ = EmptyRecord();
    AddLevel(path_, UIA_WindowControlTypeId, u"Dialog", 1);
    AddLevel(path_, 50004, u"Edit", 1);
    id_ = RecordById(u"7");
    desktop.SetTracing(false);
    desktop.UseRealTime();
  }

  void TearDown() override {
    TheDesktop().UseVirtualTime();
    DesktopTest::TearDown();
  }

  HWND window_ = nullptr;
  HWND edit_ = nullptr;
  TargetRecord path_{};
  TargetRecord id_{};
};

// One thread's share: calls whose codes cannot be told when the context goes away in between, but are always
// documented.
void Use(int which, const TargetRecord& id, const TargetRecord& path, HWND window) {
  const auto expect = [](int code, std::initializer_list<int> documented) {
    EXPECT_TRUE(std::find(documented.begin(), documented.end(), code) != documented.end()) << code;
  };
  TargetRecord record{};
  WindowInfo info{};
  switch (which) {
    case 0:
      expect(captureTargetAtPoint(&record, 150, 130), {0, -1, -3});
      break;
    case 1:
      expect(verifyTarget(&id, window), {0, -1, -3});
      break;
    case 2:
      expect(clickTarget(&id, window), {0, -1, -3, -4});
      break;
    case 3:
      expect(isTargetEmpty(&path, window), {0, -1});
      expect(waitForTargetContainsText(&path, window, u"shown text", 4), {0, -3});
      break;
    case 4:
      expect(getWindowInfo(window, &info), {0});
      logAction(u"a step", 0, 1);
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
      break;
    default:
      expect(sendKeySequence(u"a", 1), {0, -3});
      expect(isCancelled(), {0, 1});
      break;
  }
}

TEST_F(ThreadsTest, EverythingThatMayRunTogetherDoes) {
  constexpr int kThreads = 8;
  constexpr auto kDuration = std::chrono::seconds(2);
  std::atomic<bool> stop{false};
  std::atomic<int> calls{0};
  std::vector<std::thread> threads;
  for (int which = 0; which < kThreads; ++which) {
    threads.emplace_back([&, which] {
      // The context may be made on any of them and is released on another: the object model is the host's business
      // here.
      TheDesktop().InitializeComMultithreaded();
      for (; !stop; ++calls) {
        Use(which, id_, path_, window_);
      }
    });
  }
  const auto end = std::chrono::steady_clock::now() + kDuration;
  for (int round = 0; std::chrono::steady_clock::now() < end; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    TheDesktop().PressKey(0x1B, round % 2 == 0);
    OpenLog();
    if (round % 5 == 0) {
      cleanupAutomation();
      OpenLog();
    }
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  TheDesktop().PressKey(0x1B, false);
  std::printf("%d calls\n", calls.load());
  EXPECT_GT(calls, kThreads);

  // Every line is whole: it begins with a time and holds one message.
  const std::string bytes = LogBytes();
  ASSERT_FALSE(bytes.empty());
  EXPECT_EQ(bytes.substr(bytes.size() - 2), "\r\n");
  std::size_t lines = 0;
  for (const std::string& line : Log()) {
    ++lines;
    EXPECT_EQ(line.find("11-18 09:0"), std::string::npos) << "two lines in one: " << line;
  }
  EXPECT_GT(lines, 0u);
}

}  // namespace
}  // namespace tests
