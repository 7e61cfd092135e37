// A captured record as JSON: every field by name, and back to the same 3,256 bytes.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "korvane/korvane.h"

namespace host {

// Keeps the order in which the fields are written.
using Json = nlohmann::ordered_json;

Json ToJson(const TargetRecord& record);
// Failure: BadFile, the line beginning with `where`.
TargetRecord RecordFromJson(const Json& json, const std::string& where);

// "automation-id", "tree-path", "coordinates", "undecided"; any other number as a number.
Json MethodToJson(int method);
int MethodFromJson(const Json& json, const std::string& where);

}  // namespace host
