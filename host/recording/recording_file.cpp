#include "host/recording/recording_file.h"

#include "host/base/failure.h"
#include "host/base/file.h"
#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/recording/json_fields.h"
#include "host/recording/parse_json.h"

namespace host {

namespace {

constexpr const char* kMatchWords[] = {"contains", "equals"};

// Far beyond any desktop, and far from where sums of such numbers would overflow.
constexpr int kFarthestPoint = 1000000;

bool HasReplace(Action action) {
  return action == Action::Paste || action == Action::Type;
}

bool HasMatch(Action action) {
  return action == Action::Wait || action == Action::Check;
}

void CheckPlace(const JsonFields& fields, const char* field, std::int32_t number) {
  if (number < -kFarthestPoint || number > kFarthestPoint) {
    fields.Refuse(field, "is " + std::to_string(number) + ", which is on no screen");
  }
}

world::Rect RectFromJson(const JsonFields& fields) {
  const auto rect = fields.Numbers("rect", 4);
  for (const std::int32_t number : rect) {
    CheckPlace(fields, "rect", number);
  }
  return {rect[0], rect[1], rect[2], rect[3]};
}

// A field of another action is a mistake that would be passed over in silence.
void CheckFieldsOf(const JsonFields& fields, Action action) {
  const ActionWords& words = WordsOf(action);
  const auto refuse = [&](const char* field) {
    if (fields.Has(field)) {
      fields.Refuse(field, std::string("does not belong to the action \"") + words.word + "\"");
    }
  };
  for (const char* const field : {"text", "keys", "variable"}) {
    if (words.textField == nullptr || std::string(field) != words.textField) {
      refuse(field);
    }
  }
  if (!HasMatch(action)) {
    refuse("match");
  }
  if (!HasReplace(action)) {
    refuse("replace");
  }
}

Json WindowToJson(const WindowName& window) {
  const auto& rect = window.rect;
  return {{"title", window.title},
          {"class", window.className},
          {"process", window.process},
          {"rect", {rect.left, rect.top, rect.right, rect.bottom}}};
}

WindowName WindowFromJson(const Json& json, const std::string& where) {
  const JsonFields fields(json, where);
  fields.AllowOnly({"title", "class", "process", "rect"});
  WindowName window{fields.Text("title", ""), fields.Text("class", ""), fields.Text("process", ""), {}};
  if (window.title.empty() && window.className.empty() && window.process.empty()) {
    fields.Refuse("title", "is missing, and so are \"class\" and \"process\"");
  }
  if (fields.Has("rect")) {
    window.rect = RectFromJson(fields);
  }
  return window;
}

Json ScreenToJson(const world::Screen& screen) {
  const auto& rect = screen.rect;
  return {{"rect", {rect.left, rect.top, rect.right, rect.bottom}}, {"dpi", screen.dpi}};
}

world::Screen ScreenFromJson(const Json& json, const std::string& where) {
  const JsonFields fields(json, where);
  fields.AllowOnly({"rect", "dpi"});
  return {RectFromJson(fields), fields.Number("dpi")};
}

Json StepToJson(const Step& step) {
  const ActionWords& words = WordsOf(step.action);
  Json json = {{"name", step.name}, {"action", words.word}};
  if (words.textField != nullptr) {
    json[words.textField] = step.text;
  }
  if (HasMatch(step.action)) {
    json["match"] = kMatchWords[step.match == Match::Equals];
  }
  if (step.replace) {
    json["replace"] = true;
  }
  if (step.timeoutMs != 0) {
    json["timeout"] = step.timeoutMs;
  }
  json["window"] = step.window + 1;
  if (!step.label.empty()) {
    json["label"] = step.label;
  }
  if (step.hasTarget) {
    json["target"] = ToJson(step.target);
  }
  return json;
}

Action ActionFrom(const JsonFields& fields) {
  const std::string word = fields.Text("action");
  for (const ActionWords& known : AllActions()) {
    if (word == known.word) {
      return known.action;
    }
  }
  fields.Refuse("action", "is \"" + Shortened(word, kNameColumns) +
                              "\", which is not known; known are click, double-click, paste, type, "
                              "shortcut, wait, check, read");
}

std::string TextFrom(const JsonFields& fields, const ActionWords& words, bool mayBeEmpty) {
  if (words.textField == nullptr) {
    return {};
  }
  std::string text = fields.Text(words.textField);
  if (text.empty() && !mayBeEmpty) {
    fields.Refuse(words.textField, "is empty");
  }
  if (words.action == Action::Shortcut && !FindShortcut(text)) {
    fields.Refuse(words.textField,
                  "is \"" + Shortened(text, kNameColumns) + "\", which is not known; known are " + AllShortcuts());
  }
  return text;
}

Match MatchFrom(const JsonFields& fields) {
  const std::string word = fields.Text("match", kMatchWords[0]);
  if (word != kMatchWords[0] && word != kMatchWords[1]) {
    fields.Refuse("match", "is \"" + Shortened(word, kNameColumns) + "\"; it can be \"contains\" or \"equals\"");
  }
  return word == kMatchWords[1] ? Match::Equals : Match::Contains;
}

// What steps of recordings and of scripts have in common.
Step StepFromJson(const JsonFields& fields) {
  Step step;
  step.name = fields.Text("name", "");
  step.action = ActionFrom(fields);
  CheckFieldsOf(fields, step.action);
  step.replace = fields.Has("replace") && fields.Flag("replace");
  step.text = TextFrom(fields, WordsOf(step.action), step.replace);
  step.match = MatchFrom(fields);
  step.timeoutMs = fields.Number("timeout", 0);
  if (step.timeoutMs < 0 || step.timeoutMs > kLongestTimeoutMs) {
    fields.Refuse("timeout", "is " + std::to_string(step.timeoutMs) + "; it can be 0 to " +
                                 std::to_string(kLongestTimeoutMs) + " ms");
  }
  return step;
}

std::string Label(const std::string& file, std::size_t index, const Json& step) {
  Step named;
  if (step.is_object() && step.contains("name") && step["name"].is_string()) {
    named.name = step["name"].get<std::string>();
  }
  return file + ": " + NameOf(index, named);
}

void CheckVersion(const JsonFields& fields, const std::string& file) {
  const int version = fields.Number("korvane");
  if (version > kRecordingVersion) {
    throw Failure(ExitCode::BadFile, file + ": field \"korvane\" is " + std::to_string(version) +
                                         ": written by a newer version; this one reads up to " +
                                         std::to_string(kRecordingVersion));
  }
  if (version < 1) {
    fields.Refuse("korvane", "is not a version");
  }
}

// A record that the library would refuse, or that would be sought where nothing can be, is refused here.
TargetRecord TargetFromJson(const Json& json, const std::string& where) {
  const TargetRecord target = RecordFromJson(json, where);
  const JsonFields fields(json, where);
  CheckPlace(fields, "x", target.x);
  CheckPlace(fields, "y", target.y);
  const auto levels = static_cast<std::int32_t>(fields.List("levels").size());
  if (target.pathLength < 0 || target.pathLength > levels) {
    fields.Refuse("pathLength",
                  "is " + std::to_string(target.pathLength) + ", but there are " + std::to_string(levels) + " levels");
  }
  return target;
}

Step RecordedStep(const Json& json, const std::string& where, std::size_t windows) {
  const JsonFields fields(json, where);
  fields.AllowOnly(
      {"name", "action", "text", "keys", "variable", "match", "replace", "timeout", "window", "label", "target"});
  Step step = StepFromJson(fields);
  const int window = fields.Number("window", 1);
  if (window < 1 || static_cast<std::size_t>(window) > windows) {
    fields.Refuse("window", "is " + std::to_string(window) + ", but the recording has " + std::to_string(windows));
  }
  step.window = static_cast<std::size_t>(window) - 1;
  step.hasTarget = fields.Has("target") || WordsOf(step.action).needsTarget;
  step.label = fields.Text("label", "");
  if (step.hasTarget) {
    step.target = TargetFromJson(fields.At("target"), where + ", target");
  }
  return step;
}

ScriptStep ScriptedStep(const Json& json, const std::string& where) {
  const JsonFields fields(json, where);
  fields.AllowOnly({"name", "action", "text", "keys", "variable", "match", "replace", "timeout", "at", "method"});
  ScriptStep scripted{StepFromJson(fields), {}, std::nullopt};
  scripted.step.hasTarget = fields.Has("at") || WordsOf(scripted.step.action).needsTarget;
  if (scripted.step.hasTarget) {
    const auto at = fields.Numbers("at", 2);
    CheckPlace(fields, "at", at[0]);
    CheckPlace(fields, "at", at[1]);
    scripted.at = {at[0], at[1]};
  }
  if (fields.Has("method")) {
    scripted.method = MethodFromJson(fields.At("method"), where + ": field \"method\"");
  }
  return scripted;
}

constexpr std::size_t kLineColumns = 120;

// On one line what fits there, so that a step is a few lines, and a change to it shows as one in a comparison.
std::string Readable(const Json& json, std::size_t indent) {
  if (!json.is_structured()) {
    // Titles come from other programs; what is not text in them must not make the recording fail.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  constexpr std::size_t kStep = 2;
  std::vector<std::string> items;
  std::size_t columns = indent;
  bool oneLine = true;
  for (const auto& [name, value] : json.items()) {
    const std::string field = json.is_object() ? Json(name).dump() + ": " : "";
    items.push_back(field + Readable(value, indent + kStep));
    columns += Columns(items.back()) + 2;
    oneLine = oneLine && items.back().find('\n') == std::string::npos;
  }
  oneLine = oneLine && columns <= kLineColumns;
  const std::string inner = oneLine ? "" : "\n" + std::string(indent + kStep, ' ');
  std::string text(1, json.is_object() ? '{' : '[');
  for (const std::string& item : items) {
    text += (text.size() == 1 ? "" : oneLine ? ", " : ",") + inner + item;
  }
  text += oneLine ? "" : "\n" + std::string(indent, ' ');
  return text + (json.is_object() ? '}' : ']');
}

}  // namespace

std::string WriteRecording(const Recording& recording) {
  Json json = {{"korvane", kRecordingVersion}};
  if (recording.screen) {
    json["screen"] = ScreenToJson(*recording.screen);
  }
  if (!recording.start.empty()) {
    json["start"] = recording.start;
  }
  json["windows"] = Json::array();
  json["steps"] = Json::array();
  for (const WindowName& window : recording.windows) {
    json["windows"].push_back(WindowToJson(window));
  }
  for (const Step& step : recording.steps) {
    json["steps"].push_back(StepToJson(step));
  }
  return Readable(json, 0) + "\n";
}

Recording ParseRecording(const std::string& file, const std::string& text) {
  const Json json = ParseJson(file, text);
  const JsonFields fields(json, file);
  CheckVersion(fields, file);
  fields.AllowOnly({"korvane", "screen", "start", "windows", "steps"});
  Recording recording;
  if (fields.Has("screen")) {
    recording.screen = ScreenFromJson(fields.At("screen"), file + ": screen");
  }
  recording.start = fields.Text("start", "");
  for (const Json& window : fields.List("windows")) {
    recording.windows.push_back(
        WindowFromJson(window, file + ": window " + std::to_string(recording.windows.size() + 1)));
  }
  for (const Json& step : fields.List("steps")) {
    recording.steps.push_back(RecordedStep(step, Label(file, recording.steps.size(), step), recording.windows.size()));
  }
  if (recording.steps.empty()) {
    fields.Refuse("steps", "is empty");
  }
  return recording;
}

Recording LoadRecording(const std::string& file) {
  return ParseRecording(file, ReadFile(file));
}

Script LoadScript(const std::string& file) {
  const Json json = ParseJson(file, ReadFile(file));
  const JsonFields fields(json, file);
  CheckVersion(fields, file);
  fields.AllowOnly({"korvane", "window", "steps"});
  Script script;
  if (fields.Has("window")) {
    script.window = WindowFromJson(fields.At("window"), file + ": window");
  }
  for (const Json& step : fields.List("steps")) {
    script.steps.push_back(ScriptedStep(step, Label(file, script.steps.size(), step)));
  }
  if (script.steps.empty()) {
    fields.Refuse("steps", "is empty");
  }
  return script;
}

}  // namespace host
