#include "host/commands/progress.h"

#include <cmath>
#include <iostream>
#include <optional>

#include "host/base/console.h"
#include "host/base/text.h"
#include "host/engine/result_words.h"
#include "host/world/world.h"

namespace host {

namespace {

constexpr std::size_t kBarWidth = 24;
constexpr std::size_t kTitleWidth = 38;

std::string Bar(std::size_t done, std::size_t all) {
  std::string bar;
  for (std::size_t i = 0; i < kBarWidth; ++i) {
    bar += i * all < done * kBarWidth ? "█" : "░";
  }
  return bar;
}

std::string LineOf(const StepResult& result, std::size_t all) {
  const std::string number = std::to_string(result.index + 1) + "/" + std::to_string(all);
  const std::string words = result.windowGone ? "no window" : WordsOfCode(result.code);
  return "  " + Padded(number, 6) + Padded(Shortened(Title(*result.step), kTitleWidth), kTitleWidth + 1) +
         Padded(result.state == StepState::Failed ? "FAILED: " + words : WordOf(result.state), 10) + "  " +
         Milliseconds(result.milliseconds) + "\n";
}

// "row 12 of 300, about 4 min left"; nothing is said of the time before a row is through.
std::string RowLine(const Run& run, std::size_t firstRow, double milliseconds) {
  std::string line = run.name + " of " + std::to_string(run.lastRow);
  if (run.row == firstRow) {
    return line;
  }
  constexpr double kMinute = 60000;
  const double left = milliseconds / static_cast<double>(run.row - firstRow) * static_cast<double>(run.rows - run.row);
  return line + (left < kMinute ? ", less than a minute left"
                                : ", about " + std::to_string(std::lround(left / kMinute)) + " min left");
}

}  // namespace

Progress ShowProgress(const Recording& recording, bool terminal) {
  const std::size_t all = recording.steps.size();
  // The line of the bar, taken away for what stays.
  const auto erase = [terminal] {
    if (terminal) {
      Console::Unescaped() << "\r\x1b[K" << std::flush;
    }
  };
  Progress progress;
  progress.runBegins = [erase, first = std::optional<std::size_t>(), start = world::Now()](const Run& run) mutable {
    first = first.value_or(run.row);
    if (!run.name.empty()) {
      erase();
      std::cout << RowLine(run, *first, world::Now() - start) << "\n" << std::flush;
    }
  };
  progress.stepBegins = [&recording, all, terminal, erase](std::size_t index) {
    if (terminal) {
      erase();
      std::cout << "  " << Bar(index, all) << "  " << index + 1 << "/" << all << "  "
                << Shortened(Title(recording.steps[index]), kTitleWidth) << std::flush;
    }
  };
  progress.stepIsTriedAgain = [all, erase](const StepResult& result) {
    erase();
    std::cout << LineOf(result, all) << "        " << (result.remark.empty() ? "" : result.remark + "; ")
              << "trying again\n"
              << std::flush;
  };
  progress.stepEnds = [all, terminal, erase](const StepResult& result) {
    // On a terminal the bar is enough for what went well.
    if (!terminal || result.state != StepState::Ok || !result.earlier.empty()) {
      erase();
      std::cout << LineOf(result, all) << std::flush;
    } else if (result.index + 1 == all) {
      erase();
      std::cout << "  " << Bar(all, all) << "  " << all << "/" << all << "\n" << std::flush;
    }
    if (result.state == StepState::Healed) {
      std::cout << "        " << result.healing << "\n" << std::flush;
    }
    if (result.state != StepState::Failed && !result.remark.empty()) {
      std::cout << "        " << result.remark << "\n" << std::flush;
    }
  };
  return progress;
}

}  // namespace host
