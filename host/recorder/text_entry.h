// What a person types into one field, from the first key to the last: told by what the field holds then, not by the
// keys, so that other layouts, dead keys, input methods and corrections come out right.
#pragma once

#include <optional>
#include <string>

#include "host/world/elements.h"
#include "host/world/user_input.h"

namespace host {

class TextEntry {
 public:
  // How the field's text is to be entered at a replay.
  enum class How {
    Nothing,  // the field holds what it held before
    Paste,    // the text that it holds
    Type,     // the keys: the field changes what it is given, or does not tell what it holds
    Secret,   // it hides its text, which is not recorded
  };
  struct Result {
    How how = How::Nothing;
    std::string text;
    std::string doubt;  // why the text may not be what was meant; empty when there is none
  };

  // Of a field that has just got the focus.
  TextEntry(world::Element field, HWND control, bool hidesText);

  HWND Control() const {
    return control_;
  }
  bool IsBegun() const {
    return begun_;
  }
  // A key that types or corrects, which the field has got, or is about to get.
  void Add(const world::UserInput& key);
  // Looks at what the field holds; to be called when it has had time to take the last key.
  void Look();
  // Enter was pressed, of which only the field knows whether it is a part of the text: waits a moment for it.
  bool TakesEnter();
  // The entry ends: the focus goes, or a key or click that is none of it comes.
  Result Finish();

 private:
  std::optional<std::string> Read() const;

  world::Element field_;
  HWND control_;
  bool hidesText_;
  std::optional<std::string> before_;
  std::optional<std::string> shown_;                  // at the last look
  std::optional<std::string> typed_ = std::string();  // by keys that only add or take back; nothing: others came
  bool begun_ = false;
  bool unseen_ = false;  // a key came since the last look
};

// Whether a key types or corrects in a field, rather than being a shortcut or going to another one.
bool EditsText(const world::UserInput& key);

}  // namespace host
