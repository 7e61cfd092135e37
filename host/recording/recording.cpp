#include "host/recording/recording.h"

#include <algorithm>

#include "host/base/text.h"

namespace host {

const std::vector<ActionWords>& AllActions() {
  static const std::vector<ActionWords> actions = {
      {Action::Click, "click", nullptr, true},       {Action::DoubleClick, "double-click", nullptr, true},
      {Action::Paste, "paste", "text", true},        {Action::Type, "type", "text", true},
      {Action::Shortcut, "shortcut", "keys", false}, {Action::Wait, "wait", "text", true},
      {Action::Check, "check", "text", true},        {Action::Read, "read", "variable", true},
  };
  return actions;
}

const ActionWords& WordsOf(Action action) {
  return *std::find_if(AllActions().begin(), AllActions().end(),
                       [action](const ActionWords& words) { return words.action == action; });
}

std::string NameOf(std::size_t index, const Step& step) {
  return "step " + std::to_string(index + 1) +
         (step.name.empty() ? "" : " \"" + Shortened(step.name, kNameColumns) + "\"");
}

std::string Title(const Step& step) {
  const std::string word = WordsOf(step.action).word;
  if (step.action == Action::Shortcut) {
    return word + " " + step.text;
  }
  return step.name.empty() ? word : word + " " + step.name;
}

}  // namespace host
