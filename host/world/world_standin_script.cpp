#include "host/world/world_standin_script.h"

#include <csignal>
#include <map>
#include <sstream>
#include <vector>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/program.h"
#include "host/world/world.h"
#include "host/world/world_standin_user.h"
#include "standin/desktop/desktop.h"

namespace host::world {

namespace {

using standin::Behaviour;
using standin::TheDesktop;
using Numbers = std::vector<int>;

HWND Form() {
  return TheScene().form ? TheScene().form->Window() : nullptr;
}

HWND ControlOf(int id) {
  return TheScene().form->WindowOf(static_cast<order_form::ControlId>(id));
}

void Later(int milliseconds, std::function<void()> action) {
  milliseconds > 0 ? TheDesktop().Clock().After(milliseconds, std::move(action)) : action();
}

// A dialog that the form owns, with a field and a button that closes it.
void OpenDialog() {
  const RECT form = TheDesktop().Elements().RectangleOf(TheDesktop().Elements().Of(Form()));
  const int x = static_cast<int>(form.left) + 60;
  const int y = static_cast<int>(form.top) + 60;
  const HWND dialog = TheDesktop().Windows().Add(
      {.className = TEXT("OrderDialog"), .title = TEXT("Confirm"), .rect = {x, y, x + 260, y + 120}, .owner = Form()});
  TheDesktop().Windows().Add({.className = TEXT("Edit"),
                              .rect = {x + 20, y + 30, x + 240, y + 54},
                              .parent = dialog,
                              .controlId = 501,
                              .behaviour = Behaviour::Edit});
  const HWND close = TheDesktop().Windows().Add({.className = TEXT("Button"),
                                                 .title = TEXT("OK"),
                                                 .rect = {x + 20, y + 70, x + 120, y + 98},
                                                 .parent = dialog,
                                                 .controlId = 1,
                                                 .behaviour = Behaviour::Button});
  TheDesktop().Controls().OnPress(close, [dialog] { TheDesktop().Windows().Destroy(dialog); });
}

// A control that the form does not have from the beginning.
void AddToForm(const WCHAR* className, const WCHAR* title, int id, Behaviour behaviour, RECT place) {
  const RECT form = TheDesktop().Elements().RectangleOf(TheDesktop().Elements().Of(Form()));
  TheDesktop().Windows().Add(
      {.className = className,
       .title = title,
       .rect = {form.left + place.left, form.top + place.top, form.left + place.right, form.top + place.bottom},
       .parent = Form(),
       .controlId = id,
       .behaviour = behaviour});
}

// Another program's window that takes the keys, and whose place nobody takes.
void StealKeys() {
  const HWND thief = TheDesktop().Windows().Add(
      {.className = TEXT("Notice"), .title = TEXT("Notice"), .rect = {1500, 900, 1700, 1000}});
  TheDesktop().Windows().SetForeground(thief);
  TheDesktop().Windows().RefuseForeground(-1);
  TheDesktop().Windows().RefuseThreadAttach(true);
}

// Another program's window that lets nobody come before it.
void Cover(const Numbers& place) {
  TheDesktop().Windows().Add({.className = TEXT("Notice"),
                              .title = TEXT("Notice"),
                              .rect = {place[0], place[1], place[0] + place[2], place[1] + place[3]}});
  TheDesktop().Windows().RefuseForeground(-1);
  TheDesktop().Windows().RefuseThreadAttach(true);
}

void Rename(int id, int automationId) {
  TheDesktop().Elements().SetProperty(TheDesktop().Elements().Of(ControlOf(id)), UIA_AutomationIdPropertyId,
                                      {Wide(std::to_string(automationId))});
}

struct Instruction {
  std::size_t numbers;
  const char* form;
  std::function<void(const Numbers&)> obey;
};

const std::map<std::string, Instruction>& Instructions() {
  static const std::map<std::string, Instruction> all = {
      {"form", {2, "X,Y", [](const Numbers& n) { TheScene().form = std::make_unique<order_form::Twin>(n[0], n[1]); }}},
      {"no-form", {0, "", [](const Numbers&) { TheScene().form.reset(); }}},
      {"title", {0, "", [](const Numbers&) { TheDesktop().Windows().SetTitle(Form(), TEXT("Order form - draft")); }}},
      {"click",
       {3, "MS X,Y",
        [](const Numbers& n) {
          TheScene().clicks = true;
          Later(n[0], [n] { TheDesktop().User().Click(n[1], n[2]); });
        }}},
      {"escape", {1, "MS", [](const Numbers& n) { TheDesktop().User().HoldEscape(n[0], 120); }}},
      {"interrupt", {1, "MS", [](const Numbers& n) { Later(n[0], [] { std::raise(SIGTERM); }); }}},
      {"close", {1, "MS", [](const Numbers& n) { Later(n[0], [] { TheScene().form.reset(); }); }}},
      {"move",
       {3, "MS X,Y",
        [](const Numbers& n) { Later(n[0], [n] { TheDesktop().Windows().MoveTo(Form(), n[1], n[2]); }); }}},
      {"dialog", {1, "MS", [](const Numbers& n) { Later(n[0], OpenDialog); }}},
      {"late",
       {1, "MS",
        [](const Numbers& n) {
          Later(n[0], [] { AddToForm(TEXT("Button"), TEXT("Next"), 601, Behaviour::Button, {10, 390, 110, 416}); });
        }}},
      {"canvas",
       {0, "",
        [](const Numbers&) { AddToForm(TEXT("Canvas"), TEXT(""), 0, Behaviour::Window, {230, 385, 450, 416}); }}},
      {"password",
       {0, "",
        [](const Numbers&) { AddToForm(TEXT("PasswordEdit"), TEXT(""), 602, Behaviour::Edit, {10, 390, 110, 416}); }}},
      {"gone", {1, "ID", [](const Numbers& n) { TheDesktop().Windows().Destroy(ControlOf(n[0])); }}},
      {"id", {2, "ID,NEW", [](const Numbers& n) { Rename(n[0], n[1]); }}},
      {"rename", {3, "MS ID,NEW", [](const Numbers& n) { Later(n[0], [n] { Rename(n[1], n[2]); }); }}},
      {"place", {3, "ID X,Y", [](const Numbers& n) { TheDesktop().Windows().MoveTo(ControlOf(n[0]), n[1], n[2]); }}},
      {"cover", {4, "X,Y,W,H", Cover}},
      {"steal", {1, "MS", [](const Numbers& n) { Later(n[0], StealKeys); }}},
      {"locked", {0, "", [](const Numbers&) { TheScene().locked = true; }}},
      {"elevated", {1, "MS", [](const Numbers& n) { Later(n[0], [] { TheScene().elevated = true; }); }}},
      {"dpi", {1, "DPI", [](const Numbers& n) { TheScene().dpi = n[0]; }}},
  };
  return all;
}

void Obey(const std::string& instruction) {
  std::istringstream words(instruction);
  std::string word;
  Numbers numbers;
  words >> word;
  if (std::string act; word == "user" && std::getline(words, act) && AddUserAct(act)) {
    return;
  }
  for (int number = 0; words >> number;) {
    numbers.push_back(number);
    words >> std::ws;
    words.peek() == ',' ? words.ignore() : words;
  }
  const auto known = Instructions().find(word);
  if (!words.eof() || known == Instructions().end() || known->second.numbers != numbers.size()) {
    throw Failure(ExitCode::Usage, std::string(kScript) + ": cannot follow \"" + instruction + "\"");
  }
  known->second.obey(numbers);
}

}  // namespace

Scene& TheScene() {
  // Made after the desktop that the form is on, and so gone before it.
  TheDesktop();
  static Scene scene;
  return scene;
}

void SetScene(const std::string& instructions) {
  ForgetUserActs();
  TheScene().form = std::make_unique<order_form::Twin>(40, 40);
  std::istringstream list(instructions);
  for (std::string instruction; std::getline(list, instruction, ';');) {
    if (const std::string trimmed = Trimmed(instruction); !trimmed.empty()) {
      Obey(trimmed);
    }
  }
}

void StartProgram(const std::string& commandLine) {
  if (commandLine != "order_form") {
    throw Failure(ExitCode::NoWindow, "cannot start " + commandLine + ": there is no such program");
  }
  TheScene().form = std::make_unique<order_form::Twin>(40, 40);
}

void AskToClose(HWND window) {
  if (window == Form()) {
    TheScene().form.reset();
  }
}

std::string AllInstructions() {
  std::string all = "\"user MS ACT\"";
  for (const auto& [word, instruction] : Instructions()) {
    all += ", \"" + word + (instruction.numbers == 0 ? "" : " ") + instruction.form + "\"";
  }
  return all;
}

}  // namespace host::world
