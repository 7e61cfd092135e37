#include "host/recording/secrets.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/secret_line.h"
#include "host/world/world.h"

namespace host {

namespace {

constexpr std::string_view kPrefix = "SECRET_";
constexpr std::string_view kMark = "*****";

// A text as the library's log has it.
std::string AsLogged(WideView text) {
  std::string bytes;
  for (const KorvaneChar unit : text) {
    if (unit == '\n') {
      bytes += "\r\n";
    } else if (unit <= 0xFF) {
      bytes += static_cast<char>(unit);
    } else {
      char digits[8];
      std::snprintf(digits, sizeof digits, "\\u%04x", static_cast<unsigned>(unit));
      bytes += digits;
    }
  }
  return bytes;
}

}  // namespace

bool IsSecretName(std::string_view name) {
  return name.starts_with(kPrefix);
}

void Secrets::AddFrom(const Variables& variables) {
  for (const auto& [name, value] : variables) {
    if (IsSecretName(name) && !value.empty()) {
      values_.insert(value);
    }
  }
}

bool Secrets::AreIn(std::string_view text) const {
  return std::any_of(values_.begin(), values_.end(),
                     [text](const std::string& value) { return text.find(value) != std::string_view::npos; });
}

std::string Secrets::Masked(std::string text) const {
  for (const std::string& value : values_) {
    text = Replaced(std::move(text), value, kMark);
    // Messages show control characters in words.
    if (const std::string shown = Escaped(value); shown != value) {
      text = Replaced(std::move(text), shown, kMark);
    }
  }
  return text;
}

std::string Secrets::MaskedLog(std::string bytes) const {
  // How much the library shows of a text, by line.
  constexpr std::size_t kCuts[] = {100, 50, 20};
  for (const std::string& value : values_) {
    const WideText wide = Wide(value);
    bytes = Replaced(std::move(bytes), AsLogged(wide), kMark);
    for (const std::size_t cut : kCuts) {
      if (wide.size() > cut) {
        bytes = Replaced(std::move(bytes), AsLogged(WideView(wide).substr(0, cut)), kMark);
      }
    }
  }
  return bytes;
}

void TakeSecrets(const Recording& recording, const std::vector<std::string>& set, Variables& variables) {
  for (const std::string& assignment : set) {
    if (IsSecretName(assignment)) {
      throw Failure(ExitCode::Usage, "--set " + assignment.substr(0, assignment.find('=')) +
                                         ": others can read a command line; give the value in the environment "
                                         "variable of that name, or in the data");
    }
  }
  for (const std::string& name : VariablesOf(recording)) {
    if (IsSecretName(name) && !variables.contains(name)) {
      if (const auto value = world::EnvironmentVariable(name)) {
        variables[name] = *value;
      }
    }
  }
}

void AskForSecrets(const Recording& recording, std::vector<DataRow>& rows) {
  std::set<std::string> read;
  for (const Step& step : recording.steps) {
    read.insert(step.action == Action::Read ? step.text : "");
  }
  for (const std::string& name : VariablesOf(recording)) {
    const auto lacks = [&](const DataRow& row) { return !row.values.contains(name); };
    if (!IsSecretName(name) || read.contains(name) || std::none_of(rows.begin(), rows.end(), lacks)) {
      continue;
    }
    const auto typed = world::AskForSecret(name + " (is not shown): ");
    for (DataRow& row : rows) {
      if (typed && lacks(row)) {
        row.values[name] = *typed;
      }
    }
  }
}

}  // namespace host
