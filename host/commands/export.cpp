#include <algorithm>
#include <iostream>
#include <iterator>

#include "host/base/file.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/export/program.h"
#include "host/recording/recording_file.h"

namespace host {

namespace {

struct Language {
  const char* name;
  const char* ending;
  std::string (*write)(const ExportedProgram&);
};
constexpr Language kLanguages[] = {{"c", ".c", ExportedC},
                                   {"cpp", ".cpp", ExportedCpp},
                                   {"csharp", ".cs", ExportedCsharp},
                                   {"node", ".js", ExportedNode},
                                   {"python", ".py", ExportedPython}};

// What a replay does and the program does not, told rather than passed over.
void TellDifferences(const Recording& recording) {
  const auto labelled = std::count_if(recording.steps.begin(), recording.steps.end(),
                                      [](const Step& step) { return !step.label.empty(); });
  if (labelled != 0) {
    std::cout << "  note: " << labelled << " steps have labels, which a replay compares and the program does not\n";
  }
  if (!recording.start.empty()) {
    std::cout << "  note: the program does not start " << recording.start << ": it has to be open\n";
  }
}

}  // namespace

std::vector<std::string> ExportLanguages() {
  std::vector<std::string> names;
  std::transform(std::begin(kLanguages), std::end(kLanguages), std::back_inserter(names),
                 [](const Language& language) { return language.name; });
  return names;
}

ExitCode Export(const ExportOptions& options) {
  const auto* const language = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                            [&](const Language& each) { return each.name == options.language; });
  const Recording recording = LoadRecording(options.file);
  const std::string text = language->write(ProgramOf(options.file, recording));
  // Beside the recording, which the program looks for in its own folder.
  const std::string file =
      options.output.empty() ? NameOf(PathOf(options.file).replace_extension(language->ending)) : options.output;
  if (AreSameFile(options.file, file)) {
    throw Failure(ExitCode::Usage, file + ": is the recording itself");
  }
  if (std::error_code ignored; !options.force && std::filesystem::exists(PathOf(file), ignored)) {
    throw Failure(ExitCode::CannotWrite, file + ": is there already; --force replaces it");
  }
  OutputFile(file).Write(text);
  std::cout << "  " << file << ": " << recording.steps.size() << " steps\n";
  TellDifferences(recording);
  return ExitCode::Ok;
}

}  // namespace host
