#include "host/engine/explain.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/engine/result_words.h"

namespace host {

namespace {

struct Tried {
  std::string what;
  std::string why;  // empty: it found the target
};

struct Story {
  std::vector<Tried> tried;  // of the last time the target was looked for
  std::string verdict;       // what the library reported at last
};

// The rest of the line behind the words; empty when they are not in it.
std::string Behind(const std::string& line, const std::string& words) {
  const auto at = line.find(words);
  return at == std::string::npos ? std::string() : line.substr(at + words.size());
}

bool Has(const std::string& line, const char* words) {
  return line.find(words) != std::string::npos;
}

// "…, time: 3ms" tells nothing here.
std::string WithoutTime(const std::string& text) {
  return text.substr(0, text.find(", time:"));
}

void ReadSearchLine(const std::string& line, const TargetRecord& target, Story& story) {
  if (Has(line, "[FindTargetElement] Starting")) {
    story.tried.clear();
  } else if (Has(line, "Trying Method 0")) {
    story.tried.push_back({"its AutomationId", "nothing in the window has it"});
  } else if (Has(line, "Trying Method 3")) {
    story.tried.push_back({"its path through the window's elements", "the path leads nowhere"});
  } else if (Has(line, "Trying Method 2")) {
    story.tried.push_back(
        {"its screen point " + std::to_string(target.x) + "," + std::to_string(target.y), "there is no element"});
  } else if (story.tried.empty()) {
    return;
  } else if (Has(line, "SUCCESS with Method")) {
    story.tried.back().why.clear();
  } else if (Has(line, "Element not in target window")) {
    story.tried.back().why = "what is there now belongs to another window";
  } else if (const std::string reason = Behind(line, "Tree path FAILED at "); !reason.empty()) {
    story.tried.back().why = WithoutTime(reason);
  } else if (const std::string error = Behind(line, "[FindElementByTreePath] ERROR: "); !error.empty()) {
    if (!Has(line, "ValidateTreePathData")) {
      story.tried.back().why = error;
    }
  } else if (const std::string invalid = Behind(line, "[ValidateTreePathData] ERROR: "); !invalid.empty()) {
    story.tried.back().why = "the recorded path is not valid: " + invalid;
  }
}

Story ReadStory(const StepResult& result) {
  Story story;
  for (const std::string& line : result.lines) {
    ReadSearchLine(line, result.step->target, story);
    if (const std::string error = Behind(line, " ERROR "); !error.empty() && Has(error, " Code:")) {
      const std::string details = Behind(error, " Details:");
      story.verdict = details.empty() ? error.substr(0, error.find(' ')) + " failed" : details;
    }
  }
  return story;
}

std::string TellTried(const Story& story) {
  static constexpr const char* kOrder[] = {" First ", "; then ", "; then "};
  std::string text;
  for (std::size_t i = 0; i < story.tried.size(); ++i) {
    text += kOrder[std::min<std::size_t>(i, 2)] + story.tried[i].what + ": " +
            (story.tried[i].why.empty() ? "found" : story.tried[i].why);
  }
  return text.empty() ? text : text + ".";
}

std::string AdviceWhenNotFound(const StepResult& result, const std::vector<Attempt>& alone, const std::string& file) {
  for (const Attempt& attempt : alone) {
    if (attempt.found && !attempt.another) {
      return std::string(" Its ") + NameOf(attempt.by) + " alone finds it: set \"identificationMethod\" to \"" +
             MethodWordOf(attempt.by) + "\" in this step of " + file + ".";
    }
  }
  return " None of its identifications finds it alone: open the part of the window where it is, or point at it with "
         "`korvane capture --cursor`, compare, and record " +
         NameOf(result.index, *result.step) + " again.";
}

std::string AdviceWhenFailed(const StepResult& result, const Story& story) {
  const bool unfocused = Has(story.verdict, "foreground");
  switch (result.step->action) {
    case Action::Paste:
      return " The keys were sent, but the text did not show: the field may be read-only, or change what it is given "
             "(then use \"type\" and check a part), or need longer (--timeout).";
    case Action::Wait:
    case Action::Check:
      return " If what it shows is right, change \"text\" or \"match\" in the recording; if it only comes later, give "
             "it longer with --timeout, or wait for it in a step before.";
    default:
      return unfocused ? " Bring the window to the front yourself, and leave the machine alone meanwhile."
                       : " Input was refused: a program that runs as administrator takes it only from one that does, "
                         "too; a locked screen takes none.";
  }
}

}  // namespace

std::string Explain(const StepResult& result, const std::vector<Attempt>& alone, const std::string& file) {
  const Story story = ReadStory(result);
  std::string text = NameOf(result.index, *result.step) + " (" + WordsOf(result.step->action).word +
                     "): " + WordsOfCode(result.code) + " (" + std::to_string(result.code) + ") after " +
                     Milliseconds(result.milliseconds) + ".";
  text[0] = 'S';
  text += result.remark.empty() ? "" : " What is there: " + result.remark + ".";
  if (result.code == KORVANE_CANCELLED) {
    text += " Escape was pressed.";
  } else if (result.windowGone) {
    text += " Start its program or open the window; `korvane window` shows how a window is named.";
  } else {
    text += TellTried(story);
    text += story.verdict.empty() ? "" : " The library says: " + story.verdict + ".";
    text +=
        result.code == KORVANE_NOT_FOUND ? AdviceWhenNotFound(result, alone, file) : AdviceWhenFailed(result, story);
  }
  return text;
}

}  // namespace host
