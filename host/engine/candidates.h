// What stands in the window instead of a target that was not found, for whoever must find out what became of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/identify.h"

namespace host {

struct Candidate {
  std::string what;        // its type, id and label
  std::string difference;  // from the recorded element, in words
  std::optional<world::Rect> rect;
};

// Elements of the recorded type, the nearest to the recorded place first.
std::vector<Candidate> NearestCandidates(const Sought& sought);

}  // namespace host
