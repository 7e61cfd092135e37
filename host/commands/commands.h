// What the program can be told to do. Each command returns its exit code; one that cannot go on throws a Failure.
#pragma once

#include <string>
#include <vector>

#include "host/base/failure.h"
#include "host/base/file.h"
#include "host/recording/recording.h"

namespace host {

struct CaptureOptions {
  std::vector<int> at;  // x and y, unless at the cursor
  bool cursor = false;
  double afterSeconds = 0;
  bool json = false;
};
ExitCode Capture(const CaptureOptions& options);

struct RecordOptions {
  std::string file;
  std::string script;  // takes the steps from this file
  bool point = false;  // somebody points at elements instead of using them
  bool force = false;
  bool act = false;                  // with a script: each step is also done
  std::string start;                 // the program to start first; empty: it is open
  int from = 0;                      // goes on behind this step; 0: a new recording
  bool plain = false;                // without a frame around what is pointed at
  std::vector<std::string> hotkeys;  // "undo=Ctrl+Shift+F8"
};
ExitCode Record(const RecordOptions& options);
// While somebody works as always.
Recording RecordByDoing(const RecordOptions& options, OutputFile& output);

struct CheckOptions {
  std::string file;
  int timeoutMs = 3000;
  bool strict = false;
  bool fix = false;
  bool force = false;  // correct the recording itself
  bool json = false;
};
ExitCode Check(const CheckOptions& options);

struct ReplayCommandOptions {
  std::string commandLine;  // as it was given
  std::string file;
  std::string report;
  std::string junit;
  std::string data;
  std::string encoding;  // of the data; empty: UTF-8
  std::string log;
  std::string proposals;
  std::vector<std::string> set;
  int row = 0;  // as the file counts; 0: the first of the data
  int from = 1;
  int timeoutMs = 3000;
  int retries = 0;
  bool dryRun = false;
  bool keepGoing = false;
  bool close = false;  // the program that was started
  bool strict = false;
  bool json = false;
};
ExitCode RunReplay(const ReplayCommandOptions& options);

struct ExportOptions {
  std::string file;
  std::string language;
  std::string output;  // empty: beside the recording, under its name
  bool force = false;
};
// Their names, for --language.
std::vector<std::string> ExportLanguages();
ExitCode Export(const ExportOptions& options);

// Without a change it lists the steps.
struct EditOptions {
  std::string file;
  // Steps by their numbers from 1, as the command line has them.
  std::vector<std::string> remove;
  std::vector<std::string> move;    // the step, and the number that it gets
  std::vector<std::string> rename;  // the step, and its name
  std::string repoint;
  std::vector<int> at;  // where that one points from now on
};
ExitCode Edit(const EditOptions& options);

ExitCode PickWindow(bool json);
ExitCode ShowLog(const std::string& file);

}  // namespace host
