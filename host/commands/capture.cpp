#include <iostream>

#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/find_window.h"
#include "host/engine/identify.h"
#include "host/engine/library_log.h"
#include "host/engine/uniqueness.h"
#include "host/recording/record_json.h"

namespace host {

namespace {

struct Captured {
  TargetRecord record{};
  std::optional<world::Window> window;
  std::vector<Attempt> attempts;
  std::vector<std::string> unique;  // beside each attempt
};

std::string UniqueWord(const TargetRecord& record, Identification by, const world::Window& window) {
  if (by == Identification::ScreenPoint) {
    return "one point";
  }
  if (by == Identification::AutomationId) {
    const Uniqueness found = CountSameAutomationId(record, window);
    const std::string among = " of " + std::to_string(found.elements) + " elements seen";
    return found.same <= 1 ? "yes, among" + among.substr(3) : "no, " + std::to_string(found.same) + among;
  }
  for (int level = 0; level < record.pathLength; ++level) {
    if (record.childIndices[level] == 0) {
      return "no: level " + std::to_string(level + 1) + " is the first that fits";
    }
  }
  return "yes, every level has its position";
}

Captured CaptureThere(const CaptureOptions& options) {
  if (options.afterSeconds > 0) {
    delay(static_cast<int>(options.afterSeconds * 1000));
  }
  const LibraryLog log("");
  const world::Point point = options.cursor ? world::Cursor() : world::Point{options.at[0], options.at[1]};
  Captured captured;
  if (captureTargetAtPoint(&captured.record, point.x, point.y) != KORVANE_OK) {
    throw Failure(ExitCode::StepFailed,
                  "there is no element at " + std::to_string(point.x) + "," + std::to_string(point.y));
  }
  captured.window = world::WindowAt(point);
  if (!captured.window) {
    return captured;
  }
  for (const Identification by : kIdentifications) {
    const Attempt attempt = TryAlone(captured.record, captured.window->handle, by);
    captured.attempts.push_back(attempt);
    captured.unique.push_back(attempt.recorded ? UniqueWord(captured.record, by, *captured.window) : "");
  }
  return captured;
}

Json CapturedToJson(const Captured& captured) {
  Json json = {{"target", ToJson(captured.record)}, {"identifications", Json::array()}};
  if (captured.window) {
    json["window"] = {{"title", captured.window->title},
                      {"class", captured.window->className},
                      {"process", captured.window->process}};
  }
  for (std::size_t i = 0; i < captured.attempts.size(); ++i) {
    const Attempt& attempt = captured.attempts[i];
    json["identifications"].push_back({{"by", NameOf(attempt.by)},
                                       {"recorded", attempt.recorded},
                                       {"found", attempt.found},
                                       {"milliseconds", attempt.milliseconds},
                                       {"unique", captured.unique[i]}});
  }
  return json;
}

std::string FieldsTable(const Captured& captured) {
  const Json fields = ToJson(captured.record);
  Table table({"field", "value"});
  if (captured.window) {
    table.Add({"window", Describe(NameOf(*captured.window))});
  }
  for (const auto& [name, value] : fields.items()) {
    if (name != "levels") {
      const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
      table.Add({name, text.empty() ? "(none)" : text});
    }
  }
  return table.Text();
}

std::string LevelsTable(const TargetRecord& record) {
  Table table({"level", "controlType", "className", "childIndex"});
  const Json fields = ToJson(record);
  int number = 0;
  for (const Json& level : fields["levels"]) {
    const Json& name = level["className"];
    table.Add({std::to_string(++number), level["controlType"].dump(),
               name.is_string() ? name.get<std::string>() : name.dump(), level["childIndex"].dump()});
  }
  return table.Text();
}

std::string AttemptsTable(const Captured& captured) {
  Table table({"alone", "result", "unique"});
  for (std::size_t i = 0; i < captured.attempts.size(); ++i) {
    table.Add({NameOf(captured.attempts[i].by), Describe(captured.attempts[i]), captured.unique[i]});
  }
  return table.Text();
}

}  // namespace

ExitCode Capture(const CaptureOptions& options) {
  const Captured captured = CaptureThere(options);
  if (options.json) {
    std::cout << CapturedToJson(captured).dump(2) << "\n";
  } else {
    std::cout << FieldsTable(captured) << "\n" << LevelsTable(captured.record) << "\n" << AttemptsTable(captured);
  }
  return ExitCode::Ok;
}

}  // namespace host
