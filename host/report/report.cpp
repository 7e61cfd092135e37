#include "host/report/report.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>

#include "host/engine/find_window.h"
#include "host/engine/result_words.h"
#include "host/recording/record_json.h"
#include "host/report/fold_log.h"
#include "host/report/result_json.h"
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
double Part(int length, int whole) {
  return whole > 0 ? 100.0 * length / whole : 0.0;
}

Json MarkToJson(const world::Rect& mark, const world::Rect& area) {
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  return {{"left", Part(mark.left - area.left, width)},
          {"top", Part(mark.top - area.top, height)},
          {"width", Part(mark.right - mark.left, width)},
          {"height", Part(mark.bottom - mark.top, height)}};
}

// Where the target's recorded point is now that its window may have moved; nothing outside the picture.
std::optional<world::Rect> RecordedPlace(const WindowName& recorded, const StepResult& result,
                                         const world::Rect& area) {
  const TargetRecord& target = result.step->target;
  const bool known = recorded.rect.right > recorded.rect.left && (target.x != 0 || target.y != 0);
  const int x = target.x - recorded.rect.left + result.window->rect.left;
  const int y = target.y - recorded.rect.top + result.window->rect.top;
  const bool inside = x >= area.left && x < area.right && y >= area.top && y < area.bottom;
  return known && inside ? std::optional(world::Rect{x, y, x, y}) : std::nullopt;
}

// The target where it was when the picture was taken, and the point that the click was to go to.
Json WithTarget(Json json, const StepResult& result) {
  const world::Rect& area = result.before->area;
  if (result.mark) {
    json["mark"] = MarkToJson(*result.mark, area);
  }
  if (result.aim) {
    json["aim"] = MarkToJson({result.aim->x, result.aim->y, result.aim->x, result.aim->y}, area);
  }
  return json;
}

// Of a target that was not found, the place where it was recorded.
Json WithLostTarget(Json json, const Recording& recording, const StepResult& result) {
  if (result.before || !result.step->hasTarget) {
    return json;
  }
  if (result.mark) {
    json["mark"] = MarkToJson(*result.mark, result.picture->area);
  } else if (const auto place = RecordedPlace(recording.windows[result.step->window], result, result.picture->area)) {
    json["recorded"] = MarkToJson(*place, result.picture->area);
  }
  return json;
}

// A try that failed before another one.
Json TryToJson(const StepResult& result) {
  return {{"words", WordsOfCode(result.code)},
          {"milliseconds", result.milliseconds},
          {"remark", result.remark},
          {"explanation", result.explanation},
          {"lines", FoldLog(result.lines)}};
}

Json StepToJson(const Recording& recording, std::size_t index) {
  const Step& step = recording.steps[index];
  return {{"number", index + 1}, {"title", Title(step)}};
}

// Nothing in the data may look like the end of the script element that holds it.
std::string WithoutTags(const std::string& json) {
  std::string safe;
  for (const char character : json) {
    safe += character == '<' ? std::string("\\u003c") : std::string(1, character);
  }
  return safe;
}

std::string Block(const char* kind, const Json& content) {
  const Json block = {{kind, content}};
  return "<script type=\"application/json\">" +
         WithoutTags(block.dump(-1, ' ', false, Json::error_handler_t::replace)) + "</script>\n";
}

}  // namespace

std::size_t ReportWriter::Pictures::IndexOf(const std::string& address) {
  const auto [place, isNew] =
      indices_.try_emplace({std::hash<std::string>()(address), address.size()}, indices_.size());
  if (isNew) {
    file_.Append(Block("picture", address));
  }
  return place->second;
}

Json ReportWriter::Pictures::ToJson(const world::Picture& picture) {
  const world::Rect& area = picture.area;
  Json json = {
      {"index", IndexOf(picture.address)}, {"width", area.right - area.left}, {"height", area.bottom - area.top}};
  if (!picture.patch.empty()) {
    json["patch"] = MarkToJson(picture.patchArea, area);
    json["patch"]["index"] = IndexOf(picture.patch);
  }
  return json;
}

