// The order form as something to automate, and the people and programs around it: the same calls on real windows, where
// each is a process of its own, and on the scripted desktop.
#pragma once

#include <string>

#include "samples/order_form/behaviour.h"

namespace order_form {

struct Point {
  int x;
  int y;
};

// The running form. One at a time; ends with its owner.
class Program {
 public:
  Program() = default;
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    Stop();
  }

  // Opens the form with its corner at the point and waits until it can be used; false when it does not come up.
  bool Start(int x, int y);
  void Stop();

  HWND Window() const;
  Point CentreOf(ControlId control) const;
  Point CentreOfRow(int row) const;
  // What the control shows, asked for without the library under test.
  Text TextOf(ControlId control) const;
};

// ---- What others do, at once or later; each call returns as soon as it is under way ----

// Milliseconds from now; the key is held so long that every way of looking at it sees it.
void PressEscapeAfter(int milliseconds);
void ClickAfter(int milliseconds, Point point);
void SetTextAfter(int milliseconds, ControlId control, const Text& text);
// Another program holds the clipboard open for so long, from now.
void HoldClipboard(int milliseconds);

// Another program's window in front of everything at the place; gone with its owner.
class Cover {
 public:
  Cover(Point corner, int width, int height);
  ~Cover();
  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;
};

struct Clipboard {
  Text text;
  // The "HTML Format" block with its terminator; empty without one.
  std::string html;
};
// What another program finds there.
Clipboard ReadClipboard();

// A file path that the world of the form can write to, for logs and records.
Text ScratchFile(const char* name);

// Puts a picture of the screen into a file, where there is a screen.
void TakePicture(const char* file);

}  // namespace order_form
