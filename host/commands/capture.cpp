#include <iostream>

#include "host/base/console.h"
#include "host/base/table.h"
#include "host/base/text.h"
#include "host/commands/commands.h"
#include "host/engine/best_identification.h"
#include "host/engine/find_window.h"
#include "host/engine/library_log.h"
#include "host/recording/record_json.h"

namespace host {

namespace {

struct Captured {
  TargetRecord record{};
  std::optional<world::Window> window;
  BestIdentification best;
};

std::string UniqueWord(const Captured& captured, const Attempt& attempt) {
  if (attempt.finding == Finding::NotRecorded) {
    return {};
  }
  switch (attempt.by) {
    case Identification::ScreenPoint:
      return "one point";
    case Identification::AutomationId:
      return attempt.finding == Finding::Ambiguous ? "no: " + attempt.why : "yes, the only one in the window";
    case Identification::TreePath:
      break;
  }
  for (int level = 0; level < captured.record.pathLength; ++level) {
    if (captured.record.childIndices[level] == 0) {
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
  if (captured.window) {
    captured.best = ChooseIdentification(captured.record, *captured.window);
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
  for (const Attempt& attempt : captured.best.attempts) {
    json["identifications"].push_back({{"by", NameOf(attempt.by)},
                                       {"recorded", attempt.finding != Finding::NotRecorded},
                                       {"found", attempt.finding == Finding::Found},
                                       {"milliseconds", attempt.milliseconds},
                                       {"unique", UniqueWord(captured, attempt)}});
  }
  if (captured.window) {
    json["best"] = NameOf(captured.best.by);
    json["warnings"] = captured.best.warnings;
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
  for (const Attempt& attempt : captured.best.attempts) {
    table.Add({NameOf(attempt.by), Describe(attempt), UniqueWord(captured, attempt)});
  }
  std::string text = table.Text();
  if (captured.window) {
    text += std::string("\n  best: ") + NameOf(captured.best.by) + "\n";
  }
  for (const std::string& warning : captured.best.warnings) {
    text += "  note: " + warning + "\n";
  }
  return text;
}

}  // namespace

ExitCode Capture(const CaptureOptions& options) {
  const Captured captured = CaptureThere(options);
  if (options.json) {
    Console::Unescaped() << CapturedToJson(captured).dump(2) << "\n";
  } else {
    std::cout << FieldsTable(captured) << "\n" << LevelsTable(captured.record) << "\n" << AttemptsTable(captured);
  }
  return ExitCode::Ok;
}

}  // namespace host
