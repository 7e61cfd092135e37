// What an exported program says, whatever its language: the steps, and where its texts come from.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/recording/recording.h"

namespace host {

// A piece of a step's text.
struct TextPart {
  bool isVariable = false;
  std::string text;  // as it is, or the variable's name
};

struct ExportedProgram {
  std::string file;  // the recording's name, without folders: the program looks for it in its own folder
  const Recording& recording;
  std::vector<std::string> given;    // variables that whoever runs it gives, in the order of their use
  std::vector<std::string> secrets;  // variables from the environment
};

// Failure: StepFailed, with the step, when the library cannot do what it says.
ExportedProgram ProgramOf(const std::string& file, const Recording& recording);

std::vector<TextPart> PartsOf(const std::string& text);
// "A" + "b" in the many languages where this is how texts are put together.
std::string Joined(const std::string& text, std::string (*literal)(const std::string&),
                   std::string (*variable)(const std::string&));
// Between double quotes, as Python, JavaScript and C# read it.
std::string Quoted(const std::string& text);
// As C and C++ read it.
std::string LiteralOfC(const std::string& text);
// The text with `@NAME@` replaced by its value.
std::string Filled(std::string text, const std::vector<std::pair<std::string, std::string>>& values);
// How a language says what a step does. A target is what `Target` answered, a text what `Text` did.
class Dialect {
 public:
  virtual ~Dialect() = default;

  // By its name, or where that is empty by its number.
  virtual std::string Target(const std::string& name, std::size_t number) const = 0;
  virtual std::string Text(const std::string& text) const = 0;
  virtual std::string Click(const std::string& target) const = 0;
  virtual std::string DoubleClick(const std::string& target) const = 0;
  virtual std::string Empty(const std::string& target) const = 0;
  virtual std::string Type(const std::string& target, const std::string& text) const = 0;
  virtual std::string Paste(const std::string& target, const std::string& text) const = 0;
  // Without a time-out it shows now; 0 is the program's own.
  virtual std::string Expect(const std::string& target, const std::string& text, Match match,
                             std::optional<int> timeoutMs) const = 0;
  virtual std::string Focus(const WindowName& window) const = 0;
  // By the library's export for it; empty: it has one for this single key.
  virtual std::string Send(const std::string& sender, int key, const std::string& keys) const = 0;
  // Into the variable, and shown.
  virtual std::vector<std::string> Read(const std::string& target, const std::string& variable) const = 0;

 protected:
  Dialect() = default;
  Dialect(const Dialect&) = default;
  Dialect& operator=(const Dialect&) = default;
};
// All steps, a line for each statement.
std::string StepsIn(const Dialect& dialect, const ExportedProgram& program, const std::string& indent);

// A list, separated by ", ".
std::string Listed(const std::vector<std::string>& names, std::string (*literal)(const std::string&));

// Each language's program as text.
std::string ExportedPython(const ExportedProgram& program);
std::string ExportedNode(const ExportedProgram& program);
std::string ExportedC(const ExportedProgram& program);
std::string ExportedCpp(const ExportedProgram& program);
std::string ExportedCsharp(const ExportedProgram& program);

}  // namespace host
