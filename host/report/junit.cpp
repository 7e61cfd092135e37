#include "host/report/junit.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "host/base/text.h"

namespace host {

namespace {

// XML has no characters for most controls, so that they are shown as on the terminal. Line breaks stay.
std::string Xml(const std::string& text) {
  std::string shown;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    shown += (begin > 0 ? "\n" : "") + Escaped(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
  }
  for (const auto& [what, by] : {std::pair{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"\"", "&quot;"}}) {
    shown = Replaced(std::move(shown), what, by);
  }
  return shown;
}

std::string Attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" + Xml(value) + "\"";
}

std::string Seconds(double milliseconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", milliseconds / 1000);
  return text;
}

bool IsError(const StepResult& result) {
  return result.windowGone || result.code == KORVANE_CANCELLED;
}

std::string CaseName(std::size_t index, const Step& step) {
  return std::to_string(index + 1) + " " + Title(step);
}

// What failed before, by the names that test services know for it.
std::string EarlierTries(const StepResult& result) {
  const std::string element =
      std::string(result.state == StepState::Failed ? "rerun" : "flaky") + (IsError(result) ? "Error" : "Failure");
  std::string tries;
  for (const StepResult& earlier : result.earlier) {
    tries += "<" + element + Attribute("message", earlier.remark) + Attribute("type", "try") + "><system-out>" +
             Xml(earlier.explanation) + "</system-out></" + element + ">";
  }
  return tries;
}

std::string Outcome(const StepResult& result) {
  if (result.state == StepState::Failed) {
    const std::string element = IsError(result) ? "error" : "failure";
    return "<" + element + Attribute("message", result.remark) + ">" + Xml(result.explanation) + "</" + element + ">";
  }
  if (result.state == StepState::Healed) {
    return "<system-out>" + Xml("healed: " + result.healing) + "</system-out>";
  }
  return {};
}

struct Counts {
  std::size_t tests = 0;
  std::size_t failures = 0;
  std::size_t errors = 0;
  std::size_t skipped = 0;
  double milliseconds = 0;

  std::string Attributes() const {
    return Attribute("tests", std::to_string(tests)) + Attribute("failures", std::to_string(failures)) +
           Attribute("errors", std::to_string(errors)) + Attribute("skipped", std::to_string(skipped)) +
           Attribute("time", Seconds(milliseconds));
  }
};

std::string Suite(const Recording& recording, const Run& run, const std::string& suite, Counts& all) {
  Counts counts;
  std::string cases;
  const auto begin = [&](std::size_t index, double milliseconds) {
    ++counts.tests;
    counts.milliseconds += milliseconds;
    cases += "    <testcase" + Attribute("classname", suite) +
             Attribute("name", CaseName(index, recording.steps[index])) + Attribute("time", Seconds(milliseconds)) +
             ">";
  };
  for (const StepResult& result : run.steps) {
    begin(result.index, result.milliseconds);
    cases += Outcome(result) + EarlierTries(result) + "</testcase>\n";
    const bool failed = result.state == StepState::Failed;
    counts.errors += failed && IsError(result) ? 1 : 0;
    counts.failures += failed && !IsError(result) ? 1 : 0;
  }
  for (std::size_t i = run.from + run.steps.size(); i < recording.steps.size(); ++i) {
    begin(i, 0);
    cases += "<skipped/></testcase>\n";
    ++counts.skipped;
  }
  all.tests += counts.tests;
  all.failures += counts.failures;
  all.errors += counts.errors;
  all.skipped += counts.skipped;
  return "  <testsuite" + Attribute("name", suite) + counts.Attributes() + ">\n" + cases + "  </testsuite>\n";
}

// A line of a build's output is an instruction up to its end.
std::string Instruction(const std::string& text) {
  std::string line = Replaced(text, "%", "%25");
  line = Replaced(std::move(line), "\r", "%0D");
  return Replaced(std::move(line), "\n", "%0A");
}

}  // namespace

std::string WriteJunit(const Recording& recording, const Replayed& replayed, const ReplayOptions& options) {
  Counts all;
  std::string suites;
  for (const Run& run : replayed.runs) {
    suites += Suite(recording, run, options.file + (run.name.empty() ? "" : ", " + run.name), all);
  }
  all.milliseconds = replayed.milliseconds;
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + Attribute("name", options.file) +
         all.Attributes() + ">\n" + suites + "</testsuites>\n";
}

std::string WriteAnnotations(const Replayed& replayed, const ReplayOptions& options) {
  std::string lines;
  for (const Run& run : replayed.runs) {
    for (const StepResult& result : run.steps) {
      const bool failed = result.state == StepState::Failed;
      const bool healed = result.state == StepState::Healed;
      if (!failed && !healed && result.earlier.empty()) {
        continue;
      }
      const std::string what = failed   ? result.explanation
                               : healed ? "healed: " + result.healing
                                        : "not on the first try: " + result.earlier.front().explanation;
      const std::string text =
          (run.name.empty() ? "" : run.name + ": ") + NameOf(result.index, *result.step) + ": " + what;
      // Between the properties and the text, ':' and ',' would end them.
      std::string file = Instruction(options.file);
      file = Replaced(Replaced(std::move(file), ":", "%3A"), ",", "%2C");
      lines +=
          std::string(failed ? "::error" : "::warning") + " file=" + file + "::" + Instruction(Escaped(text)) + "\n";
    }
  }
  return lines;
}

}  // namespace host
