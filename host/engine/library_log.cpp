#include "host/engine/library_log.h"

#include <charconv>
#include <filesystem>
#include <utility>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "korvane/korvane.h"

namespace host {

namespace {

std::string ToUtf8(std::string_view line) {
  WideText text;
  while (!line.empty()) {
    std::uint16_t unit = static_cast<std::uint8_t>(line.front());
    std::size_t taken = 1;
    if (line.starts_with("\\u") && line.size() >= 6) {
      const auto [end, problem] = std::from_chars(line.data() + 2, line.data() + 6, unit, 16);
      taken = problem == std::errc() && end == line.data() + 6 ? 6 : 1;
    }
    text += static_cast<KorvaneChar>(taken == 6 ? unit : static_cast<std::uint8_t>(line.front()));
    line.remove_prefix(taken);
  }
  return Utf8(text);
}

}  // namespace

std::vector<std::string> LogLines(const std::string& bytes) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < bytes.size();) {
    const auto end = std::min(bytes.find('\n', begin), bytes.size());
    std::string_view line(bytes.data() + begin, end - begin);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    lines.push_back(ToUtf8(line));
    begin = end + 1;
  }
  return lines;
}

LibraryLog::LibraryLog(std::string file, Secrets secrets) : secrets_(std::move(secrets)), file_(std::move(file)) {
  if (!file_.empty()) {
    // Before anything is done, and so that a new one is for its owner alone.
    kept_.emplace(file_);
  }
  if (file_.empty() || !secrets_.IsEmpty()) {
    file_ = temporary_.emplace(".log").Name();
  } else {
    kept_.reset();
  }
  std::error_code problem;
  const auto size = std::filesystem::file_size(PathOf(file_), problem);
  read_ = problem ? 0 : size;
  initializeLog(Wide(file_).c_str());
  // The library stays silent about a log that it cannot open.
  if (!std::filesystem::exists(PathOf(file_), problem)) {
    cleanupAutomation();
    throw Failure(ExitCode::CannotWrite, file_ + ": the log cannot be opened there");
  }
  if (initializeAutomation() != KORVANE_OK) {
    std::string why;
    for (const std::string& line : NewLines()) {
      why = line;
    }
    cleanupAutomation();
    throw Failure(ExitCode::NotHere, "UI Automation does not start: " + why);
  }
  if (elements_.emplace(); !world::ElementAccess::IsGranted()) {
    elements_.reset();
    cleanupAutomation();
    throw Failure(ExitCode::NotHere, "UI Automation does not start: its object cannot be made");
  }
}

LibraryLog::~LibraryLog() {
  clearElementCache();
  elements_.reset();
  cleanupAutomation();
  if (kept_) {
    try {
      NewLines();
    } catch (const Failure&) {
      // The disk is full at the very end; what was done is told all the same.
    }
  }
}

std::vector<std::string> LibraryLog::NewLines() {
  const std::string bytes = ReadFileFrom(file_, read_);
  read_ += bytes.size();
  const std::string kept = secrets_.MaskedLog(bytes);
  if (kept_) {
    kept_->Write(kept);
  }
  return LogLines(kept);
}

}  // namespace host
