#include "host/report/report.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "host/engine/find_window.h"
#include "host/engine/result_words.h"
#include "host/recording/record_json.h"
#include "host/report/template.h"

namespace host {

namespace {

std::string LocalTime() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char text[40] = {};
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
  return text;
}

// In parts of a hundred of the picture, so that it stays in place at any size.
Json MarkToJson(const world::Rect& mark, const world::Rect& area) {
  const auto part = [](int length, int whole) { return whole > 0 ? 100.0 * length / whole : 0.0; };
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  return {{"left", part(mark.left - area.left, width)},
          {"top", part(mark.top - area.top, height)},
          {"width", part(mark.right - mark.left, width)},
          {"height", part(mark.bottom - mark.top, height)}};
}

Json StepToJson(const Recording& recording, std::size_t index) {
  const Step& step = recording.steps[index];
  return {{"number", index + 1}, {"title", Title(step)}, {"action", WordsOf(step.action).word}};
}

Json ResultToJson(const Recording& recording, const StepResult& result, double runStart) {
  Json json = StepToJson(recording, result.index);
  json["state"] = result.code == KORVANE_OK ? "ok" : "failed";
  json["code"] = result.code;
  json["words"] = result.windowGone ? "no window" : WordsOfCode(result.code);
  json["text"] = result.step->action == Action::Read ? std::string() : result.text;
  json["start"] = result.start - runStart;
  json["milliseconds"] = result.milliseconds;
  json["remark"] = result.remark;
  json["explanation"] = result.explanation;
  json["lines"] = result.lines;
  if (result.picture) {
    const world::Rect& area = result.picture->area;
    json["picture"] = {
        {"address", result.picture->address}, {"width", area.right - area.left}, {"height", area.bottom - area.top}};
    if (result.mark) {
      json["picture"]["mark"] = MarkToJson(*result.mark, area);
    }
  }
  return json;
}

Json RunToJson(const Recording& recording, const Run& run, std::size_t from) {
  Json steps = Json::array();
  const double start = run.steps.empty() ? 0 : run.steps.front().start;
  for (const StepResult& result : run.steps) {
    steps.push_back(ResultToJson(recording, result, start));
  }
  for (std::size_t i = from + run.steps.size(); i < recording.steps.size(); ++i) {
    Json skipped = StepToJson(recording, i);
    skipped["state"] = "not run";
    steps.push_back(skipped);
  }
  return {{"name", run.name}, {"steps", steps}};
}

// Nothing in the data may look like the end of the script element that holds it.
std::string WithoutTags(const std::string& json) {
  std::string safe;
  for (const char character : json) {
    safe += character == '<' ? std::string("\\u003c") : std::string(1, character);
  }
  return safe;
}

}  // namespace

std::string WriteReport(const Recording& recording, const Replayed& replayed, const ReplayOptions& options) {
  Json windows = Json::array();
  for (const WindowName& window : recording.windows) {
    windows.push_back(Describe(window));
  }
  Json data = {{"file", options.file},
               {"time", LocalTime()},
               {"dryRun", options.run.dryRun},
               {"windows", windows},
               {"runs", Json::array()}};
  for (const Run& run : replayed.runs) {
    data["runs"].push_back(RunToJson(recording, run, options.from));
  }
  return kReportBeforeData + WithoutTags(data.dump(-1, ' ', false, Json::error_handler_t::replace)) + kReportAfterData;
}

}  // namespace host
