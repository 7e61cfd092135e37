#include <iostream>

#include "host/base/table.h"
#include "host/commands/commands.h"
#include "host/engine/library_log.h"
#include "host/world/world.h"

namespace host {

void AddWindow(CLI::App& program, ExitCode& code) {
  CLI::App* const command = program.add_subcommand("window", "Pick a window with a click and show how it is named");
  command->callback([&code] {
    const LibraryLog log("");
    std::cerr << "click the window ...\n";
    const HWND picked = findWindowByClick();
    const auto window = world::Describe(picked);
    if (!window) {
      throw Failure(ExitCode::NoWindow, "no window was picked");
    }
    const auto& rect = window->rect;
    Table table({"field", "value"});
    table.Add({"title", window->title});
    table.Add({"class", window->className});
    table.Add({"process", window->process});
    table.Add({"rect", std::to_string(rect.left) + "," + std::to_string(rect.top) + " to " +
                           std::to_string(rect.right) + "," + std::to_string(rect.bottom)});
    std::cout << table.Text();
    code = ExitCode::Ok;
  });
}

}  // namespace host
