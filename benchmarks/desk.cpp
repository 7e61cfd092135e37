#include "benchmarks/desk.h"

#include <filesystem>
#include <fstream>

namespace bench {

namespace {

constexpr std::u16string_view kFormClass = u"Form";
constexpr std::u16string_view kRowClass = u"Row";
constexpr int kRowType = 50025;

void AddLevel(TargetRecord& record, int controlType, std::u16string_view className, int index) {
  const int level = record.pathLength++;
  record.controlTypes[level] = controlType;
  className.copy(record.classNames[level], KORVANE_CLASS_NAME_SIZE - 1);
  record.childIndices[level] = index;
}

standin::Desktop& EmptyDesktop() {
  auto& desktop = standin::TheDesktop();
  cleanupAutomation();
  clearElementCache();
  desktop.Reset();
  desktop.Calls().SetTracing(false);
  return desktop;
}

}  // namespace

Desk SetUpForm() {
  auto& desktop = EmptyDesktop();
  Desk desk;
  desk.window = desktop.Windows().Add({.className = standin::Text(kFormClass), .rect = {100, 100, 500, 400}});
  desk.edit = desktop.Windows().Add({.className = u"Edit",
                                     .rect = {120, 120, 320, 150},
                                     .parent = desk.window,
                                     .controlId = 7,
                                     .behaviour = standin::Behaviour::Edit});
  desk.target.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
  desk.target.automationId[0] = u'7';
  desk.point = {220, 135};
  return desk;
}

Desk SetUpTree(int depth, int siblings) {
  auto& desktop = EmptyDesktop();
  Desk desk;
  desk.window = desktop.Windows().Add({.className = standin::Text(kFormClass), .rect = {100, 100, 500, 400}});
  desk.target.identificationMethod = KORVANE_METHOD_TREE_PATH;
  AddLevel(desk.target, 50032, kFormClass, 1);
  standin::Element parent = desktop.Elements().Of(desk.window);
  for (int level = 0; level < depth; ++level) {
    standin::Element last = 0;
    for (int i = 0; i < siblings; ++i) {
      last = desktop.Elements().Add(
          parent, {.className = standin::Text(kRowClass), .controlType = kRowType, .rect = {120, 120, 320, 150}});
    }
    parent = last;
    // A record holds twenty levels; the window is the first of them.
    if (desk.target.pathLength < KORVANE_MAX_PATH_LEVELS) {
      AddLevel(desk.target, kRowType, kRowClass, siblings);
    }
  }
  desk.point = {220, 135};
  return desk;
}

std::string NewFile(const char* name) {
  const auto path = std::filesystem::temp_directory_path() / (std::string("korvane-bench-") + name);
  std::ofstream(path, std::ios::trunc);
  return path.string();
}

std::u16string Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

}  // namespace bench
