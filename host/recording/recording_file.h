// Recordings as files: JSON, versioned; docs/host.md describes the format.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/recording/recording.h"

namespace host {

inline constexpr int kRecordingVersion = 1;

std::string WriteRecording(const Recording& recording);
// Failure: BadFile, with file, step and field in its line.
Recording ParseRecording(const std::string& file, const std::string& text);
Recording LoadRecording(const std::string& file);

// A script is a recording whose targets are yet to be captured: steps with points instead of records. With a window,
// the points count from that window's upper left corner; without, they are screen points.
struct ScriptStep {
  Step step;
  world::Point at;
  std::optional<int> method;
};
struct Script {
  std::optional<WindowName> window;
  std::vector<ScriptStep> steps;
};
Script LoadScript(const std::string& file);

}  // namespace host
