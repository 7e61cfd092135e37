// Values that nobody is to see: passwords and the like. They are typed, and what is kept or shown has a mark instead.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "host/recording/variables.h"

namespace host {

// A variable whose name begins with "SECRET_" is one.
bool IsSecretName(std::string_view name);

class Secrets {
 public:
  // The values of a row's secret variables.
  void AddFrom(const Variables& variables);

  bool AreIn(std::string_view text) const;
  // In UTF-8.
  std::string Masked(std::string text) const;
  // In the encoding of the library's log, which also cuts long texts.
  std::string MaskedLog(std::string bytes) const;
  bool IsEmpty() const {
    return values_.empty();
  }

 private:
  // The longest first, so that one which contains another one is masked as a whole.
  struct LongerFirst {
    bool operator()(const std::string& left, const std::string& right) const {
      return left.size() != right.size() ? left.size() > right.size() : left < right;
    }
  };
  std::set<std::string, LongerFirst> values_;
};

// Gives secret variables of the recording that have no value the one of the environment variable of their name.
// Failure: Usage, when `set` names a secret: other users of the machine can read command lines.
void TakeSecrets(const Recording& recording, const std::vector<std::string>& set, Variables& variables);

// Gives those that have no value in some row what somebody types into the terminal, asked for once each; none where
// nobody can be asked. Failure: Cancelled
void AskForSecrets(const Recording& recording, std::vector<DataRow>& rows);

}  // namespace host
