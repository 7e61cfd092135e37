#include "host/engine/explain.h"

#include "host/base/text.h"
#include "host/engine/log_line.h"
#include "host/engine/result_words.h"
#include "host/world/interruption.h"

namespace host {

namespace {

// What the library reported last.
std::string Verdict(const StepResult& result) {
  std::string verdict;
  for (const LogLine& line : ReadLog(result.lines)) {
    if (line.kind == LogLine::Kind::Error) {
      verdict = line.details.empty() ? std::string(line.text) + " failed" : std::string(line.details);
    }
  }
  return verdict;
}

std::string TellTried(const StepResult& result) {
  std::string text;
  for (const Attempt& attempt : result.attempts) {
    text += (text.empty() ? " Tried: its " : "; its ") + std::string(NameOf(attempt.by)) + ": " +
            (attempt.finding == Finding::Found ? "found" : attempt.why);
  }
  return text.empty() ? text : text + ".";
}

std::string AdviceWhenNotFound(const StepResult& result, const std::string& file) {
  if (result.proposal) {
    return std::string(
               " --strict takes no other identification than the recorded one: set \"identificationMethod\" "
               "to \"") +
           MethodWordOf(*result.foundBy) + "\" in this step of " + file + ", or have it written with --proposals.";
  }
  if (result.foundBy) {
    return " The element is there, but a click would not reach it: bring it into view in a step before, or record " +
           NameOf(result.index, *result.step) + " again.";
  }
  return " Nothing was touched. Open the part of the window where it is, or point at it with `korvane capture "
         "--cursor`, compare, and record " +
         NameOf(result.index, *result.step) + " again.";
}

std::string AdviceWhenFailed(const StepResult& result, const std::string& verdict) {
  switch (result.step->action) {
    case Action::Paste:
    case Action::Type:
      if (result.expected) {
        return " The keys were sent, but the text did not show: the field may be read-only, or change what it is "
               "given (then use \"type\" and check a part), or need longer (--timeout).";
      }
      break;
    case Action::Wait:
    case Action::Check:
      return " If what it shows is right, change \"text\" or \"match\" in the recording; if it only comes later, "
             "give it longer with --timeout, or wait for it in a step before.";
    case Action::Read:
      return " The element was found, but it tells no text: read one that does.";
    default:
      break;
  }
  return verdict.find("foreground") != std::string::npos || result.clicked || result.remark.starts_with("keys would go")
             ? " Bring the window to the front yourself, and leave the machine alone meanwhile."
             : " Input was refused: a program that runs as administrator takes it only from one that does, too; a "
               "locked screen takes none.";
}

}  // namespace

std::string Explain(const StepResult& result, const std::string& file) {
  std::string text = NameOf(result.index, *result.step) + " (" + WordsOf(result.step->action).word +
                     "): " + WordsOfCode(result.code) + " (" + std::to_string(result.code) + ") after " +
                     Milliseconds(result.milliseconds) + ".";
  text[0] = 'S';
  // Why the target was not found is told by what was tried.
  const bool tried = result.code == KORVANE_NOT_FOUND && !result.foundBy && !result.windowGone;
  text += tried || result.remark.empty() ? "" : " What is there: " + result.remark + ".";
  if (result.code == KORVANE_CANCELLED) {
    return text + (world::IsInterrupted() ? " The program was told to end." : " Escape was pressed.");
  }
  if (result.windowGone) {
    return text + " Start its program or open the window; `korvane window` shows how a window is named.";
  }
  if (result.code == KORVANE_NOT_FOUND) {
    return text + (tried ? TellTried(result) : "") + AdviceWhenNotFound(result, file);
  }
  const std::string verdict = Verdict(result);
  text += verdict.empty() ? "" : " The library says: " + verdict + ".";
  return text + AdviceWhenFailed(result, verdict);
}

}  // namespace host
