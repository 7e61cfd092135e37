#include "host/report/fold_log.h"

#include <algorithm>
#include <iterator>

namespace host {

namespace {

// A search by AutomationId, by path and by point writes about thirty lines.
constexpr std::size_t kLongestBlock = 60;

// How many characters at the beginning are the time stamp.
std::size_t StampLength(const std::string& line) {
  const std::size_t length = line.find_first_not_of("[0123456789-:. ");
  return length == std::string::npos ? line.size() : length;
}

// What makes a line the same as another one: all of it but its time and durations such as "12ms".
std::string Sense(const std::string& line) {
  std::string sense;
  for (std::size_t i = StampLength(line); i < line.size();) {
    const std::size_t end = std::min(line.find_first_not_of("0123456789", i), line.size());
    if (end == i) {
      sense += line[i++];
      continue;
    }
    sense += line.compare(end, 2, "ms") == 0 ? "#" : line.substr(i, end - i);
    i = end;
  }
  return sense;
}

// How often the block of `size` lines at `begin` stands there again behind itself.
std::size_t RepeatsOf(const std::vector<std::string>& senses, std::size_t begin, std::size_t size) {
  std::size_t repeats = 0;
  const auto block = senses.begin() + static_cast<std::ptrdiff_t>(begin);
  for (std::size_t next = begin + size;
       next + size <= senses.size() &&
       std::equal(block, block + static_cast<std::ptrdiff_t>(size), senses.begin() + static_cast<std::ptrdiff_t>(next));
       next += size) {
    ++repeats;
  }
  return repeats;
}

}  // namespace

std::vector<std::string> FoldLog(const std::vector<std::string>& lines) {
  std::vector<std::string> senses;
  std::transform(lines.begin(), lines.end(), std::back_inserter(senses), Sense);
  std::vector<std::string> folded;
  for (std::size_t i = 0; i < lines.size();) {
    std::size_t size = 1;
    std::size_t repeats = 0;
    for (; size <= kLongestBlock && i + 2 * size <= lines.size(); ++size) {
      // One line more is no gain.
      if (repeats = RepeatsOf(senses, i, size); repeats * size > 1) {
        break;
      }
      repeats = 0;
    }
    size = repeats == 0 ? 1 : size;
    folded.insert(folded.end(), lines.begin() + static_cast<std::ptrdiff_t>(i),
                  lines.begin() + static_cast<std::ptrdiff_t>(i + size));
    i += size * (repeats + 1);
    if (repeats > 0) {
      const std::string& last = lines[i - 1];
      folded.push_back(last.substr(0, StampLength(last)) + "… the " +
                       (size == 1 ? "line" : std::to_string(size) + " lines") + " above " + std::to_string(repeats) +
                       (repeats == 1 ? " time more" : " times more"));
    }
  }
  return folded;
}

}  // namespace host
