#include "host/export/program.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "host/base/failure.h"
#include "host/base/file.h"
#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/recording/secrets.h"

namespace host {

namespace {

// Those that the library has beside single keys.
constexpr std::array<const char*, 18> kSenders = {
    "sendAltA",  "sendAltB",        "sendAltD",     "sendAltE",    "sendAltP",  "sendAltT",
    "sendAltZ",  "sendCtrlA",       "sendCtrlAltN", "sendCtrlL",   "sendCtrlN", "sendCtrlQ",
    "sendCtrlS", "sendCtrlShiftF3", "sendShiftF2",  "sendShiftF4", "sendCtrlV", "sendShiftInsert"};

// The export of the library that sends the shortcut; empty: it has none.
std::string SenderOf(const std::string& keys) {
  const std::string wanted = "send" + Replaced(keys, "+", "");
  const auto* const known = std::find_if(kSenders.begin(), kSenders.end(),
                                         [&](const char* each) { return EqualsIgnoringCase(each, wanted); });
  return known == kSenders.end() ? std::string() : *known;
}

void CheckStep(const std::string& file, std::size_t index, const Step& step) {
  if (step.action == Action::Shortcut && SenderOf(step.text).empty() && FindShortcut(step.text)->size() > 1) {
    throw Failure(ExitCode::StepFailed, file + ": " + NameOf(index, step) + ": the library sends no " + step.text +
                                            "; only `korvane replay` does");
  }
}

void Need(ExportedProgram& program, const std::string& name) {
  auto& names = IsSecretName(name) ? program.secrets : program.given;
  if (std::find(names.begin(), names.end(), name) == names.end()) {
    names.push_back(name);
  }
}

}  // namespace

std::vector<TextPart> PartsOf(const std::string& text) {
  std::vector<TextPart> parts;
  const auto add = [&](const std::string& piece) {
    if (parts.empty() || parts.back().isVariable) {
      parts.push_back({});
    }
    parts.back().text += piece;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto end = text.compare(i, 2, "${") == 0 ? text.find('}', i) : std::string::npos;
    if (text.compare(i, 2, "$$") == 0) {
      add("$");
      ++i;
    } else if (end == std::string::npos) {
      add(text.substr(i, 1));
    } else {
      parts.push_back({true, text.substr(i + 2, end - i - 2)});
      i = end;
    }
  }
  return parts;
}

namespace {

bool HasSecret(const std::string& text) {
  const auto parts = PartsOf(text);
  return std::any_of(parts.begin(), parts.end(),
                     [](const TextPart& part) { return part.isVariable && IsSecretName(part.text); });
}

// What a step is known by to `target_of_step` and its kin: its name where that is the first of its kind, else empty,
// and its number counts.
std::string UniqueName(const ExportedProgram& program, std::size_t index) {
  const auto& steps = program.recording.steps;
  const auto first =
      std::find_if(steps.begin(), steps.end(), [&](const Step& step) { return step.name == steps[index].name; });
  return first == steps.begin() + static_cast<std::ptrdiff_t>(index) ? steps[index].name : std::string();
}

std::vector<std::string> Statements(const Dialect& dialect, const ExportedProgram& program, std::size_t index) {
  const Step& step = program.recording.steps[index];
  const std::string target = dialect.Target(UniqueName(program, index), index + 1);
  const std::string text = dialect.Text(step.text);
  switch (step.action) {
    case Action::Click:
      return {dialect.Click(target)};
    case Action::DoubleClick:
      return {dialect.DoubleClick(target)};
    case Action::Paste:
    case Action::Type: {
      std::vector<std::string> lines;
      if (step.replace) {
        lines.push_back(dialect.Empty(target));
      }
      if (step.text.empty()) {
        return lines;
      }
      // Everybody can read the clipboard, and a field for secrets does not tell them.
      const bool secret = HasSecret(step.text);
      const bool typed = step.action == Action::Type || secret;
      lines.push_back(typed ? dialect.Type(target, text) : dialect.Paste(target, text));
      if (step.replace && !secret) {
        lines.push_back(dialect.Expect(target, text, Match::Equals, 0));
      }
      return lines;
    }
    case Action::Shortcut:
      return {step.hasTarget ? dialect.Click(target) : dialect.Focus(program.recording.windows[step.window]),
              dialect.Send(SenderOf(step.text), FindShortcut(step.text)->back(), step.text)};
    case Action::Wait:
      return {dialect.Expect(target, text, step.match, step.timeoutMs)};
    case Action::Check:
      return {dialect.Expect(target, text, step.match, std::nullopt)};
    case Action::Read:
      break;
  }
  return dialect.Read(target, step.text);
}

}  // namespace

std::string StepsIn(const Dialect& dialect, const ExportedProgram& program, const std::string& indent) {
  std::string steps;
  for (std::size_t i = 0; i < program.recording.steps.size(); ++i) {
    for (const std::string& line : Statements(dialect, program, i)) {
      steps += indent + line + "\n";
    }
  }
  return steps;
}

ExportedProgram ProgramOf(const std::string& file, const Recording& recording) {
  ExportedProgram program{NameOf(PathOf(file).filename()), recording, {}, {}};
  std::set<std::string> read;
  for (std::size_t i = 0; i < recording.steps.size(); ++i) {
    const Step& step = recording.steps[i];
    CheckStep(file, i, step);
    if (step.action == Action::Read) {
      read.insert(step.text);
    } else if (step.action != Action::Shortcut) {
      for (const TextPart& part : PartsOf(step.text)) {
        if (part.isVariable && !read.contains(part.text)) {
          Need(program, part.text);
        }
      }
    }
  }
  return program;
}

std::string Joined(const std::string& text, std::string (*literal)(const std::string&),
                   std::string (*variable)(const std::string&)) {
  std::string joined;
  for (const TextPart& part : PartsOf(text)) {
    joined += (joined.empty() ? "" : " + ") + (part.isVariable ? variable(part.text) : literal(part.text));
  }
  return joined.empty() ? literal("") : joined;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') {
      quoted += std::string("\\") + character;
    } else if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
      quoted += escape;
    } else {
      quoted += character;
    }
  }
  return quoted + "\"";
}

// Octal digits end after three, unlike hexadecimal ones.
std::string LiteralOfC(const std::string& text) {
  std::string quoted = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\' || character == '?') {
      quoted += std::string("\\") + character;
    } else if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", static_cast<unsigned>(character));
      quoted += escape;
    } else {
      quoted += character;
    }
  }
  return quoted + "\"";
}

std::string Filled(std::string text, const std::vector<std::pair<std::string, std::string>>& values) {
  // In one pass: a value may look like a place.
  std::string filled;
  for (std::size_t i = 0; i < text.size();) {
    const auto place = std::find_if(values.begin(), values.end(), [&](const auto& value) {
      return text.compare(i, value.first.size() + 2, "@" + value.first + "@") == 0;
    });
    if (place == values.end()) {
      filled += text[i++];
    } else {
      filled += place->second;
      i += place->first.size() + 2;
    }
  }
  return filled;
}

std::string Listed(const std::vector<std::string>& names, std::string (*literal)(const std::string&)) {
  std::string listed;
  for (const std::string& name : names) {
    listed += (listed.empty() ? "" : ", ") + literal(name);
  }
  return listed;
}

}  // namespace host
