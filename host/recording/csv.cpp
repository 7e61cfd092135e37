#include "host/recording/csv.h"

#include <algorithm>
#include <array>

#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class Reader {
 public:
  Reader(const std::string& file, std::string_view text) : file_(file), all_(text), rest_(text) {
    CheckEncoding();
    Take(kByteOrderMark);
    lineBegin_ = rest_;
    TakeSeparatorLine();
    if (separator_ == 0) {
      separator_ = MostFrequentSeparator();
    }
  }

  bool AtEnd() const {
    return rest_.empty();
  }

  CsvRow NextRow() {
    CsvRow row{++rows_, line_, {}};
    do {
      row.cells.push_back(rest_.starts_with('"') ? QuotedCell() : PlainCell());
    } while (Take({&separator_, 1}));
    if (!rest_.empty() && !TakeLineEnd()) {
      Refuse("something follows the closing quote");
    }
    return row;
  }

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    const std::string_view before = lineBegin_.substr(0, lineBegin_.size() - rest_.size());
    throw Failure(ExitCode::BadFile, file_ + ": line " + std::to_string(line_) + ", column " +
                                         std::to_string(Columns(before) + 1) + ": " + why);
  }

  bool Take(std::string_view token) {
    if (!rest_.starts_with(token)) {
      return false;
    }
    rest_.remove_prefix(token.size());
    return true;
  }

  bool TakeLineEnd() {
    if (!Take("\r\n") && !Take("\n") && !Take("\r")) {
      return false;
    }
    ++line_;
    lineBegin_ = rest_;
    return true;
  }

  void CheckEncoding() {
    if (all_.starts_with("\xFF\xFE") || all_.starts_with("\xFE\xFF")) {
      throw Failure(ExitCode::BadFile, file_ + ": is UTF-16: give --encoding utf-16");
    }
    const std::size_t bad = std::min(FirstNotUtf8(all_), all_.find('\0'));
    if (bad >= all_.size()) {
      return;
    }
    const std::string_view before = all_.substr(0, bad);
    line_ += static_cast<int>(std::count(before.begin(), before.end(), '\n'));
    const std::size_t begin = before.rfind('\n') + 1;
    lineBegin_ = all_.substr(begin);
    rest_ = all_.substr(bad);
    Refuse(all_[bad] == '\0' ? "a NUL character" : "not UTF-8: save the file as UTF-8, or tell its --encoding");
  }

  void TakeSeparatorLine() {
    constexpr std::string_view kSeparatorIs = "sep=";
    if (EqualsIgnoringCase(rest_.substr(0, kSeparatorIs.size()), kSeparatorIs) &&
        rest_.size() > kSeparatorIs.size() + 1) {
      const char after = rest_[kSeparatorIs.size() + 1];
      if (after == '\n' || after == '\r') {
        separator_ = rest_[kSeparatorIs.size()];
        rest_.remove_prefix(kSeparatorIs.size() + 1);
        TakeLineEnd();
        ++rows_;
      }
    }
  }

  char MostFrequentSeparator() const {
    constexpr std::array<char, 3> kSeparators = {',', ';', '\t'};
    std::array<std::size_t, 3> counts{};
    bool quoted = false;
    for (const char character : rest_) {
      quoted = quoted != (character == '"');
      if (!quoted && (character == '\n' || character == '\r')) {
        break;
      }
      for (std::size_t i = 0; i < kSeparators.size(); ++i) {
        counts[i] += !quoted && character == kSeparators[i] ? 1 : 0;
      }
    }
    return kSeparators[static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin())];
  }

  std::string PlainCell() {
    const std::array<char, 3> ends = {separator_, '\n', '\r'};
    const std::string_view cell = rest_.substr(0, rest_.find_first_of({ends.data(), ends.size()}));
    if (const auto quote = cell.find('"'); quote != std::string_view::npos) {
      rest_.remove_prefix(quote);
      Refuse("a quote inside a cell that does not begin with one");
    }
    rest_.remove_prefix(cell.size());
    return std::string(cell);
  }

  // Two quotes in a quoted cell stand for one.
  std::string QuotedCell() {
    const int openedIn = line_;
    std::string cell;
    Take("\"");
    while (!rest_.empty()) {
      if (Take("\"\"")) {
        cell += '"';
      } else if (Take("\"")) {
        return cell;
      } else {
        const std::string_view before = rest_;
        if (!TakeLineEnd()) {
          rest_.remove_prefix(1);
        }
        cell.append(before.substr(0, before.size() - rest_.size()));
      }
    }
    // Where it begins is what helps: the rest of the file is in it.
    throw Failure(ExitCode::BadFile, file_ + ": line " + std::to_string(openedIn) + ": a quote is not closed");
  }

  const std::string& file_;
  std::string_view all_;
  std::string_view rest_;
  std::string_view lineBegin_;
  char separator_ = 0;
  int line_ = 1;
  int rows_ = 0;
};

bool HasContent(const CsvRow& row) {
  return std::any_of(row.cells.begin(), row.cells.end(), [](const std::string& cell) { return !cell.empty(); });
}

}  // namespace

std::vector<CsvRow> ParseCsv(const std::string& file, std::string_view text) {
  Reader reader(file, text);
  std::vector<CsvRow> rows;
  while (!reader.AtEnd()) {
    if (CsvRow row = reader.NextRow(); HasContent(row)) {
      rows.push_back(std::move(row));
    }
  }
  return rows;
}

}  // namespace host
