#include <iostream>

#include "host/base/table.h"
#include "host/commands/commands.h"
#include "host/commands/json_answer.h"
#include "host/engine/library_log.h"
#include "host/world/world.h"

namespace host {

namespace {

ExitCode PickAndTell(Json& answer) {
  if (const auto why = world::WhyNobodyCanClick()) {
    throw Failure(ExitCode::NotHere, *why);
  }
  const LibraryLog log("");
  std::cerr << "click the window ...\n";
  const auto window = world::Describe(findWindowByClick());
  if (!window) {
    throw Failure(ExitCode::NoWindow, "no window was picked");
  }
  const auto& rect = window->rect;
  Table table({"field", "value"});
  table.Add({"title", window->title});
  table.Add({"class", window->className});
  table.Add({"process", window->process});
  table.Add({"rect", std::to_string(rect.left) + "," + std::to_string(rect.top) + " to " + std::to_string(rect.right) +
                         "," + std::to_string(rect.bottom)});
  std::cout << table.Text();
  answer["window"] = {{"title", window->title},
                      {"class", window->className},
                      {"process", window->process},
                      {"rect", {rect.left, rect.top, rect.right, rect.bottom}}};
  return ExitCode::Ok;
}

}  // namespace

ExitCode PickWindow(bool json) {
  return AnswerInJson(json, "window", PickAndTell);
}

}  // namespace host
