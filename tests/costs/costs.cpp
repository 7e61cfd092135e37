// What scripts/costs.py counts the instructions of: each thing is done once beforehand, and then once more within
// Measured().
#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "benchmarks/desk.h"
#include "korvane/korvane.h"

namespace {

using standin::TheDesktop;

bool g_succeeded = true;

void Expect(bool condition) {
  g_succeeded = g_succeeded && condition;
}

// Each returns what is measured, with everything prepared for it.
std::function<void()> RememberedClick() {
  return [desk = bench::SetUpForm()] { Expect(clickTarget(&desk.target, desk.window) == KORVANE_OK); };
}

std::function<void()> LogLine() {
  bench::SetUpForm();
  return [] { logAction(u"paste the article", KORVANE_OK, 41); };
}

std::function<void()> Path() {
  return [desk = bench::SetUpTree(5, 20)] { Expect(verifyTarget(&desk.target, desk.window) == KORVANE_OK); };
}

std::function<void()> WholeStep() {
  const bench::Desk desk = bench::SetUpForm();
  TheDesktop().Clipboard().Set(u"pasted text");
  return [desk] {
    TheDesktop().Controls().SetText(desk.edit, u"");
    clearElementCache();
    Expect(pasteToTargetWithVerifyEx(&desk.target, desk.window, 150) == KORVANE_OK);
    KorvaneChar* const text = getTargetText(&desk.target, desk.window);
    Expect(text != nullptr);
    freeTextResult(text);
  };
}

}  // namespace

extern "C" __attribute__((noinline)) void Measured(const std::function<void()>& action) {
  action();
}

int main(int count, char** arguments) {
  const std::map<std::string, std::function<void()> (*)()> all = {{"remembered click", RememberedClick},
                                                                  {"log line", LogLine},
                                                                  {"path of 5 x 20", Path},
                                                                  {"whole step", WholeStep}};
  const auto chosen = count == 2 ? all.find(arguments[1]) : all.end();
  if (chosen == all.end()) {
    for (const auto& [name, prepare] : all) {
      std::printf("%s\n", name.c_str());
    }
    return count == 1 ? 0 : 2;
  }
  const auto action = chosen->second();
  initializeLog(bench::Wide(bench::NewFile("costs.log")).c_str());
  initializeAutomation();
  action();
  Measured(action);
  cleanupAutomation();
  return g_succeeded ? 0 : 1;
}
