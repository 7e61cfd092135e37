#include "util/text_search.h"

#include <algorithm>

namespace korvane {
namespace {

// Where the lexicographically largest suffix of a pattern starts, and that suffix's period.
struct MaximalSuffix {
  std::size_t start;
  std::size_t period;
};

template <class Less>
MaximalSuffix FindMaximalSuffix(WideView pattern, Less less) {
  std::size_t start = 0;
  std::size_t candidate = 1;
  std::size_t offset = 0;
  std::size_t period = 1;
  while (candidate + offset < pattern.size()) {
    const WCHAR ours = pattern[start + offset];
    const WCHAR theirs = pattern[candidate + offset];
    if (less(theirs, ours)) {
      candidate += offset + 1;
      offset = 0;
      period = candidate - start;
    } else if (ours == theirs) {
      if (offset + 1 == period) {
        candidate += period;
        offset = 0;
      } else {
        ++offset;
      }
    } else {
      start = candidate++;
      offset = 0;
      period = 1;
    }
  }
  return {start, period};
}

}  // namespace

// The two-way string matching algorithm of Crochemore and Perrin: the pattern is cut at a critical position, its right
// part is compared forwards and then its left part backwards, and a mismatch shifts by what was learned.
bool Contains(WideView text, WideView part) {
  if (part.size() < 2 || part.size() > text.size()) {
    return part.empty() || (part.size() == 1 && text.find(part.front()) != WideView::npos);
  }
  const auto forward = FindMaximalSuffix(part, [](WCHAR a, WCHAR b) { return a < b; });
  const auto backward = FindMaximalSuffix(part, [](WCHAR a, WCHAR b) { return a > b; });
  const auto [cut, suffixPeriod] = forward.start > backward.start ? forward : backward;

  // When the left part repeats with the period of the right one, the whole pattern has that period, and a full match of
  // the right part lets the next comparison skip what is known to fit.
  const bool periodic = part.substr(0, cut) == part.substr(suffixPeriod, cut);
  const std::size_t shift = periodic ? suffixPeriod : std::max(cut, part.size() - cut) + 1;

  std::size_t known = 0;
  for (std::size_t at = 0; at <= text.size() - part.size();) {
    std::size_t right = std::max(cut, known);
    while (right < part.size() && part[right] == text[at + right]) {
      ++right;
    }
    if (right < part.size()) {
      at += right - cut + 1;
      known = 0;
      continue;
    }
    std::size_t left = cut;
    while (left > known && part[left - 1] == text[at + left - 1]) {
      --left;
    }
    if (left <= known) {
      return true;
    }
    at += shift;
    known = periodic ? part.size() - shift : 0;
  }
  return false;
}

}  // namespace korvane
