// What an exported program says, whatever its language: the steps, and where its texts come from.
#pragma once

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
bool HasSecret(const std::string& text);
// What `target_of_step` and its kin know the step by: its name where that is the first of its kind, else empty, and its
// number counts.
std::string UniqueName(const ExportedProgram& program, std::size_t index);

// The export of the library that sends the shortcut; empty: `sendKey` with `KeyOf`.
std::string SenderOf(const std::string& keys);
int KeyOf(const std::string& keys);

// "A" + "b" in the many languages where this is how texts are put together.
std::string Joined(const std::string& text, std::string (*literal)(const std::string&),
                   std::string (*variable)(const std::string&));
// Between double quotes, as Python, JavaScript and C# read it.
std::string Quoted(const std::string& text);
// The text with `@NAME@` replaced by its value.
std::string Filled(std::string text, const std::vector<std::pair<std::string, std::string>>& values);
// A list, separated by ", ".
std::string Listed(const std::vector<std::string>& names, std::string (*literal)(const std::string&));

// Each language's program as text.
std::string ExportedPython(const ExportedProgram& program);
std::string ExportedNode(const ExportedProgram& program);
std::string ExportedCpp(const ExportedProgram& program);
std::string ExportedCsharp(const ExportedProgram& program);

}  // namespace host
