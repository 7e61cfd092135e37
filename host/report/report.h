// A replay as one HTML file that needs nothing else: steps, durations, pictures with the target marked, the log,
// and where it was run.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/file.h"
#include "host/engine/replay.h"
#include "host/recording/record_json.h"

namespace host {

// Writes it as the replay goes on: memory does not grow with the run, and a program that is ended from outside leaves a
// report of what was done. The file holds every picture once.
class ReportWriter {
 public:
  // What is given must outlive it. Failure: CannotWrite
  ReportWriter(const std::string& file, const Recording& recording, const std::vector<DataRow>& rows);
  void Begin(const ReplayOptions& options);
  void BeginRun(const Run& run);
  void Add(const StepResult& result);
  // Failure: CannotWrite, when some of it could not be written.
  void End(const Replayed& replayed);

 private:
  // Pictures by their place in the file. Only what tells them apart is kept of each.
  class Pictures {
   public:
    explicit Pictures(GrowingFile& file) : file_(file) {}
    Json ToJson(const world::Picture& picture);

   private:
    std::size_t IndexOf(const std::string& address);

    GrowingFile& file_;
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> indices_;
  };
  Json ResultToJson(const StepResult& result);

  GrowingFile file_;
  Pictures pictures_{file_};
  const Recording& recording_;
  const std::vector<DataRow>& rows_;
  Secrets secrets_;
  std::optional<double> runStart_;
};

}  // namespace host
