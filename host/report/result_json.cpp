#include "host/report/result_json.h"

namespace host {

namespace {

Json StepToJson(std::size_t index, const Step& step, StepState state) {
  return {{"number", index + 1}, {"name", step.name}, {"action", WordsOf(step.action).word}, {"state", WordOf(state)}};
}

// What does not apply to a step is left out.
void AddText(Json& json, const char* key, const std::string& text) {
  if (!text.empty()) {
    json[key] = text;
  }
}

}  // namespace

Json TextToJson(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json(nullptr);
}

Json ResultToJson(const StepResult& result) {
  Json json = StepToJson(result.index, *result.step, result.state);
  json["code"] = result.code;
  json["milliseconds"] = result.milliseconds;
  json["windowThere"] = !result.windowGone;
  json["inputSent"] = result.touched;
  if (result.foundBy) {
    json["foundBy"] = NameOf(*result.foundBy);
  }
  for (const Attempt& attempt : result.attempts) {
    json["identifications"].push_back({{"by", NameOf(attempt.by)},
                                       {"finding", WordOf(attempt.finding)},
                                       {"why", attempt.why},
                                       {"milliseconds", attempt.milliseconds}});
  }
  if (result.expected) {
    json["expected"] = *result.expected;
  }
  if (result.expected || result.received) {
    json["received"] = TextToJson(result.received);
  }
  AddText(json, "healing", result.healing);
  AddText(json, "remark", result.remark);
  AddText(json, "explanation", result.explanation);
  if (result.proposal) {
    json["proposal"] = ToJson(*result.proposal);
  }
  for (const StepResult& earlier : result.earlier) {
    json["earlier"].push_back(ResultToJson(earlier));
  }
  return json;
}

Json ReplayToJson(const Recording& recording, const std::vector<DataRow>& rows, const Replayed& replayed) {
  Json json = {{"milliseconds", replayed.milliseconds}};
  const Totals totals = Sum(replayed);
  json["totals"] = {{"steps", totals.steps},   {"ok", totals.ok},         {"healed", totals.healed},
                    {"failed", totals.failed}, {"notRun", totals.notRun}, {"notOnTheFirstTry", totals.retried}};
  json["rowsNotBegun"] = replayed.rowsLeft;
  json["rows"] = Json::array();
  for (const Run& run : replayed.runs) {
    Json steps = Json::array();
    for (const StepResult& result : run.steps) {
      steps.push_back(ResultToJson(result));
    }
    for (std::size_t i = run.from + run.steps.size(); i < recording.steps.size(); ++i) {
      steps.push_back(StepToJson(i, recording.steps[i], StepState::NotRun));
    }
    const int number = rows[run.row].number;
    json["rows"].push_back({{"row", number == 0 ? Json(nullptr) : Json(number)}, {"steps", steps}});
  }
  return json;
}

}  // namespace host