ReportWriter::ReportWriter(const std::string& file, const Recording& recording, const std::vector<DataRow>& rows)
    : file_(file), recording_(recording), rows_(rows) {}

void ReportWriter::Begin(const ReplayOptions& options) {
  secrets_ = options.run.secrets;
  Json windows = Json::array();
  for (const WindowName& window : recording_.windows) {
    windows.push_back(Describe(window));
  }
  Json steps = Json::array();
  for (std::size_t i = 0; i < recording_.steps.size(); ++i) {
    steps.push_back(StepToJson(recording_, i));
  }
  file_.Append(
      kReportBeforeData +
      Block("begin", {{"file", options.file},
                      {"time", LocalTime()},
                      {"row", options.row == 0 ? std::string() : "row " + std::to_string(rows_[options.row].number)},
                      {"from", options.from + 1},
                      {"dryRun", options.run.dryRun},
                      {"facts", options.facts},
                      {"windows", windows},
                      {"steps", steps}}));
}

void ReportWriter::BeginRun(const Run& run) {
  runStart_.reset();
  Json values = Json::array();
  for (const auto& [name, value] : rows_[run.row].values) {
    values.push_back({name, secrets_.Masked(value)});
  }
  file_.Append(Block("run", {{"name", run.name}, {"from", run.from}, {"values", values}}));
}

void ReportWriter::Add(const StepResult& result) {
  runStart_ = runStart_.value_or(result.start);
  file_.Append(Block("step", ResultToJson(result)));
}

void ReportWriter::End(const Replayed& replayed) {
  file_.Append(Block("end", {{"milliseconds", replayed.milliseconds},
                             {"exitCode", static_cast<int>(replayed.code)},
                             {"rowsLeft", replayed.rowsLeft}}) +
               kReportAfterData);
  file_.Finish();
}

Json ReportWriter::ResultToJson(const StepResult& result) {
  Json json = StepToJson(recording_, result.index);
  json["state"] = WordOf(result.state);
  json["healing"] = result.healing;
  json["code"] = result.code;
  json["words"] = result.windowGone                   ? "no window"
                  : result.state == StepState::Healed ? WordOf(result.state)
                                                      : WordsOfCode(result.code);
  json["text"] = result.step->action == Action::Read ? std::string() : result.text;
  json["start"] = result.start - runStart_.value_or(result.start);
  json["milliseconds"] = result.milliseconds;
  json["remark"] = result.remark;
  json["explanation"] = result.explanation;
  json["lines"] = FoldLog(result.lines);
  if (result.expected) {
    json["expected"] = *result.expected;
    json["received"] = TextToJson(result.received);
  }
  if (result.proposal) {
    json["proposal"] = ToJson(*result.proposal).dump(2);
  }
  for (const Attempt& attempt : result.attempts) {
    json["attempts"].push_back({NameOf(attempt.by), Describe(attempt), attempt.why});
  }
  for (const StepResult& earlier : result.earlier) {
    json["earlier"].push_back(TryToJson(earlier));
  }
  json["hasTarget"] = result.step->hasTarget;
  if (result.before) {
    json["before"] = WithTarget(pictures_.ToJson(*result.before), result);
  }
  if (result.picture) {
    json["after"] = WithLostTarget(pictures_.ToJson(*result.picture), recording_, result);
  }
  for (const Candidate& candidate : result.candidates) {
    Json told = {{"what", candidate.what}, {"difference", candidate.difference}};
    if (candidate.rect && result.picture) {
      told["mark"] = MarkToJson(*candidate.rect, result.picture->area);
    }
    json["candidates"].push_back(std::move(told));
  }
  if (result.screen) {
    json["screen"] = pictures_.ToJson(*result.screen);
  }
  return json;
}

}  // namespace host
