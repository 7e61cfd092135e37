#include "host/world/world_standin_picture.h"

#include <algorithm>

#include "host/base/text.h"
#include "standin/desktop/desktop.h"

namespace host::world {

namespace {

using order_form::Control;
using order_form::ControlId;
using order_form::Kind;
using standin::TheDesktop;

constexpr int kMargin = 24;
constexpr int kCaption = 26;
constexpr int kRowHeight = 16;
constexpr int kLineHeight = 22;
constexpr int kPadding = 5;
constexpr std::size_t kLongestText = 300;

// A character that XML refuses even when escaped would cost the whole picture.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 3, "\uFFFE") == 0 || text.compare(i, 3, "\uFFFF") == 0) {
      escaped += "\uFFFD";
      i += 2;
      continue;
    }
    switch (const char character = text[i]) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      default:
        escaped += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
    }
  }
  return escaped;
}

class Drawing {
 public:
  explicit Drawing(Rect area) : area_(area) {
    svg_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Number(area.right - area.left) + "\" height=\"" +
           Number(area.bottom - area.top) + "\" font-family=\"Segoe UI, DejaVu Sans, sans-serif\" font-size=\"12\">";
    Box(area, "#5b7083", "");
  }

  void Box(Rect rect, const char* fill, const char* line, int corner = 0) {
    svg_ += "<rect x=\"" + Number(rect.left - area_.left) + ".5\" y=\"" + Number(rect.top - area_.top) +
            ".5\" width=\"" + Number(rect.right - rect.left - 1) + "\" height=\"" + Number(rect.bottom - rect.top - 1) +
            "\" rx=\"" + Number(corner) + "\" fill=\"" + fill + "\"" +
            (*line != 0 ? std::string(" stroke=\"") + line + "\"" : std::string()) + "/>";
  }

  // `y` is the middle of the line.
  void Write(int x, int y, const std::string& text, const char* style = "") {
    svg_ += "<text x=\"" + Number(x - area_.left) + "\" y=\"" + Number(y - area_.top + 4) + "\" " + style + ">" +
            Escaped(text) + "</text>";
  }

  // What is longer than the box is cut off at its edge.
  void WriteInside(Rect rect, const std::string& text, const char* style = "") {
    svg_ += "<svg x=\"" + Number(rect.left - area_.left) + "\" y=\"" + Number(rect.top - area_.top) + "\" width=\"" +
            Number(rect.right - rect.left - kPadding) + "\" height=\"" + Number(rect.bottom - rect.top) + "\">";
    Write(area_.left + kPadding, area_.top + kLineHeight / 2 + kPadding / 2, text, style);
    svg_ += "</svg>";
  }

  Picture Finish() const {
    return {"data:image/svg+xml;base64," + Base64(svg_ + "</svg>"), area_};
  }

 private:
  static std::string Number(int number) {
    return std::to_string(number);
  }

  Rect area_;
  std::string svg_;
};

Rect RectOf(HWND window) {
  const RECT rect = TheDesktop().Elements().RectangleOf(TheDesktop().Elements().Of(window));
  return {rect.left, rect.top, rect.right, rect.bottom};
}

void DrawEdit(Drawing& drawing, Rect rect, const std::string& text, bool readOnly, bool focused) {
  drawing.Box(rect, readOnly ? "#ececec" : "#ffffff", focused ? "#0a64c8" : "#8a8a8a");
  drawing.WriteInside(rect, Shortened(text, kLongestText));
}

void DrawControl(Drawing& drawing, const order_form::Twin& form, const Control& control) {
  if (control.kind == Kind::Label) {
    // Labels have no number by which the form would know them, but a place in their panel.
    const Rect panel = RectOf(form.WindowOf(static_cast<ControlId>(control.parent)));
    drawing.Write(panel.left + control.x, panel.top + control.y + control.height / 2, Utf8(control.text));
    return;
  }
  const HWND window = form.WindowOf(static_cast<ControlId>(control.id));
  const Rect rect = RectOf(window);
  const std::string text = Utf8(TheDesktop().Controls().TextOf(window));
  switch (control.kind) {
    case Kind::Panel:
      drawing.Box(rect, "#f7f7f7", "#b4b4b4");
      break;
    case Kind::Button:
      drawing.Box(rect, "#e3e3e3", "#8a8a8a", 3);
      drawing.Write((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2, Utf8(control.text),
                    "text-anchor=\"middle\"");
      break;
    case Kind::List:
      drawing.Box(rect, "#ffffff", "#8a8a8a");
      for (int row = 0; row < 3; ++row) {
        drawing.Write(rect.left + 5, rect.top + kRowHeight * row + kRowHeight / 2,
                      Utf8(order_form::kShippingRows[row]));
      }
      break;
    default:
      DrawEdit(drawing, rect, text, control.kind == Kind::ReadOnlyEdit, TheDesktop().Windows().Focus() == window);
  }
}

void DrawWindow(Drawing& drawing, Rect window, const std::string& title) {
  drawing.Box(window, "#f0f0f0", "#3c4a57");
  drawing.Box({window.left, window.top, window.right, window.top + kCaption}, "#2f5f8f", "#2f5f8f");
  drawing.WriteInside({window.left + kPadding, window.top, window.right, window.top + kCaption},
                      Shortened(title, kLongestText), "fill=\"#ffffff\" font-weight=\"600\"");
}

void DrawControls(Drawing& drawing, const order_form::Twin& form) {
  for (const Control& control : order_form::kControls) {
    DrawControl(drawing, form, control);
  }
}

}  // namespace

Picture DrawForm(const order_form::Twin& form) {
  const Rect window = RectOf(form.Window());
  Drawing drawing({window.left - kMargin, window.top - kMargin, window.right + kMargin, window.bottom + kMargin});
  DrawWindow(drawing, window, Utf8(TheDesktop().Controls().TextOf(form.Window())));
  DrawControls(drawing, form);
  return drawing.Finish();
}

Picture DrawScreen(Rect area, const order_form::Twin* form) {
  Drawing drawing(area);
  std::vector<Window> windows = Windows();
  std::reverse(windows.begin(), windows.end());
  for (const Window& window : windows) {
    DrawWindow(drawing, window.rect, window.title);
    if (form != nullptr && window.handle == form->Window()) {
      DrawControls(drawing, *form);
    }
  }
  return drawing.Finish();
}

}  // namespace host::world
