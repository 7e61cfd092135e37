// What a host needs and the library does not offer: finding windows by name, where things are, pictures, the terminal.
// Answered by Windows itself, or where there is none by the scripted desktop with an order form on it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "korvane/korvane.h"

namespace host::world {

struct Point {
  int x = 0;
  int y = 0;
};

struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

struct Window {
  HWND handle = nullptr;
  std::string title;
  std::string className;
  std::string process;  // file name of its program
  Rect rect;
};

// Before anything else: makes the terminal take UTF-8, and sets up the scripted desktop.
void Start();
// The words behind the program's name, in UTF-8.
std::vector<std::string> Arguments(int count, char** arguments);
// In UTF-8; nothing when there is none of that name.
std::optional<std::string> EnvironmentVariable(const std::string& name);
// One paragraph for `--help`; empty where nothing is special.
std::string HelpAboutThisWorld();

// Visible top-level windows, the front one first.
std::vector<Window> Windows();
std::optional<Window> WindowAt(Point point);
std::optional<Window> Describe(HWND window);

// The top-level window under a screen point, and the window that owns another; null: none.
HWND RootAt(Point point);
HWND OwnerOf(HWND window);
// The one that keys go to.
HWND ForegroundWindow();

Point Cursor();
// The button pressed and released there so often. False: the desktop took none of it.
bool Click(Point point, int times);
// Keys by their virtual-key codes, held down in this order and let go in the other. False: the desktop took none.
bool SendKeys(const std::vector<int>& keys);

// Whether the keyboard layout has keys for the character; typing passes over all others.
bool HasKeysFor(KorvaneChar unit);

// Why input would go nowhere: the desktop is locked, or nobody sees it.
std::optional<std::string> WhyNoInput();
// Why a window takes no input of ours.
std::optional<std::string> WhyOutOfReach(HWND window);
struct Screen {
  Rect rect;    // all monitors
  int dpi = 0;  // 96: not scaled; 0: not known
};
Screen TheScreen();

double Now();  // milliseconds since some start

// A picture of a window with a little of what is around it, as an address that an <img> takes.
struct Picture {
  std::string address;
  Rect area;
  // What differs from it, and where on the screen; empty: nothing.
  std::string patch{};
  Rect patchArea{};
};
// Whether a window has time to draw what has just changed.
enum class Settle { No, Yes };
std::optional<Picture> TakePicture(HWND window, Settle settle);
// Of all monitors.
std::optional<Picture> TakePictureOfScreen();

// Whether a click can be waited for here; if not, why.
std::optional<std::string> WhyNobodyCanClick();
// Whether a person can point at something here and press a key in the terminal; if not, why.
std::optional<std::string> WhyNobodyCanPoint();
// The next key pressed in the terminal, in lower case.
char WaitForKey();
// A line typed into the terminal.
std::string AskForLine(const std::string& question);
// Whether the output shows escape sequences, and a line can be written over.
bool OutputIsTerminal();

}  // namespace host::world
