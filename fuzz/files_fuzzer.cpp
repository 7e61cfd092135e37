// Any bytes as a recording, a table or a log: read as what they are or refused in one line, and nothing is lost between
// reading and writing.
#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "fuzz/form.h"
#include "host/base/failure.h"
#include "host/engine/library_log.h"
#include "host/engine/log_line.h"
#include "host/engine/log_summary.h"
#include "host/recording/recording_file.h"
#include "host/recording/variables.h"
#include "host/report/fold_log.h"

namespace fuzz {
namespace {

using namespace host;

// What the reader refuses, it refuses in a line for the user that begins with the file.
template <class Read>
bool IsRead(Read read) {
  try {
    read();
    return true;
  } catch (const Failure& failure) {
    const std::string line = failure.what();
    Require(failure.Code() == ExitCode::BadFile, "a bad file is called that");
    Require(line.starts_with("a.file") && line.find('\n') == std::string::npos, "one line names the file");
  } catch (const std::exception&) {
    Require(false, "nothing else is thrown");
  }
  return false;
}

void CheckRecording(const std::string& text) {
  Recording recording;
  if (!IsRead([&] { recording = ParseRecording("a.file", text); })) {
    return;
  }
  const std::string written = WriteRecording(recording);
  Require(IsRead([&] { recording = ParseRecording("a.file", written); }), "what is written can be read");
  Require(WriteRecording(recording) == written, "it is the same again");
}

std::string Quoted(const std::string& cell) {
  std::string quoted = "\"";
  for (const char unit : cell) {
    quoted += unit == '"' ? std::string("\"\"") : std::string(1, unit);
  }
  return quoted + "\"";
}

// Names in the order of the map, then the rows. Rows of empty cells are none.
std::string WriteTable(const std::vector<Variables>& rows) {
  std::string written;
  for (const auto& [name, value] : rows.front()) {
    written += (written.empty() ? "" : ",") + Quoted(name);
  }
  for (const Variables& row : rows) {
    std::string line;
    for (const auto& [name, value] : row) {
      line += (line.empty() ? "\n" : ",") + Quoted(value);
    }
    written += line;
  }
  return written;
}

std::vector<Variables> ReadTable(const std::string& text) {
  std::vector<Variables> filled;
  for (const DataRow& row : ParseData("a.file", text)) {
    if (std::any_of(row.values.begin(), row.values.end(), [](const auto& each) { return !each.second.empty(); })) {
      filled.push_back(row.values);
    }
  }
  return filled;
}

void CheckTable(const std::string& text) {
  std::vector<Variables> rows;
  std::vector<Variables> again;
  if (IsRead([&] { rows = ReadTable(text); }) && !rows.empty()) {
    Require(IsRead([&] { again = ReadTable(WriteTable(rows)); }), "what is written can be read");
    Require(again == rows, "every cell is the same again");
  }
}

void CheckLog(const std::string& bytes) {
  const std::vector<std::string> lines = LogLines(bytes);
  const std::vector<LogLine> read = ReadLog(lines);
  Require(read.size() <= lines.size(), "a line tells one thing");
  for (const LogLine& line : read) {
    Require(!line.time.empty(), "what is believed has a time");
  }
  const LogSummary summary = Summarise(lines);
  Require(summary.lines == lines.size() && summary.steps.size() <= read.size(), "nothing is counted twice");
  Require(FoldLog(lines).size() <= lines.size(), "folding adds no lines");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  // The first byte says what the rest is, so that real files are seeds as they are.
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0]) {
    case 'r':
      fuzz::CheckRecording(text);
      break;
    case 't':
      fuzz::CheckTable(text);
      break;
    default:
      fuzz::CheckLog(text);
      break;
  }
  return 0;
}
